#include <meridex/sync/SchemeFileCollection.h>

#include <meridex/frame/Text.h>

namespace meridex {

void SchemeFileCollection::Compact() const {
    if (holes_ == 0) return;
    std::size_t out = 0;
    for (auto& entry : entries_) {
        if (entry.item.IsNull()) continue;
        if (out != static_cast<std::size_t>(&entry - entries_.data())) entries_[out] = std::move(entry);
        slots_[entries_[out].folded] = out;
        ++out;
    }
    entries_.resize(out);
    holes_ = 0;
}

long SchemeFileCollection::SlotOf(const Index& index) const {
    if (index.IsNumber()) {
        if (index.Number() < 1 || index.Number() > static_cast<long long>(live_)) return -1;
        Compact();
        return static_cast<long>(index.Number() - 1);
    }
    auto found = slots_.find(Text::FoldCase(index.Key()));
    return found == slots_.end() ? -1 : static_cast<long>(found->second);
}

SchemeFileItem SchemeFileCollection::Item(const Index& index) const {
    long slot = SlotOf(index);
    return slot < 0 ? SchemeFileItem::None() : entries_[static_cast<std::size_t>(slot)].item;
}

bool SchemeFileCollection::Exists(std::string_view key) const {
    return slots_.count(Text::FoldCase(key)) != 0;
}

bool SchemeFileCollection::Add(const SchemeFileItem& item, std::string_view key) {
    if (item.IsNull()) return false;
    std::string folded = Text::FoldCase(key);
    if (!slots_.emplace(folded, entries_.size()).second) return false;
    entries_.push_back(Entry{std::move(folded), item});
    ++live_;
    return true;
}

bool SchemeFileCollection::Remove(const Index& index) {
    long slot = SlotOf(index);
    if (slot < 0) return false;
    Entry& entry = entries_[static_cast<std::size_t>(slot)];
    slots_.erase(entry.folded);
    entry.item = SchemeFileItem::None();
    ++holes_;
    --live_;
    return true;
}

void SchemeFileCollection::Clear() {
    entries_.clear();
    slots_.clear();
    holes_ = 0;
    live_ = 0;
}

std::vector<SchemeFileItem> SchemeFileCollection::Items() const {
    std::vector<SchemeFileItem> items;
    items.reserve(live_);
    for (const auto& entry : entries_)
        if (!entry.item.IsNull()) items.push_back(entry.item);
    return items;
}

}  // namespace meridex
