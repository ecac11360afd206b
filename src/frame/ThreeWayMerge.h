#pragma once
#include <functional>
#include <string>
#include <string_view>

#include <meridex/frame/XmlNode.h>

// Internal: the merge of two saved versions of one document, written once for
// every document over element views. Not installed.
namespace meridex::ThreeWayMerge {

/// Whether an element is merged child by child (a group of the address book,
/// a settings profile) rather than compared as a whole.
using Descend = std::function<bool(std::string_view elementName)>;
/// Gives an element both sides added under one key (with different content) a
/// key of its own among parent's children, so both are kept (the map's new
/// profiles); false when it cannot.
using Rekey = std::function<bool(const XmlNode& addition, const XmlNode& parent)>;

/// Merges into ours what theirs changed since base (each an element of its own
/// document; base may be null for "nothing in common"). The element children
/// are keyed by name and, where they have one, the text of their KEY child
/// (ignoring case); additions, deletions and changes of different children
/// from either side are all kept, theirs inserted after the child that
/// precedes them in their version. Where both sides changed the same child
/// (or one changed what the other deleted) ours is kept. Answers false when
/// that happened, true when nothing of theirs was left out.
bool MergeElements(const XmlNode& ours, const XmlNode& base, const XmlNode& theirs, const Descend& descend,
                   const Rekey& rekey = {});

/// Parses base and theirs (the bytes of two versions of ours' document) and
/// merges their roots into ours. False, with ours unchanged, when theirs is not
/// a document with ours' root; a base that does not parse counts as empty.
bool MergeDocuments(const XmlNode& ours, const std::string& base, const std::string& theirs, const Descend& descend,
                    const Rekey& rekey = {});

}  // namespace meridex::ThreeWayMerge
