#pragma once
#include <meridex/Export.h>
#include <string>
#include <string_view>

/// Text helpers over UTF-8 strings. Case-insensitive comparison covers all of
/// Unicode (simple case mapping), not only ASCII, and never depends on the
/// process locale.
namespace meridex::Text {

/// Case-folded form of text, suitable as a key for case-insensitive lookup.
MERIDEX_EXPORT std::string FoldCase(std::string_view text);
/// Upper-case form of text (used where the system keys by upper case).
MERIDEX_EXPORT std::string ToUpper(std::string_view text);
/// True when a and b are equal ignoring letter case.
MERIDEX_EXPORT bool EqualsIgnoreCase(std::string_view a, std::string_view b);
/// Strict UTF-8 validity (no overlongs, no surrogates).
MERIDEX_EXPORT bool IsValidUtf8(std::string_view text);
/// Removes leading and trailing blanks (space, tab, CR, LF).
MERIDEX_EXPORT std::string_view Trim(std::string_view text);
/// Removes leading and trailing tab characters only.
MERIDEX_EXPORT std::string_view TrimTabs(std::string_view text);
/// Windows-1252 bytes as UTF-8.
MERIDEX_EXPORT std::string FromWindows1252(std::string_view bytes);
/// UTF-8 as windows-1252 bytes; characters that windows-1252 cannot hold
/// become "?".
MERIDEX_EXPORT std::string ToWindows1252(std::string_view utf8);
/// True when every character of the UTF-8 text has a windows-1252 byte, so the text comes back
/// alike from windows-1252 (a password the legacy host stores that way can be typed again).
MERIDEX_EXPORT bool FitsWindows1252(std::string_view utf8);
/// Serialised UTF-8 XML made readable alike as UTF-8 and as windows-1252: every
/// character above 127 in text and attribute values becomes a character
/// reference ("&#252;"). Names, comments and processing instructions cannot
/// hold references and keep their characters.
MERIDEX_EXPORT std::string XmlWithCharacterReferences(std::string_view xml);

}  // namespace meridex::Text
