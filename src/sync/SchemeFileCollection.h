#pragma once
#include <meridex/Export.h>
#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include <meridex/frame/Index.h>
#include <meridex/sync/SchemeFileItem.h>

namespace meridex {

/// A keyed collection of scheme items in insertion order. Items are found by a
/// 1-based number or by key; keys match ignoring letter case. A key already in
/// the collection is refused (Add answers false and nothing changes), so an
/// item once listed is never silently replaced.
class MERIDEX_EXPORT SchemeFileCollection {
public:
    /// The number of items.
    long Count() const noexcept { return static_cast<long>(live_); }
    /// Null when the number is out of range or the key is unknown.
    SchemeFileItem Item(const Index& index) const;
    /// True when an item has that key (ignoring case).
    bool Exists(std::string_view key) const;
    /// False (and no change) for a null item or a key already present.
    bool Add(const SchemeFileItem& item, std::string_view key);
    /// False when there is no such item.
    bool Remove(const Index& index);
    /// Removes every item.
    void Clear();

    /// The items in order (a snapshot; the handles share the items).
    std::vector<SchemeFileItem> Items() const;

private:
    struct Entry {
        std::string folded;
        SchemeFileItem item = SchemeFileItem::None();
    };
    /// Removal leaves a hole that is closed the next time a number is looked
    /// up, so removing many items one after another stays linear.
    void Compact() const;
    long SlotOf(const Index& index) const;

    mutable std::vector<Entry> entries_;
    mutable std::unordered_map<std::string, std::size_t> slots_;
    mutable std::size_t holes_ = 0;
    std::size_t live_ = 0;
};

}  // namespace meridex
