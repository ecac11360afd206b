#pragma once
#include <meridex/Export.h>
#include <cstdint>
#include <string>
#include <string_view>

#include <meridex/frame/DateTime.h>

/// Path and file helpers. Both "\" and "/" separate path parts. An absolute
/// POSIX path plays the part of the drive-letter form.
namespace meridex::FileOps {

/// True for "\" and "/".
MERIDEX_EXPORT bool IsSeparator(char c) noexcept;

/// The file name without folder and extension ("" when the last full stop
/// stands in a folder name).
MERIDEX_EXPORT std::string GetFileBaseName(std::string_view path);
/// The folder part including its trailing separator ("" when there is none).
MERIDEX_EXPORT std::string GetFolderPath(std::string_view path);
/// True when a normal file (not a folder) matches the path, double quotes
/// removed; "*" and "?" in the last part match any file. Never throws.
MERIDEX_EXPORT bool FileExists(std::string_view path);
/// Creates the folder and every missing parent, outermost first. Throws Error
/// 76 "Path not found" for an empty, relative or network (two leading
/// separators) path, and the system's error when a folder cannot be made.
MERIDEX_EXPORT void CreateFolderPath(std::string_view path);

/// The date's fields as a SYSTEMTIME record (day of the week and
/// milliseconds left 0).
MERIDEX_EXPORT SystemTime DateToSystemTime(const DateTime& date);
/// 100-nanosecond units since 1 January 1601, the date taken as it is.
MERIDEX_EXPORT std::int64_t DateToFileTime(const DateTime& date);
/// Sets the access and modification times of an existing file. A Linux file
/// has no settable creation time, so created is accepted and not applied.
/// Answers true when it FAILED, false when the times were set.
MERIDEX_EXPORT bool SetFileDateTimes(std::string_view path, const DateTime& created, const DateTime& accessed,
                      const DateTime& modified, bool local);

/// Reads a whole file; false when it cannot.
MERIDEX_EXPORT bool ReadWholeFile(const std::string& path, std::string& contents);
/// Writes bytes to path atomically: a temporary file beside the final target
/// (symbolic links followed), flushed and renamed over it; the old file is
/// untouched when this fails. Temporaries of earlier saves that were killed
/// are removed first. Where no file can be made beside the target, the target
/// is rewritten in place and flushed instead (see ARCHITECTURE.md).
MERIDEX_EXPORT bool WriteFileAtomic(const std::string& path, std::string_view bytes, std::string* error = nullptr);
/// Copies a file that could not be read to a free name beside it
/// (path + ".unreadable", then ".unreadable-1", ...) so a later save cannot
/// lose it. Returns the copy's path, or "" when there was nothing to keep or
/// the copy failed.
MERIDEX_EXPORT std::string KeepUnreadableFile(const std::string& path);

}  // namespace meridex::FileOps
