#include "SsdpPlan.h"

#include <algorithm>

namespace orxserve {
namespace {

constexpr size_t kMostAddresses = 256;  // that are counted apart
constexpr double kOfOneAtOnce = 20;
constexpr double kOfOnePerSecond = 5;

}  // namespace

bool TokenBucket::Take(double now) {
  level_ = std::min(most_, level_ + std::max(now - last_, 0.0) * perSecond_);
  last_ = now;
  if (level_ < 1) return false;
  level_ -= 1;
  return true;
}

bool AnswerPlan::Admit(const IpAddress& from, double now) {
  if (each_.size() >= kMostAddresses && each_.count(from) == 0) each_.clear();
  TokenBucket& own = each_.emplace(from, TokenBucket(kOfOneAtOnce, kOfOnePerSecond)).first->second;
  return own.Take(now) && all_.Take(now);
}

bool AnswerPlan::Add(PendingAnswer answer, double now) {
  const auto same = [&](const PendingAnswer& known) {
    return known.to == answer.to && known.port == answer.port && known.target == answer.target &&
           known.interface == answer.interface;
  };
  if (std::any_of(pending_.begin(), pending_.end(), same)) return false;
  if (pending_.size() >= kMost || !Admit(answer.to, now)) return false;
  pending_.push_back(std::move(answer));
  return true;
}

std::vector<PendingAnswer> AnswerPlan::TakeDue(double now) {
  const auto later =
      std::partition(pending_.begin(), pending_.end(),
                     [now](const PendingAnswer& answer) { return answer.due <= now; });
  std::vector<PendingAnswer> due(std::make_move_iterator(pending_.begin()),
                                 std::make_move_iterator(later));
  pending_.erase(pending_.begin(), later);
  return due;
}

double AnswerPlan::NextDue(double otherwise) const {
  for (const PendingAnswer& answer : pending_) otherwise = std::min(otherwise, answer.due);
  return otherwise;
}

}  // namespace orxserve
