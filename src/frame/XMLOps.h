#pragma once
#include <meridex/Export.h>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <meridex/frame/XmlDocument.h>
#include <meridex/frame/XmlNode.h>

/// The document helpers every XML-backed class reads and writes through.
/// None of them reports an error, with one exception noted at ReadXMLInteger;
/// a null node makes each do nothing.
///
/// A write that may need to make an element (WriteXMLString, WriteXMLInteger)
/// or set the change mark (MarkDocumentChanged, and so every write of
/// SetXMLValue and of the Read... helpers storing a default) must be made
/// while the factory document is alive, that is while an XMLFactoryLease is
/// held on the calling thread. Without one, a debug build (NDEBUG not
/// defined) stops the program with a message saying so; a release build goes
/// on, and the new element or the mark is not made.
namespace meridex::XMLOps {

/// The exact data of the processing instruction of a new document.
inline constexpr std::string_view kDeclarationData = "version = \"1.0\" encoding=\"windows-1252\"";

/// A new document whose only child is the "xml" processing instruction.
MERIDEX_EXPORT XmlDocument NewXMLDocument();

/// Takes one use of the shared factory document (one per thread), making it
/// when the count was zero. It lives while its use count is above zero;
/// every XML-backed class takes a use on construction, through an
/// XMLFactoryLease, and gives it back when it ends.
MERIDEX_EXPORT void AcquireXMLFactory();
/// Gives one use back; at zero the factory document is let go.
MERIDEX_EXPORT void ReleaseXMLFactory();
/// The number of uses outstanding on this thread.
MERIDEX_EXPORT std::int32_t XMLFactoryUseCount();
/// The factory document itself (null when no use is outstanding).
MERIDEX_EXPORT XmlDocument XMLFactory();

/// A new, unattached element made by the factory document; null when the
/// factory is not alive or name is not a valid element name.
MERIDEX_EXPORT XmlNode CreateXMLElement(std::string_view name);

/// The text of node's child name. A missing child gives defaultValue, which is
/// then stored by SetXMLValue's rule (not forced). A null node gives "".
MERIDEX_EXPORT std::string GetXMLValue(const XmlNode& node, std::string_view name, std::string_view defaultValue);
/// Stores value as the text of node's child name and marks the document
/// changed. With force the text is always written, the child made when
/// missing. Without, "" and "0" remove the child (no mark), and a text equal
/// to the stored one is not rewritten.
MERIDEX_EXPORT void SetXMLValue(const XmlNode& node, std::string_view name, std::string_view value, bool force);
/// The text of node's child name. A missing child gives defaultValue, which is
/// then stored by SetXMLValue with force. A null node gives defaultValue.
MERIDEX_EXPORT std::string ReadXMLString(const XmlNode& node, std::string_view name, std::string_view defaultValue,
                          bool force);
/// The leading number of node's child name, as ReadXMLString reads the text
/// (the default stored as text when the child is missing). Throws Error 6
/// "Overflow" when the stored number is outside 16 bits.
MERIDEX_EXPORT std::int16_t ReadXMLInteger(const XmlNode& node, std::string_view name, std::int16_t defaultValue,
                            bool force);
/// True when node's child name holds a non-zero number or "True" in any case.
/// A missing child gives defaultValue, stored as "True" or "False" as
/// ReadXMLString stores a default.
MERIDEX_EXPORT bool ReadXMLBoolean(const XmlNode& node, std::string_view name, bool defaultValue, bool force);
/// Writes value into node's existing child name; a missing child is made
/// (by the factory) only with force or when value differs from defaultValue.
/// The document is marked changed either way.
MERIDEX_EXPORT void WriteXMLString(const XmlNode& node, std::string_view name, std::string_view value,
                    std::string_view defaultValue, bool force);
/// As WriteXMLString, for a number written as decimal text.
MERIDEX_EXPORT void WriteXMLInteger(const XmlNode& node, std::string_view name, std::int16_t value,
                     std::int16_t defaultValue, bool force);
/// Sets the CHANGED child of the root element of node's document to "-1",
/// making it (by the factory) when missing. Does nothing for a document node
/// or a document without a root element.
MERIDEX_EXPORT void MarkDocumentChanged(const XmlNode& node);
/// The 0-based position in list (its first 32767 nodes) of the first node
/// whose child childName holds value, ignoring case; -1 when none does.
MERIDEX_EXPORT std::int16_t FindXMLNodeIndex(const std::vector<XmlNode>& list, std::string_view childName,
                              std::string_view value);

}  // namespace meridex::XMLOps
