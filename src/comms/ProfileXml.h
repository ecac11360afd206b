#pragma once
#include <meridex/Export.h>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include <meridex/frame/XmlNode.h>

/// Field access on device profiles without side effects: reading never
/// creates an element and writing never sets a change mark (the map and the
/// schemes carry none).
namespace meridex::ProfileXml {

/// True when the profile has a child element of that name.
MERIDEX_EXPORT bool HasChild(const XmlNode& profile, std::string_view name);
/// The child's text, "" when there is no such child.
MERIDEX_EXPORT std::string ChildText(const XmlNode& profile, std::string_view name);
/// Sets the child's text, appending the child when it is missing.
MERIDEX_EXPORT void SetChild(const XmlNode& profile, std::string_view name, std::string_view text);
/// Sets the child's text only when the child exists.
MERIDEX_EXPORT void SetExisting(const XmlNode& profile, std::string_view name, std::string_view text);
/// A stored boolean: a non-zero number, or "True" in any case.
MERIDEX_EXPORT bool IsTrueText(std::string_view text);
/// COMMPORT as a 16-bit number: missing or not a number reads as 0;
/// nullopt for a number out of range, which equals no port.
MERIDEX_EXPORT std::optional<std::int16_t> PortNumber(const XmlNode& profile);
}  // namespace meridex::ProfileXml
