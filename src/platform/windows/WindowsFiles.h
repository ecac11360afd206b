#pragma once
#include <windows.h>

#include <string>
#include <string_view>

// Internal helpers of the Windows file code.
namespace meridex::Windows {

/// A UTF-8 path as the wide API takes it: forward slashes turned to back
/// slashes, and an absolute drive path longer than MAX_PATH given the "\\?\"
/// prefix so it is not cut short.
std::wstring LongPath(std::string_view path);
/// The system's text for an error code, without its line end.
std::string Message(DWORD error);
/// The errno value nearest to a Windows error code.
int ErrnoOf(DWORD error);
/// Gives libxml2 (built without iconv) the windows-1252 code page from the
/// library's own table; once per process, before any document is read.
void RegisterWindows1252Encoding();

}  // namespace meridex::Windows
