// What discovery sends when: answers that wait, within limits that no flood of searches exceeds.
// Knows no sockets and no clock: the time comes with every question, in seconds.
#pragma once

#include <deque>
#include <map>
#include <string>
#include <vector>

#include "Net.h"

namespace orxserve {

// How many searches are answered: so many at once, and so many a second.
class TokenBucket {
 public:
  TokenBucket(double most, double perSecond) : most_(most), perSecond_(perSecond), level_(most) {}
  bool Take(double now);

 private:
  double most_, perSecond_, level_;
  double last_ = 0;
};

struct PendingAnswer {
  double due = 0;
  IpAddress to;
  uint16_t port = 0;
  unsigned interface = 0;  // index
  std::string target;
};

class AnswerPlan {
 public:
  static constexpr size_t kMost = 128;

  // True when the search is to be answered; the answer is kept until it is due.
  bool Add(PendingAnswer answer, double now);
  std::vector<PendingAnswer> TakeDue(double now);
  double NextDue(double otherwise) const;

 private:
  bool Admit(const IpAddress& from, double now);

  TokenBucket all_{60, 30};
  std::map<IpAddress, TokenBucket> each_;
  std::vector<PendingAnswer> pending_;
};

}  // namespace orxserve
