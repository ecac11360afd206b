#pragma once
// Internal to the XML views: how documents and nodes are kept alive.
// libxml2 headers are included here and in the frame's .cpp files only.
#include <libxml/tree.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_set>

namespace meridex::xmlimpl {

struct Anchor;

// One per libxml2 document (reached through doc->_private). The document is
// freed when refs falls to 0: refs counts XmlDocument handles plus anchored
// nodes that live in the document.
struct DocHolder {
    xmlDocPtr doc = nullptr;
    long refs = 0;
    bool hadDeclaration = false;
    Anchor* docAnchor = nullptr;  // views of the document node itself
    // Detached subtrees this document owns until they are attached somewhere
    // or the document ends.
    std::unordered_set<xmlNodePtr> orphans;
    std::size_t sweepAt = 64;
    // Bumped by every edit except an append at the end of a child list (an
    // unlink, an insert before another node, a text node rewritten), so raw
    // pointers cached under an unchanged generation are still in the tree.
    std::uint64_t editGeneration = 0;
    xmlNodePtr changedMark = nullptr;
    std::uint64_t changedMarkGeneration = 0;
};

// One per viewed node (reached through node->_private). Holds one reference
// on the holder of the node's current document.
struct Anchor {
    xmlNodePtr node = nullptr;
    long refs = 0;
};

DocHolder* NewHolder(xmlDocPtr doc);
DocHolder* HolderOf(xmlDocPtr doc) noexcept;
void RetainDoc(DocHolder* holder) noexcept;
void ReleaseDoc(DocHolder* holder) noexcept;

// An anchor with one more reference (made when the node has none).
Anchor* Retain(xmlNodePtr node);
void Retain(Anchor* anchor) noexcept;
void Release(Anchor* anchor) noexcept;

// A fresh detached node: the document owns it until it is attached.
void AddOrphan(xmlNodePtr node);
// Unlinks an attached node; it becomes an orphan of its document (or is
// freed at once when nothing views anything in it).
void Detach(xmlNodePtr node);
// Moves child under parent, before ref (at the end when ref is null).
bool MoveInto(xmlNodePtr parent, xmlNodePtr child, xmlNodePtr ref);

// Clears the private pointers a libxml2 copy may have taken from its source.
void ClearPrivate(xmlNodePtr top);

// UTF-8 text made safe for an XML document: invalid sequences become
// U+FFFD and characters XML 1.0 forbids are dropped.
std::string CleanText(std::string_view text);
// True when CleanText would give text back unchanged (ASCII without the
// control characters XML forbids), so it can be used as it is.
bool IsCleanText(std::string_view text) noexcept;
bool IsValidName(std::string_view name);

}  // namespace meridex::xmlimpl
