#include <meridex/addressbook/SiteKeyIndex.h>

#include <algorithm>

#include <meridex/frame/Text.h>

namespace meridex {

namespace {
// Enough for the groups an editor or an import works in at once; older
// entries are simply rebuilt when needed again.
constexpr std::size_t kMaxEntries = 64;
constexpr std::size_t kMaxDocuments = 8;
}  // namespace

std::string SiteKeyIndex::FoldedKey(const XmlNode& element) {
    return Text::FoldCase(element.SelectSingle("KEY").Text());
}

SiteKeyIndex::DocState& SiteKeyIndex::StateOf(const XmlDocument& document) {
    for (auto& state : docs_) {
        if (state->document == document) return *state;
    }
    if (docs_.size() >= kMaxDocuments) {
        entries_.clear();
        docs_.clear();
    }
    auto state = std::make_unique<DocState>();
    state->document = document;
    Check(*state, true);
    docs_.push_back(std::move(state));
    return *docs_.back();
}

void SiteKeyIndex::Check(DocState& state, bool absorb) {
    const std::uint64_t unlinks = state.document.EditGeneration();
    if (unlinks != state.unlinks) {
        state.unlinks = unlinks;
        if (!absorb) ++state.epoch;
    }
}

SiteKeyIndex::Entry* SiteKeyIndex::Lookup(const XmlNode& group) {
    for (std::size_t i = 0; i < entries_.size(); ++i) {
        if (entries_[i]->group == group) {
            if (i != 0) std::rotate(entries_.begin(), entries_.begin() + i, entries_.begin() + i + 1);
            return entries_.front().get();
        }
    }
    return nullptr;
}

SiteKeyIndex::Entry& SiteKeyIndex::Build(const XmlNode& group) {
    Forget(group);
    auto entry = std::make_unique<Entry>();
    entry->group = group;
    entry->doc = &StateOf(group.OwnerDocument());
    entry->epoch = entry->doc->epoch;
    entry->last = group.LastChild();
    for (XmlNode child = group.FirstChildElement(); !child.IsNull(); child = child.NextSiblingElement()) {
        const std::string name = child.Name();
        if (name == "NAME" && entry->name.IsNull()) {
            entry->name = child;
        } else if (name == "SITE") {
            entry->keys[static_cast<int>(Kind::Site)][FoldedKey(child)].push_back(child);
        } else if (name == "GROUP") {
            entry->keys[static_cast<int>(Kind::Group)][FoldedKey(child)].push_back(child);
        }
    }
    if (entries_.size() >= kMaxEntries) entries_.pop_back();
    entries_.insert(entries_.begin(), std::move(entry));
    return *entries_.front();
}

bool SiteKeyIndex::Verify(const XmlNode& group, const XmlNode& child, std::string_view folded) {
    return child.Parent() == group && FoldedKey(child) == folded;
}

bool SiteKeyIndex::KeylessStillKeyless(const Entry& entry, Kind kind) {
    const auto& keys = entry.keys[static_cast<int>(kind)];
    const auto keyless = keys.find(std::string());
    if (keyless == keys.end()) return true;
    // A KEY written into an element that had none unlinks nothing.
    for (const XmlNode& child : keyless->second) {
        if (!FoldedKey(child).empty()) return false;
    }
    return true;
}

XmlNode SiteKeyIndex::Find(const XmlNode& group, Kind kind, std::string_view key) {
    if (group.IsNull()) return XmlNode();
    DocState& state = StateOf(group.OwnerDocument());
    Check(state, false);
    const std::string folded = Text::FoldCase(key);
    Entry* entry = Lookup(group);
    if (entry == nullptr || entry->epoch != state.epoch || !(group.LastChild() == entry->last) ||
        !KeylessStillKeyless(*entry, kind)) {
        entry = &Build(group);
    }
    for (int attempt = 0; attempt < 2; ++attempt) {
        auto& keys = entry->keys[static_cast<int>(kind)];
        const auto found = keys.find(folded);
        if (found == keys.end() || found->second.empty()) return XmlNode();
        if (Verify(group, found->second.front(), folded)) return found->second.front();
        // Changed behind our back in a way the checks above cannot see.
        entry = &Build(group);
    }
    return XmlNode();
}

XmlNode SiteKeyIndex::NameElement(const XmlNode& group) {
    if (group.IsNull()) return XmlNode();
    Entry* entry = Lookup(group);
    // No new look at the unlink count: this is asked in the middle of the
    // owning views' own change, after the look they took at its start.
    if (entry == nullptr || entry->epoch != entry->doc->epoch || !(group.LastChild() == entry->last)) {
        entry = &Build(group);
    }
    return entry->name;
}

void SiteKeyIndex::Notice(const XmlNode& group) {
    if (group.IsNull()) return;
    Check(StateOf(group.OwnerDocument()), false);
}

void SiteKeyIndex::Appended(const XmlNode& group, Kind kind, const XmlNode& child,
                            const XmlNode& previousLast) {
    Entry* entry = Lookup(group);
    if (entry == nullptr) return;
    if (!(entry->last == previousLast) || entry->epoch != entry->doc->epoch) {
        Forget(group);
        return;
    }
    auto& list = entry->keys[static_cast<int>(kind)][FoldedKey(child)];
    // A child moved to the end of its own group would stand twice.
    if (std::find(list.begin(), list.end(), child) != list.end()) {
        Forget(group);
        return;
    }
    list.push_back(child);
    entry->last = child;
}

void SiteKeyIndex::Rekeyed(const XmlNode& group, Kind kind, const XmlNode& child, std::string_view oldKey,
                           std::string_view newKey) {
    Entry* entry = Lookup(group);
    if (entry == nullptr) return;
    if (!(entry->last == child) || !(group.LastChild() == child)) {
        Forget(group);
        return;
    }
    auto& keys = entry->keys[static_cast<int>(kind)];
    const auto old = keys.find(std::string(oldKey));
    if (old != keys.end()) {
        auto& list = old->second;
        list.erase(std::remove(list.begin(), list.end(), child), list.end());
        if (list.empty()) keys.erase(old);
    }
    keys[std::string(newKey)].push_back(child);
}

void SiteKeyIndex::Absorb(const XmlNode& group) {
    if (group.IsNull()) return;
    Check(StateOf(group.OwnerDocument()), true);
}

void SiteKeyIndex::Forget(const XmlNode& group) {
    entries_.erase(std::remove_if(entries_.begin(), entries_.end(),
                                  [&](const std::unique_ptr<Entry>& e) { return e->group == group; }),
                   entries_.end());
}

}  // namespace meridex
