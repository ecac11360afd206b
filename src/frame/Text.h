#pragma once
#include <string>
#include <string_view>

// Text helpers over UTF-8 strings. Case-insensitive comparison covers all of
// Unicode (simple case mapping), not only ASCII, and never depends on the
// process locale.
namespace meridex::Text {

// Case-folded form of text, suitable as a key for case-insensitive lookup.
std::string FoldCase(std::string_view text);
// Upper-case form of text (used where the system keys by upper case).
std::string ToUpper(std::string_view text);
bool EqualsIgnoreCase(std::string_view a, std::string_view b);
// Strict UTF-8 validity (no overlongs, no surrogates).
bool IsValidUtf8(std::string_view text);
// Removes leading and trailing blanks (space, tab, CR, LF).
std::string_view Trim(std::string_view text);
// Removes leading and trailing tab characters only.
std::string_view TrimTabs(std::string_view text);
// Windows-1252 bytes to UTF-8 and back. Characters that windows-1252 cannot
// hold become "?" on the way back.
std::string FromWindows1252(std::string_view bytes);
std::string ToWindows1252(std::string_view utf8);

}  // namespace meridex::Text
