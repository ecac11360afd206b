#include <meridex/frame/XmlImpl.h>

#include <meridex/frame/Utf8.h>


#include <algorithm>
#include <vector>

namespace meridex::xmlimpl {
namespace {

bool IsDocumentNode(xmlNodePtr node) noexcept {
    return node->type == XML_DOCUMENT_NODE || node->type == XML_HTML_DOCUMENT_NODE;
}

// Depth-first walk of node and everything below it (children only: we never
// anchor attributes), without recursion so deep trees cannot overflow.
template <typename F>
void WalkSubtree(xmlNodePtr top, F&& visit) {
    xmlNodePtr node = top;
    while (node) {
        visit(node);
        if (node->children && node->type != XML_ENTITY_REF_NODE) {
            node = node->children;
            continue;
        }
        while (node && node != top && !node->next) node = node->parent;
        if (!node || node == top) break;
        node = node->next;
    }
}

bool SubtreeHasAnchor(xmlNodePtr top) {
    bool found = false;
    WalkSubtree(top, [&](xmlNodePtr n) { found = found || n->_private != nullptr; });
    return found;
}

void FreeIfUnviewed(DocHolder* holder, xmlNodePtr node) {
    if (SubtreeHasAnchor(node)) {
        holder->orphans.insert(node);
    } else {
        xmlFreeNode(node);
    }
}

void Sweep(DocHolder* holder) {
    std::vector<xmlNodePtr> kept;
    for (xmlNodePtr node : holder->orphans) {
        if (SubtreeHasAnchor(node)) {
            kept.push_back(node);
        } else {
            xmlFreeNode(node);
        }
    }
    holder->orphans.clear();
    holder->orphans.insert(kept.begin(), kept.end());
    holder->sweepAt = std::max<std::size_t>(64, kept.size() * 2);
}

// Gives a detached subtree namespace declarations of its own, so it never
// points into a tree it has left.
void ReconcileNamespaces(xmlNodePtr node) {
    if (node->type == XML_ELEMENT_NODE && node->doc) xmlReconciliateNs(node->doc, node);
}

}  // namespace

DocHolder* NewHolder(xmlDocPtr doc) {
    auto* holder = new DocHolder;
    holder->doc = doc;
    doc->_private = holder;
    return holder;
}

DocHolder* HolderOf(xmlDocPtr doc) noexcept {
    return doc ? static_cast<DocHolder*>(doc->_private) : nullptr;
}

void RetainDoc(DocHolder* holder) noexcept {
    if (holder) ++holder->refs;
}

void ReleaseDoc(DocHolder* holder) noexcept {
    if (!holder || --holder->refs > 0) return;
    for (xmlNodePtr node : holder->orphans) xmlFreeNode(node);
    holder->doc->_private = nullptr;
    xmlFreeDoc(holder->doc);
    delete holder;
}

Anchor* Retain(xmlNodePtr node) {
    Anchor* anchor;
    if (IsDocumentNode(node)) {
        DocHolder* holder = HolderOf(reinterpret_cast<xmlDocPtr>(node));
        anchor = holder->docAnchor;
        if (!anchor) {
            anchor = holder->docAnchor = new Anchor{node, 0};
            RetainDoc(holder);
        }
    } else {
        anchor = static_cast<Anchor*>(node->_private);
        if (!anchor) {
            anchor = new Anchor{node, 0};
            node->_private = anchor;
            RetainDoc(HolderOf(node->doc));
        }
    }
    ++anchor->refs;
    return anchor;
}

void Retain(Anchor* anchor) noexcept {
    if (anchor) ++anchor->refs;
}

void Release(Anchor* anchor) noexcept {
    if (!anchor || --anchor->refs > 0) return;
    xmlNodePtr node = anchor->node;
    DocHolder* holder;
    if (IsDocumentNode(node)) {
        holder = HolderOf(reinterpret_cast<xmlDocPtr>(node));
        holder->docAnchor = nullptr;
    } else {
        holder = HolderOf(node->doc);
        node->_private = nullptr;
    }
    delete anchor;
    ReleaseDoc(holder);
}

void AddOrphan(xmlNodePtr node) {
    DocHolder* holder = HolderOf(node->doc);
    // Sweep before the insert: the new node has no view yet and would be freed.
    if (holder->orphans.size() + 1 >= holder->sweepAt) Sweep(holder);
    holder->orphans.insert(node);
}

void Detach(xmlNodePtr node) {
    if (!node->parent) return;
    DocHolder* holder = HolderOf(node->doc);
    ++holder->editGeneration;
    xmlUnlinkNode(node);
    ReconcileNamespaces(node);
    FreeIfUnviewed(holder, node);
    if (holder->orphans.size() >= holder->sweepAt) Sweep(holder);
}

bool MoveInto(xmlNodePtr parent, xmlNodePtr child, xmlNodePtr ref) {
    if (!parent || !child || parent == child) return false;
    if (IsDocumentNode(child) || child->type == XML_ATTRIBUTE_NODE || child->type == XML_NAMESPACE_DECL)
        return false;
    const bool parentIsDocument = IsDocumentNode(parent);
    if (!parentIsDocument && parent->type != XML_ELEMENT_NODE && parent->type != XML_DOCUMENT_FRAG_NODE)
        return false;
    if (ref && (ref->parent != parent || ref == child)) return false;
    for (xmlNodePtr up = parent; up; up = up->parent) {
        if (up == child) return false;  // would put a node inside itself
    }
    if (parentIsDocument && child->type == XML_ELEMENT_NODE) {
        // A document holds one root element.
        for (xmlNodePtr c = parent->children; c; c = c->next) {
            if (c->type == XML_ELEMENT_NODE && c != child) return false;
        }
    }
    if (child->type == XML_TEXT_NODE && parentIsDocument) return false;

    xmlDocPtr newDoc = parentIsDocument ? reinterpret_cast<xmlDocPtr>(parent) : parent->doc;
    xmlDocPtr oldDoc = child->doc;
    DocHolder* oldHolder = HolderOf(oldDoc);
    DocHolder* newHolder = HolderOf(newDoc);

    if (child->parent) {
        ++oldHolder->editGeneration;
        xmlUnlinkNode(child);
    } else {
        oldHolder->orphans.erase(child);
    }

    long moved = 0;
    if (oldDoc != newDoc) {
        ReconcileNamespaces(child);
        xmlSetTreeDoc(child, newDoc);
        WalkSubtree(child, [&](xmlNodePtr n) {
            if (n->_private) ++moved;
        });
        newHolder->refs += moved;
    }

    // An element appended after elements is the one edit a cache can follow
    // from the parent's last child. Anything else appended (text into a KEY,
    // an element after text) rewrites what the parent's text says.
    if (ref || (!parentIsDocument && (child->type != XML_ELEMENT_NODE ||
                                      (parent->last && parent->last->type != XML_ELEMENT_NODE))))
        ++newHolder->editGeneration;

    // Linked by hand: libxml2's own add functions merge adjacent text nodes
    // and free one of them, which would pull a node from under its views.
    child->parent = parent;
    if (ref) {
        child->next = ref;
        child->prev = ref->prev;
        if (ref->prev) {
            ref->prev->next = child;
        } else {
            parent->children = child;
        }
        ref->prev = child;
    } else {
        child->next = nullptr;
        child->prev = parent->last;
        if (parent->last) {
            parent->last->next = child;
        } else {
            parent->children = child;
        }
        parent->last = child;
    }
    if (!parentIsDocument) ReconcileNamespaces(child);

    for (long i = 0; i < moved; ++i) ReleaseDoc(oldHolder);
    return true;
}

void ClearPrivate(xmlNodePtr top) {
    WalkSubtree(top, [](xmlNodePtr n) { n->_private = nullptr; });
}

bool IsCleanText(std::string_view text) noexcept {
    for (const char byte : text) {
        const auto c = static_cast<unsigned char>(byte);
        if (c >= 0x80 || (c < 0x20 && c != '\t' && c != '\n' && c != '\r')) return false;
    }
    return true;
}

std::string CleanText(std::string_view text) {
    // Most texts are ASCII without control characters: kept as they are.
    if (IsCleanText(text)) return std::string(text);
    std::string out;
    out.reserve(text.size());
    for (std::size_t pos = 0; pos < text.size();) {
        const char32_t c = utf8::Next(text, pos);
        if (c == utf8::kInvalid) {
            utf8::Append(out, 0xFFFD);
        } else if (c == '\t' || c == '\n' || c == '\r' || (c >= 0x20 && c <= 0xD7FF) ||
                   (c >= 0xE000 && c <= 0xFFFD) || c >= 0x10000) {
            utf8::Append(out, c);
        }
    }
    return out;
}

bool IsValidName(std::string_view name) {
    if (name.empty()) return false;
    bool ascii = true;
    for (unsigned char c : name) ascii = ascii && c < 0x80;
    if (ascii) {
        auto start = [](unsigned char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_' || c == ':'; };
        if (!start(static_cast<unsigned char>(name[0]))) return false;
        for (unsigned char c : name.substr(1)) {
            if (!start(c) && !(c >= '0' && c <= '9') && c != '-' && c != '.') return false;
        }
        return true;
    }
    const std::string copy(name);
    if (copy.find('\0') != std::string::npos) return false;
    return xmlValidateName(reinterpret_cast<const xmlChar*>(copy.c_str()), 0) == 0;
}

}  // namespace meridex::xmlimpl
