#include "settings/KeyedElements.h"

#include <algorithm>
#include <limits>

#include "frame/Text.h"

namespace meridex::KeyedElements {

namespace {

bool IsAscii(std::string_view text) {
    return std::all_of(text.begin(), text.end(),
                       [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

char AsciiLower(char c) { return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c; }

}  // namespace

std::string KeyOf(const XmlNode& element) { return element.FirstChildElement("KEY").Text(); }

bool KeysEqual(std::string_view a, std::string_view b) {
    // Only when both sides are ASCII is ASCII folding exact: "K" also equals
    // the Kelvin sign, which Unicode folding knows about.
    if (IsAscii(a) && IsAscii(b)) {
        return a.size() == b.size() &&
               std::equal(a.begin(), a.end(), b.begin(),
                          [](char x, char y) { return AsciiLower(x) == AsciiLower(y); });
    }
    return Text::EqualsIgnoreCase(a, b);
}

std::string FoldedKey(std::string_view key) {
    if (!IsAscii(key)) return Text::FoldCase(key);
    std::string folded(key);
    for (char& c : folded) c = AsciiLower(c);
    return folded;
}

XmlNode FindByKey(const XmlNode& parent, std::string_view childName, std::string_view key) {
    for (XmlNode child = parent.FirstChildElement(childName); child;
         child = child.NextSiblingElement(childName)) {
        if (KeysEqual(KeyOf(child), key)) return child;
    }
    return {};
}

XmlNode Find(const XmlNode& parent, std::string_view childName, const Index& index) {
    if (!index.IsNumber()) return FindByKey(parent, childName, index.Key());
    long long position = index.Number();
    if (position < 1) return {};
    for (XmlNode child = parent.FirstChildElement(childName); child;
         child = child.NextSiblingElement(childName)) {
        if (--position == 0) return child;
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
