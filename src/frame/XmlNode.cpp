#include <meridex/frame/XmlNode.h>

#include <libxml/xmlsave.h>


#include <meridex/frame/Text.h>
#include <meridex/frame/XmlAccess.h>
#include <meridex/frame/XmlDocument.h>
#include <meridex/frame/XmlImpl.h>

namespace meridex {
namespace {

using xmlimpl::Anchor;

bool NameIs(xmlNodePtr node, std::string_view name) {
    if (node->type != XML_ELEMENT_NODE) return false;
    if (name.empty() || name == "*") return true;
    // Whole names compared: a part holding a NUL must not match a shorter name.
    const char* own = reinterpret_cast<const char*>(node->name);
    if (!own) return false;
    for (const char c : name) {
        if (c == '\0' || *own != c) return false;
        ++own;
    }
    return *own == '\0';
}

xmlNodePtr NextElement(xmlNodePtr node, std::string_view name) {
    for (; node; node = node->next) {
        if (NameIs(node, name)) return node;
    }
    return nullptr;
}

// Splits a relative name path into its parts; false for an absolute or
// empty path or one with an empty part.
bool SplitPath(std::string_view path, std::vector<std::string_view>& parts) {
    if (path.empty()) return false;
    std::size_t start = 0;
    while (true) {
        const std::size_t slash = path.find('/', start);
        const std::string_view part = path.substr(start, slash == std::string_view::npos ? path.npos : slash - start);
        if (part.empty()) return false;
        parts.push_back(part);
        if (slash == std::string_view::npos) return true;
        start = slash + 1;
    }
}

// The elements the parts lead to, in document order; depth first without
// recursion (one current child per level), so a path as long as a deep
// document cannot exhaust the stack.
void Collect(xmlNodePtr node, const std::vector<std::string_view>& parts, std::vector<XmlNode>& out,
             bool firstOnly) {
    std::vector<xmlNodePtr> stack{NextElement(node->children, parts[0])};
    while (!stack.empty()) {
        xmlNodePtr child = stack.back();
        const std::size_t level = stack.size() - 1;
        if (!child) {
            stack.pop_back();
            if (!stack.empty()) stack.back() = NextElement(stack.back()->next, parts[level - 1]);
        } else if (level + 1 == parts.size()) {
            out.push_back(XmlAccess::View(child));
            if (firstOnly) return;
            stack.back() = NextElement(child->next, parts[level]);
        } else {
            stack.push_back(NextElement(child->children, parts[level + 1]));
        }
    }
}

}  // namespace

XmlNode::XmlNode(void* node) : anchor_(xmlimpl::Retain(static_cast<xmlNodePtr>(node))) {}

XmlNode::XmlNode(const XmlNode& other) noexcept : anchor_(other.anchor_) { xmlimpl::Retain(anchor_); }

XmlNode::XmlNode(XmlNode&& other) noexcept : anchor_(other.anchor_) { other.anchor_ = nullptr; }

XmlNode& XmlNode::operator=(const XmlNode& other) noexcept {
    if (this != &other) {
        xmlimpl::Retain(other.anchor_);
        xmlimpl::Release(anchor_);
        anchor_ = other.anchor_;
    }
    return *this;
}

XmlNode& XmlNode::operator=(XmlNode&& other) noexcept {
    if (this != &other) {
        xmlimpl::Release(anchor_);
        anchor_ = other.anchor_;
        other.anchor_ = nullptr;
    }
    return *this;
}

XmlNode::~XmlNode() { xmlimpl::Release(anchor_); }

void* XmlNode::raw() const noexcept { return anchor_ ? anchor_->node : nullptr; }

XmlNodeType XmlNode::NodeType() const noexcept {
    xmlNodePtr node = XmlAccess::Raw(*this);
    if (!node) return XmlNodeType::None;
    switch (node->type) {
        case XML_ELEMENT_NODE: return XmlNodeType::Element;
        case XML_ATTRIBUTE_NODE: return XmlNodeType::Attribute;
        case XML_TEXT_NODE: return XmlNodeType::Text;
        case XML_CDATA_SECTION_NODE: return XmlNodeType::CData;
        case XML_ENTITY_REF_NODE: return XmlNodeType::EntityReference;
        case XML_PI_NODE: return XmlNodeType::ProcessingInstruction;
        case XML_COMMENT_NODE: return XmlNodeType::Comment;
        case XML_DOCUMENT_NODE:
        case XML_HTML_DOCUMENT_NODE: return XmlNodeType::Document;
        default: return XmlNodeType::Other;
    }
}

std::string XmlNode::Name() const {
    xmlNodePtr node = XmlAccess::Raw(*this);
    if (!node) return {};
    switch (node->type) {
        case XML_ELEMENT_NODE:
        case XML_PI_NODE:
        case XML_ATTRIBUTE_NODE:
        case XML_ENTITY_REF_NODE:
            return node->name ? reinterpret_cast<const char*>(node->name) : "";
        case XML_TEXT_NODE: return "#text";
        case XML_CDATA_SECTION_NODE: return "#cdata-section";
        case XML_COMMENT_NODE: return "#comment";
        case XML_DOCUMENT_NODE:
        case XML_HTML_DOCUMENT_NODE: return "#document";
        default: return {};
    }
}

std::string XmlNode::Text() const {
    xmlNodePtr node = XmlAccess::Raw(*this);
    if (!node) return {};
    // The common case, an element holding one text node, without a copy
    // through libxml2's allocator.
    if (node->type == XML_ELEMENT_NODE && node->children && !node->children->next &&
        node->children->type == XML_TEXT_NODE) {
        const xmlChar* content = node->children->content;
        return content ? reinterpret_cast<const char*>(content) : "";
    }
    if (node->type == XML_ELEMENT_NODE && !node->children) return {};
    xmlChar* content = xmlNodeGetContent(node);
    std::string text = content ? reinterpret_cast<const char*>(content) : "";
    xmlFree(content);
    return text;
}

void XmlNode::setText(std::string_view text) const {
    xmlNodePtr node = XmlAccess::Raw(*this);
    if (!node) return;
    std::string cleaned;
    const std::string_view clean = xmlimpl::IsCleanText(text) ? text : (cleaned = xmlimpl::CleanText(text));
    if (node->type == XML_ELEMENT_NODE) {
        // Unchanged single text child: nothing to do.
        if (node->children && !node->children->next && node->children->type == XML_TEXT_NODE &&
            node->children->content && clean == reinterpret_cast<const char*>(node->children->content))
            return;
        while (node->children) xmlimpl::Detach(node->children);
        if (!clean.empty()) {
            xmlNodePtr textNode = xmlNewDocTextLen(node->doc, reinterpret_cast<const xmlChar*>(clean.data()),
                                                   static_cast<int>(clean.size()));
            // Linked at once: no view can see it before, so it need not be
            // kept as an orphan on the way.
            if (textNode && !xmlimpl::MoveInto(node, textNode, nullptr)) xmlFreeNode(textNode);
        }
        return;
    }
    switch (node->type) {
        case XML_TEXT_NODE:
        case XML_CDATA_SECTION_NODE:
        case XML_COMMENT_NODE:
        case XML_PI_NODE:
            ++xmlimpl::HolderOf(node->doc)->editGeneration;
            xmlNodeSetContentLen(node, reinterpret_cast<const xmlChar*>(clean.data()), static_cast<int>(clean.size()));
            break;
        default:
            break;
    }
}

XmlNode XmlNode::SelectSingle(std::string_view path) const {
    xmlNodePtr node = XmlAccess::Raw(*this);
    if (!node) return {};
    if (path.find('/') == std::string_view::npos) {  // the usual single name
        if (path.empty()) return {};
        return XmlAccess::View(NextElement(node->children, path));
    }
    std::vector<std::string_view> parts;
    if (!SplitPath(path, parts)) return {};
    std::vector<XmlNode> found;
    Collect(node, parts, found, true);
    return found.empty() ? XmlNode() : found.front();
}

std::vector<XmlNode> XmlNode::SelectAll(std::string_view path) const {
    std::vector<XmlNode> found;
    xmlNodePtr node = XmlAccess::Raw(*this);
    std::vector<std::string_view> parts;
    if (!node || !SplitPath(path, parts)) return found;
    Collect(node, parts, found, false);
    return found;
}

std::size_t XmlNode::CountChildElements(std::string_view name) const {
    xmlNodePtr node = XmlAccess::Raw(*this);
    std::size_t count = 0;
    if (!node) return 0;
    for (xmlNodePtr child = node->children; child; child = child->next) {
        if (NameIs(child, name)) ++count;
    }
    return count;
}

namespace {

std::string_view RawChildText(xmlNodePtr element, std::string_view name, std::string& scratch) {
    xmlNodePtr child = NextElement(element->children, name);
    if (!child || !child->children) return {};
    xmlNodePtr text = child->children;
    if (!text->next && text->type == XML_TEXT_NODE && text->content) return reinterpret_cast<const char*>(text->content);
    xmlChar* content = xmlNodeGetContent(child);
    scratch = content ? reinterpret_cast<const char*>(content) : "";
    xmlFree(content);
    return scratch;
}

}  // namespace

std::string_view XmlNode::ChildText(std::string_view name, std::string& scratch) const {
    xmlNodePtr node = XmlAccess::Raw(*this);
    if (!node || name.empty() || name == "*") return {};
    return RawChildText(node, name, scratch);
}

namespace {

xmlNodePtr RawChildByChildText(xmlNodePtr node, std::string_view childName, std::string_view keyName,
                               std::string_view key, bool ignoreCase, std::string& scratch) {
    if (!node || keyName.empty() || keyName == "*") return nullptr;
    for (xmlNodePtr child = NextElement(node->children, childName); child; child = NextElement(child->next, childName)) {
        const std::string_view text = RawChildText(child, keyName, scratch);
        const bool equal = !ignoreCase ? text == key : Text::EqualsIgnoreCase(text, key);
        if (equal) return child;
    }
    return nullptr;
}

}  // namespace

XmlNode XmlNode::FindChildByChildText(std::string_view childName, std::string_view keyName, std::string_view key,
                                      bool ignoreCase) const {
    std::string scratch;
    return XmlAccess::View(RawChildByChildText(XmlAccess::Raw(*this), childName, keyName, key, ignoreCase, scratch));
}

std::string_view XmlNode::ChildTextOfChildByChildText(std::string_view childName, std::string_view keyName,
                                                      std::string_view key, std::string_view textName,
                                                      std::string& scratch) const {
    xmlNodePtr child = RawChildByChildText(XmlAccess::Raw(*this), childName, keyName, key, true, scratch);
    if (!child || textName.empty() || textName == "*") return {};
    return RawChildText(child, textName, scratch);
}

void XmlNode::ForEachChildText(std::string_view childName, std::string_view keyName,
                               const std::function<void(std::string_view)>& visit) const {
    xmlNodePtr node = XmlAccess::Raw(*this);
    if (!node || keyName.empty() || keyName == "*") return;
    std::string scratch;
    for (xmlNodePtr child = NextElement(node->children, childName); child; child = NextElement(child->next, childName))
        visit(RawChildText(child, keyName, scratch));
}

XmlNode XmlNode::ChildElementAt(std::string_view childName, long long position) const {
    xmlNodePtr node = XmlAccess::Raw(*this);
    if (!node || position < 1) return {};
    for (xmlNodePtr child = NextElement(node->children, childName); child; child = NextElement(child->next, childName)) {
        if (--position == 0) return XmlAccess::View(child);
    }
    return {};
}

std::vector<XmlNode> XmlNode::ChildNodes() const {
    std::vector<XmlNode> children;
    xmlNodePtr node = XmlAccess::Raw(*this);
    if (!node) return children;
    for (xmlNodePtr child = node->children; child; child = child->next) children.push_back(XmlAccess::View(child));
    return children;
}

XmlNode XmlNode::FirstChild() const {
    xmlNodePtr node = XmlAccess::Raw(*this);
    return node ? XmlAccess::View(node->children) : XmlNode();
}

XmlNode XmlNode::LastChild() const {
    xmlNodePtr node = XmlAccess::Raw(*this);
    return node ? XmlAccess::View(node->last) : XmlNode();
}

XmlNode XmlNode::NextSibling() const {
    xmlNodePtr node = XmlAccess::Raw(*this);
    return node && node->type != XML_DOCUMENT_NODE ? XmlAccess::View(node->next) : XmlNode();
}

XmlNode XmlNode::PreviousSibling() const {
    xmlNodePtr node = XmlAccess::Raw(*this);
    return node && node->type != XML_DOCUMENT_NODE ? XmlAccess::View(node->prev) : XmlNode();
}

XmlNode XmlNode::FirstChildElement(std::string_view name) const {
    xmlNodePtr node = XmlAccess::Raw(*this);
    return node ? XmlAccess::View(NextElement(node->children, name)) : XmlNode();
}

XmlNode XmlNode::NextSiblingElement(std::string_view name) const {
    xmlNodePtr node = XmlAccess::Raw(*this);
    return node && node->type != XML_DOCUMENT_NODE ? XmlAccess::View(NextElement(node->next, name)) : XmlNode();
}

XmlNode XmlNode::Parent() const {
    xmlNodePtr node = XmlAccess::Raw(*this);
    if (!node || node->type == XML_DOCUMENT_NODE) return {};
    return XmlAccess::View(node->parent);
}

XmlDocument XmlNode::OwnerDocument() const {
    xmlNodePtr node = XmlAccess::Raw(*this);
    if (!node || node->type == XML_DOCUMENT_NODE || node->type == XML_HTML_DOCUMENT_NODE) return {};
    return XmlAccess::Document(xmlimpl::HolderOf(node->doc));
}

XmlNode XmlNode::AppendChild(const XmlNode& child) const { return InsertBefore(child, XmlNode()); }

XmlNode XmlNode::InsertBefore(const XmlNode& child, const XmlNode& ref) const {
    if (!xmlimpl::MoveInto(XmlAccess::Raw(*this), XmlAccess::Raw(child), XmlAccess::Raw(ref))) return {};
    return child;
}

XmlNode XmlNode::RemoveChild(const XmlNode& child) const {
    xmlNodePtr node = XmlAccess::Raw(*this);
    xmlNodePtr raw = XmlAccess::Raw(child);
    if (!node || !raw || raw->parent != node) return {};
    xmlimpl::Detach(raw);
    return child;
}

XmlNode XmlNode::CloneNode(bool deep) const {
    xmlNodePtr node = XmlAccess::Raw(*this);
    if (!node) return {};
    if (node->type == XML_DOCUMENT_NODE) {
        xmlDocPtr doc = xmlCopyDoc(reinterpret_cast<xmlDocPtr>(node), deep ? 1 : 0);
        if (!doc) return {};
        xmlimpl::DocHolder* holder = xmlimpl::NewHolder(doc);
        holder->hadDeclaration = xmlimpl::HolderOf(node->doc)->hadDeclaration;
        for (xmlNodePtr c = doc->children; c; c = c->next) xmlimpl::ClearPrivate(c);
        return XmlAccess::View(reinterpret_cast<xmlNodePtr>(doc));
    }
    xmlNodePtr copy = xmlDocCopyNode(node, node->doc, deep ? 1 : 2);
    if (!copy) return {};
    xmlimpl::ClearPrivate(copy);
    xmlimpl::AddOrphan(copy);
    return XmlAccess::View(copy);
}

std::string XmlNode::Xml() const {
    xmlNodePtr node = XmlAccess::Raw(*this);
    if (!node) return {};
    if (node->type == XML_DOCUMENT_NODE) return XmlAccess::Document(xmlimpl::HolderOf(node->doc)).Serialize();
    xmlBufferPtr buffer = xmlBufferCreate();
    // Grown by doubling: the default exact growth copies the whole output
    // again for every piece, which is quadratic on large documents.
    if (buffer) xmlBufferSetAllocationScheme(buffer, XML_BUFFER_ALLOC_DOUBLEIT);
    if (!buffer) return {};
    std::string out;
    if (xmlSaveCtxtPtr ctxt = xmlSaveToBuffer(buffer, "UTF-8", XML_SAVE_NO_DECL)) {
        xmlSaveTree(ctxt, node);
        xmlSaveClose(ctxt);
        out.assign(reinterpret_cast<const char*>(xmlBufferContent(buffer)), static_cast<std::size_t>(xmlBufferLength(buffer)));
    }
    xmlBufferFree(buffer);
    return out;
}

}  // namespace meridex
