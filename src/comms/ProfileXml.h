#pragma once
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "frame/XmlNode.h"

// Field access on device profiles without side effects: reading never
// creates an element and writing never sets a change mark (the map and the
// schemes carry none).
namespace meridex::ProfileXml {

bool HasChild(const XmlNode& profile, std::string_view name);
// The child's text, "" when there is no such child.
std::string ChildText(const XmlNode& profile, std::string_view name);
// Sets the child's text, appending the child when it is missing.
void SetChild(const XmlNode& profile, std::string_view name, std::string_view text);
// Sets the child's text only when the child exists.
void SetExisting(const XmlNode& profile, std::string_view name, std::string_view text);
// A stored boolean: a non-zero number, or "True" in any case.
bool IsTrueText(std::string_view text);
// COMMPORT as a 16-bit number: missing or not a number reads as 0;
// nullopt for a number out of range, which equals no port.
std::optional<std::int16_t> PortNumber(const XmlNode& profile);
}  // namespace meridex::ProfileXml
