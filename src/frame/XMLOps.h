#pragma once
#include <meridex/Export.h>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <meridex/frame/XmlDocument.h>
#include <meridex/frame/XmlNode.h>

// The document helpers every XML-backed class reads and writes through.
// None of them reports an error, with one exception noted at ReadXMLInteger;
// a null node makes each do nothing.
namespace meridex::XMLOps {

// The exact data of the processing instruction of a new document.
inline constexpr std::string_view kDeclarationData = "version = \"1.0\" encoding=\"windows-1252\"";

// A new document whose only child is the "xml" processing instruction.
MERIDEX_EXPORT XmlDocument NewXMLDocument();

// The shared factory document (one per thread) lives while its use count is
// above zero. Every XML-backed class acquires it on construction and releases
// it when it ends.
MERIDEX_EXPORT void AcquireXMLFactory();
MERIDEX_EXPORT void ReleaseXMLFactory();
MERIDEX_EXPORT std::int32_t XMLFactoryUseCount();
// The factory document itself (null when no use is outstanding).
MERIDEX_EXPORT XmlDocument XMLFactory();

// A new, unattached element made by the factory document; null when the
// factory is not alive or name is not a valid element name.
MERIDEX_EXPORT XmlNode CreateXMLElement(std::string_view name);

MERIDEX_EXPORT std::string GetXMLValue(const XmlNode& node, std::string_view name, std::string_view defaultValue);
MERIDEX_EXPORT void SetXMLValue(const XmlNode& node, std::string_view name, std::string_view value, bool force);
MERIDEX_EXPORT std::string ReadXMLString(const XmlNode& node, std::string_view name, std::string_view defaultValue,
                          bool force);
// Throws Error 6 "Overflow" when the stored number is outside 16 bits.
MERIDEX_EXPORT std::int16_t ReadXMLInteger(const XmlNode& node, std::string_view name, std::int16_t defaultValue,
                            bool force);
MERIDEX_EXPORT bool ReadXMLBoolean(const XmlNode& node, std::string_view name, bool defaultValue, bool force);
MERIDEX_EXPORT void WriteXMLString(const XmlNode& node, std::string_view name, std::string_view value,
                    std::string_view defaultValue, bool force);
MERIDEX_EXPORT void WriteXMLInteger(const XmlNode& node, std::string_view name, std::int16_t value,
                     std::int16_t defaultValue, bool force);
MERIDEX_EXPORT void MarkDocumentChanged(const XmlNode& node);
MERIDEX_EXPORT std::int16_t FindXMLNodeIndex(const std::vector<XmlNode>& list, std::string_view childName,
                              std::string_view value);

}  // namespace meridex::XMLOps
