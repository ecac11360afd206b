#pragma once
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include <meridex/frame/XmlDocument.h>
#include <meridex/frame/XmlNode.h>

namespace meridex {

// Fast lookup of a group's SITE and GROUP children by key (compared ignoring
// case), shared by the views that were derived from one another (an address
// book's root and every group reached from it).
//
// The document stays the only truth: an entry is a cache of one group's
// children, trusted only while
//  - the group's last child is the one the entry saw last (anything appended
//    at the end, through any view, is noticed);
//  - the document's edit generation is unchanged apart from the owner's own
//    edits (it moves with every edit except an append at the end: removed
//    elements, inserts before another node, every text rewritten, such as a
//    KEY, through any view or XMLOps);
//  - the children that had no KEY still have none;
//  - a hit still is a child of the group and still carries the key.
// Otherwise the entry is rebuilt from the document. The owning views keep
// entries in step with their own appends and key writes, so adding thousands
// of sites to one group costs no rescans.
class SiteKeyIndex {
public:
    enum class Kind { Site = 0, Group = 1 };

    // The first direct child of group of that kind whose KEY equals key
    // ignoring case; null when there is none.
    XmlNode Find(const XmlNode& group, Kind kind, std::string_view key);

    // Before a change made by the owning views: notices changes made
    // elsewhere since the index last looked at the document.
    void Notice(const XmlNode& group);
    // child has just been appended to group, whose last child was previousLast.
    void Appended(const XmlNode& group, Kind kind, const XmlNode& child, const XmlNode& previousLast);
    // The KEY of child, the group's last child, has just been rewritten by the
    // owning views.
    void Rekeyed(const XmlNode& group, Kind kind, const XmlNode& child, std::string_view oldKey,
                 std::string_view newKey);
    // The owning views have finished writing: their own changes of the change
    // mark are not changes made elsewhere.
    void Absorb(const XmlNode& group);
    // Drops what is known about group (after the owning views removed from it).
    void Forget(const XmlNode& group);

    // The group's first NAME child (null when it has none), from the entry of
    // the group, built when needed: the root of a book has no NAME and may
    // have thousands of children, and every add reads the names up to it.
    XmlNode NameElement(const XmlNode& group);

    // The folded KEY text of an element ("" when it has none).
    static std::string FoldedKey(const XmlNode& element);

private:
    struct DocState {
        XmlDocument document;
        std::uint64_t unlinks = 0;  // the document's unlink count as last seen
        std::uint64_t epoch = 0;    // bumped by each change made elsewhere
    };
    struct Entry {
        XmlNode group;
        XmlNode last;
        XmlNode name;  // first NAME child
        DocState* doc = nullptr;
        std::uint64_t epoch = 0;
        std::unordered_map<std::string, std::vector<XmlNode>> keys[2];
    };

    DocState& StateOf(const XmlDocument& document);
    // Reads the unlink count; a change not absorbed bumps the epoch.
    void Check(DocState& state, bool absorb);
    Entry* Lookup(const XmlNode& group);
    Entry& Build(const XmlNode& group);
    static bool Verify(const XmlNode& group, const XmlNode& child, std::string_view folded);
    static bool KeylessStillKeyless(const Entry& entry, Kind kind);

    std::vector<std::unique_ptr<DocState>> docs_;
    std::vector<std::unique_ptr<Entry>> entries_;  // most recently used first
};

}  // namespace meridex
