// What differs between a new catalogue and the one before, by digests that the state keeps.
#include "CatalogueBuilder.h"
#include "Hash.h"

namespace orxserve {

// Everything that a client is told of an item, apart from where it stands.
uint64_t CatalogueBuilder::FactsOf(const Item& item) const {
  Hash hash;
  hash.Add(item.id).Add(item.size).Add(item.date).Add(item.width).Add(item.height);
  hash.Add(item.captions).Add(catalogue_->Text(item.description));
  hash.Add(catalogue_->FormatOf(item).protocolInfo);
  for (size_t i = 0; i < kPieceCount; ++i) {
    const PiecePlace place = catalogue_->PieceOf(item, static_cast<Piece>(i));
    hash.Add(place.length).Add(place.width).Add(place.height);
  }
  const MediaFacts& media = catalogue_->MediaOf(item);
  hash.Add(media.duration).Add(media.bitRate).Add(media.frequency).Add(media.channels);
  hash.Add(catalogue_->Text(media.artist)).Add(catalogue_->Text(media.album));
  return hash.value();
}

uint64_t CatalogueBuilder::DigestOf(const Container& container,
                                    const std::vector<uint64_t>& facts) const {
  Hash hash;
  hash.Add(catalogue_->Text(container.title));
  for (uint32_t at = 0; at < catalogue_->ChildCount(container); ++at) {
    const Entry child = catalogue_->Child(container, at);
    if (child.isContainer) {
      const Container& inner = catalogue_->containers_[child.index];
      hash.Add(inner.id).Add(catalogue_->ChildCount(inner)).Add(catalogue_->Text(inner.title));
    } else {
      hash.Add(facts[child.index]);
    }
  }
  return hash.value();
}

void CatalogueBuilder::TellChanges() {
  std::vector<uint64_t> facts;
  facts.reserve(catalogue_->items_.size());
  for (const Item& item : catalogue_->items_) facts.push_back(FactsOf(item));
  const ContainerStates before = state_->Containers();
  const uint32_t next = state_->updateId() + 1;
  ContainerStates after;
  for (Container& container : catalogue_->containers_) {
    const uint64_t digest = DigestOf(container, facts);
    const auto known = before.find(container.id);
    const bool same = known != before.end() && known->second.digest == digest;
    container.updateId = same ? known->second.updateId : next;
    after[container.id] = {digest, container.updateId};
    if (!same) catalogue_->changed_.push_back(container.id);
  }
  const bool changed = !catalogue_->changed_.empty() || before.size() != after.size();
  if (changed) state_->SetContainers(after, next);
  catalogue_->updateId_ = state_->updateId();
}

}  // namespace orxserve
