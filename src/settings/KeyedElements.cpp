#include <meridex/settings/KeyedElements.h>

#include <algorithm>
#include <limits>

namespace meridex::KeyedElements {

// The host asks for a feature by key once per command; these lookups use the
// views' read-only walks, which make no view (and no copy) per child.

void ForEachKey(const XmlNode& parent, std::string_view childName,
                const std::function<void(std::string_view)>& visit) {
    parent.ForEachChildText(childName, "KEY", visit);
}

XmlNode FindByKey(const XmlNode& parent, std::string_view childName, std::string_view key) {
    return parent.FindChildByChildText(childName, "KEY", key);
}

XmlNode Find(const XmlNode& parent, std::string_view childName, const Index& index) {
    if (!index.IsNumber()) return FindByKey(parent, childName, index.Key());
    return parent.ChildElementAt(childName, index.Number());
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
