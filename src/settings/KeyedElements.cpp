#include "settings/KeyedElements.h"

#include <algorithm>
#include <limits>

#include "frame/Text.h"
// The host asks for a feature by key once per command; the lookups below walk
// the tree read-only without making a view (and an allocation) per child.
#include "frame/XmlAccess.h"

namespace meridex::KeyedElements {

namespace {

bool IsNamed(xmlNodePtr node, std::string_view name) {
    if (node->type != XML_ELEMENT_NODE || !node->name) return false;
    return std::string_view(reinterpret_cast<const char*>(node->name)) == name;
}

xmlNodePtr FirstNamed(xmlNodePtr node, std::string_view name) {
    while (node && !IsNamed(node, name)) node = node->next;
    return node;
}

// The KEY text of an element, without a copy when KEY holds one text node
// (always, in documents this library writes); scratch holds any other form.
std::string_view RawKeyOf(xmlNodePtr element, std::string& scratch) {
    const xmlNodePtr key = FirstNamed(element->children, "KEY");
    if (!key || !key->children) return {};
    const xmlNodePtr text = key->children;
    if (!text->next && text->type == XML_TEXT_NODE && text->content) {
        return reinterpret_cast<const char*>(text->content);
    }
    scratch = XmlAccess::View(key).Text();
    return scratch;
}

}  // namespace

void ForEachKey(const XmlNode& parent, std::string_view childName,
                const std::function<void(std::string_view)>& visit) {
    const xmlNodePtr raw = XmlAccess::Raw(parent);
    if (!raw) return;
    std::string scratch;
    for (xmlNodePtr child = FirstNamed(raw->children, childName); child;
         child = FirstNamed(child->next, childName)) {
        visit(RawKeyOf(child, scratch));
    }
}

XmlNode FindByKey(const XmlNode& parent, std::string_view childName, std::string_view key) {
    const xmlNodePtr raw = XmlAccess::Raw(parent);
    if (!raw) return {};
    std::string scratch;
    for (xmlNodePtr child = FirstNamed(raw->children, childName); child;
         child = FirstNamed(child->next, childName)) {
        if (Text::EqualsIgnoreCase(RawKeyOf(child, scratch), key)) return XmlAccess::View(child);
    }
    return {};
}

XmlNode Find(const XmlNode& parent, std::string_view childName, const Index& index) {
    if (!index.IsNumber()) return FindByKey(parent, childName, index.Key());
    const xmlNodePtr raw = XmlAccess::Raw(parent);
    long long position = index.Number();
    if (!raw || position < 1) return {};
    for (xmlNodePtr child = FirstNamed(raw->children, childName); child;
         child = FirstNamed(child->next, childName)) {
        if (--position == 0) return XmlAccess::View(child);
    }
    return {};
}

std::int16_t Count(const XmlNode& parent, std::string_view childName) {
    const std::size_t count = parent.CountChildElements(childName);
    return static_cast<std::int16_t>(
        std::min<std::size_t>(count, std::numeric_limits<std::int16_t>::max()));
}

void RemoveAll(const XmlNode& parent, std::string_view childName) {
    while (XmlNode child = parent.FirstChildElement(childName)) {
        if (!parent.RemoveChild(child)) return;
    }
}

}  // namespace meridex::KeyedElements
