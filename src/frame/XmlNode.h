#pragma once
#include <meridex/Export.h>
#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace meridex {

class XmlDocument;
namespace xmlimpl { struct Anchor; }

/// The kind of a node.
enum class XmlNodeType {
    None,  ///< The null view.
    Element,
    Attribute,
    Text,
    CData,
    EntityReference,
    ProcessingInstruction,
    Comment,
    Document,
    Other  ///< Any kind not listed (DTD, notation, ...).
};

/// A view: a cheap, copyable, counted handle on one node of an XML document.
///
/// - Two views on one node see the same data; nothing is cached in a view.
/// - A default-constructed view is the null view ("no node"); every operation
///   on it does nothing and answers an empty result.
/// - A view keeps its node and the node's document alive. A node removed from
///   its tree is not freed while any view holds it or anything below it.
/// - A node may be appended into any document, including one other than the
///   document that made it; it moves with its names, text and children.
class MERIDEX_EXPORT XmlNode {
public:
    /// The null view.
    XmlNode() noexcept = default;
    /// Another view on other's node.
    XmlNode(const XmlNode& other) noexcept;
    /// Takes other's node; other becomes null.
    XmlNode(XmlNode&& other) noexcept;
    /// Lets go of this view's node and views other's.
    XmlNode& operator=(const XmlNode& other) noexcept;
    /// Lets go of this view's node and takes other's; other becomes null.
    XmlNode& operator=(XmlNode&& other) noexcept;
    /// Lets go of the node (and of its document when nothing else holds it).
    ~XmlNode();
    /// The null view, as the default constructor makes it.
    static XmlNode None() noexcept { return XmlNode(); }

    /// True for the null view.
    bool IsNull() const noexcept { return anchor_ == nullptr; }
    /// True when the view is on a node (the opposite of IsNull).
    explicit operator bool() const noexcept { return anchor_ != nullptr; }
    /// True when both views are on the same node (or both are null).
    bool operator==(const XmlNode& other) const noexcept { return anchor_ == other.anchor_; }

    /// The kind of node; XmlNodeType::None for the null view.
    XmlNodeType NodeType() const noexcept;
    /// True for an element.
    bool IsElement() const noexcept { return NodeType() == XmlNodeType::Element; }
    /// Element or processing-instruction name; "#text", "#comment",
    /// "#document" and so on for the other kinds.
    std::string Name() const;

    /// The text of the node: for an element, all its descendant text joined.
    std::string Text() const;
    /// Replaces an element's children by one text node holding text (no text
    /// node at all for an empty text); sets the content of other nodes.
    void setText(std::string_view text) const;

    /// The first node a relative name path selects: names separated by "/",
    /// each an exact element name or "*". An invalid path selects nothing.
    XmlNode SelectSingle(std::string_view path) const;
    /// Every node the path selects, in document order.
    std::vector<XmlNode> SelectAll(std::string_view path) const;
    /// Number of direct element children named name ("*" or empty: all).
    std::size_t CountChildElements(std::string_view name = {}) const;

    // Read-only lookups for hot paths: they walk the children without making
    // a view (or copying text) per child.

    /// The text of the first child element named name ("" when none). The
    /// view points into the document, or into scratch when the text is not a
    /// single text node; it is valid until the document or scratch changes.
    std::string_view ChildText(std::string_view name, std::string& scratch) const;
    /// The first child element named childName whose child keyName holds
    /// exactly key, letter case ignored (all of Unicode) when ignoreCase.
    XmlNode FindChildByChildText(std::string_view childName, std::string_view keyName, std::string_view key,
                                 bool ignoreCase = true) const;
    /// The text of textName in the child FindChildByChildText finds (letter case
    /// ignored), read as ChildText reads it, without making a view: the host's
    /// per-command question costs one scan. "" when there is no such child.
    std::string_view ChildTextOfChildByChildText(std::string_view childName, std::string_view keyName,
                                                 std::string_view key, std::string_view textName,
                                                 std::string& scratch) const;
    /// The child element named childName at a 1-based position; null when
    /// there is none.
    XmlNode ChildElementAt(std::string_view childName, long long position) const;
    /// Calls visit with the text of keyName in each child element named
    /// childName, in document order (the text is valid during the call).
    void ForEachChildText(std::string_view childName, std::string_view keyName,
                          const std::function<void(std::string_view)>& visit) const;

    /// The child nodes of every kind, in order.
    std::vector<XmlNode> ChildNodes() const;
    /// The first child node of any kind; null when there is none.
    XmlNode FirstChild() const;
    /// The last child node of any kind; null when there is none.
    XmlNode LastChild() const;
    /// The next node under the same parent; null at the end.
    XmlNode NextSibling() const;
    /// The previous node under the same parent; null at the start.
    XmlNode PreviousSibling() const;
    /// The first child element named name (an empty name matches any element).
    XmlNode FirstChildElement(std::string_view name = {}) const;
    /// The next sibling element named name (an empty name matches any element).
    XmlNode NextSiblingElement(std::string_view name = {}) const;

    /// The parent node: the document node for a document's root element,
    /// null for a detached node.
    XmlNode Parent() const;
    /// The document that holds this node; null for a document node itself.
    XmlDocument OwnerDocument() const;

    /// Moves child (from wherever it is, any document) to the end of this
    /// node's children and returns it; null when the move is not possible (a
    /// null argument, a document node, or this node inside child).
    XmlNode AppendChild(const XmlNode& child) const;
    /// As AppendChild, before ref (at the end when ref is null).
    XmlNode InsertBefore(const XmlNode& child, const XmlNode& ref) const;
    /// Detaches child from this node and returns it; null when child is not a
    /// child of this node.
    XmlNode RemoveChild(const XmlNode& child) const;
    /// A detached copy held by the same document.
    XmlNode CloneNode(bool deep) const;

    /// The node serialised as UTF-8 XML text (no declaration).
    std::string Xml() const;

private:
    friend class XmlDocument;
    friend struct XmlAccess;
    explicit XmlNode(void* node);
    void* raw() const noexcept;

    xmlimpl::Anchor* anchor_ = nullptr;
};

}  // namespace meridex
