#pragma once
#include <cstdint>
#include <string>
#include <string_view>

#include "frame/Index.h"
#include "frame/XmlNode.h"

// Lookup of the keyed children the profile model is made of (PROFILE under
// PROFILES, FEATURE under PROFILE): each child carries its name in a KEY
// child, matched ignoring letter case. Everything walks the element live, so
// two handles on one element never disagree.
namespace meridex::KeyedElements {

// The text of element's KEY child ("" when there is none).
std::string KeyOf(const XmlNode& element);
// True when two keys are equal ignoring letter case (all of Unicode); plain
// ASCII keys, the usual case, are compared without allocating.
bool KeysEqual(std::string_view a, std::string_view b);
// A form of key that compares equal exactly when keys are equal ignoring case.
std::string FoldedKey(std::string_view key);
// The first child named childName whose KEY equals key ignoring case.
XmlNode FindByKey(const XmlNode& parent, std::string_view childName, std::string_view key);
// The child named childName at a 1-based position or with a key; null when
// the index names none.
XmlNode Find(const XmlNode& parent, std::string_view childName, const Index& index);
// The number of children named childName, held to the 16-bit range.
std::int16_t Count(const XmlNode& parent, std::string_view childName);
// Removes every child named childName.
void RemoveAll(const XmlNode& parent, std::string_view childName);

}  // namespace meridex::KeyedElements
