#pragma once
#include <functional>
#include <string>
#include <string_view>

#include <meridex/frame/XmlNode.h>

// Internal: the merge of two saved versions of one document, written once for
// every document over element views. Not installed.
namespace meridex::ThreeWayMerge {

/// How the children of a merged element are told apart and fixed up.
struct Rules {
    /// Merged child by child rather than compared as a whole (none when empty).
    std::function<bool(std::string_view elementName)> descend;
    /// What names a child across the versions, in place of its KEY text (the
    /// map renumbers its keys at every load, so its profiles are known by their
    /// other content); empty: the KEY text.
    std::function<std::string(const XmlNode& child)> identity;
    /// Called for each child of theirs put into ours (the map gives a new
    /// profile a free key when ours already uses its key).
    std::function<void(const XmlNode& added, const XmlNode& parent)> inserted;
};

/// Merges into ours what theirs changed since base (each an element of its own
/// document; base may be null for "nothing in common"). The element children
/// are keyed by name and, where they have one, the text of their KEY child
/// (ignoring case); additions, deletions and changes of different children
/// from either side are all kept, theirs inserted after the child that
/// precedes them in their version. Where both sides changed the same child
/// (or one changed what the other deleted) ours is kept. Answers false when
/// that happened, true when nothing of theirs was left out.
bool MergeElements(const XmlNode& ours, const XmlNode& base, const XmlNode& theirs, const Rules& rules);

/// Parses base and theirs (the bytes of two versions of ours' document) and
/// merges their roots into ours. False, with ours unchanged, when theirs is not
/// a document with ours' root; a base that does not parse counts as empty.
bool MergeDocuments(const XmlNode& ours, const std::string& base, const std::string& theirs, const Rules& rules);

}  // namespace meridex::ThreeWayMerge
