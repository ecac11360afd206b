#pragma once
#include <cstdint>
#include <string>
#include <string_view>
#include <functional>

#include <meridex/frame/Index.h>
#include <meridex/frame/XmlNode.h>

// Lookup of the keyed children the profile model is made of (PROFILE under
// PROFILES, FEATURE under PROFILE): each child carries its name in a KEY
// child, matched ignoring letter case. Everything walks the element live, so
// two handles on one element never disagree.
namespace meridex::KeyedElements {

// Calls visit with the KEY text of every child named childName, in order
// (the text is only valid during the call).
void ForEachKey(const XmlNode& parent, std::string_view childName,
                const std::function<void(std::string_view)>& visit);
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
