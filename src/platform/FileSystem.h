#pragma once
#include <cstdint>
#include <ctime>
#include <string>
#include <string_view>

// Internal: the file system calls of the portable code (the file helpers, the
// error log, file information), one function each, implemented in each
// platform's folder. Paths are UTF-8 and may use either separator. Not installed.
namespace meridex::FileSystem {

/// The path with the separators the system's calls take ("/" on Linux,
/// "\\" on Windows).
std::string NativePath(std::string_view path);
/// Where the last part of a file system path begins, less one: the last "/"
/// on Linux (where "\\" is a character of a name), the last "\\" or "/" on
/// Windows; npos when there is none.
std::size_t LastSeparator(std::string_view path);
/// True when a directory search for path finds a normal file: folders, and on
/// Windows hidden and system files, do not count. "*" and "?" in the last
/// part match any name. Never throws.
bool NormalFileMatches(const std::string& path);
/// True when anything (folder included) is at path; a link counts itself.
bool Exists(const std::string& path);
/// True when path has the form a folder tree can be made from: "X:\..." on
/// Windows, an absolute path (not a network one) on Linux.
bool IsRootedLocalPath(std::string_view path);
/// Where the first folder of a rooted path begins (after "X:\" or "/").
std::size_t RootLength(std::string_view path);
/// Makes one folder whose parent exists: true when it is made or already a
/// folder; else false with error an errno value (ENOTDIR when something
/// else is in the way).
bool CreateFolder(const std::string& path, int& error);
/// Makes one folder whose parent exists; throws Error on failure (76 when
/// the parent is missing). An existing folder is not a failure.
void MakeFolder(const std::string& path);
/// Sets a file's creation, access and modification times, given as file
/// times (100-nanosecond units since 1601) read as UTC, or as local time
/// when local. True when it FAILED. Linux keeps no settable creation time.
bool SetFileTimes(const std::string& path, std::int64_t created, std::int64_t accessed, std::int64_t modified,
                  bool local);
/// Appends bytes to the file (made when missing) in one write, so lines of
/// several processes never interleave; reason says why it failed.
bool AppendToFile(const std::string& path, std::string_view bytes, std::string& reason);

/// A folder of this user's own for short-lived files (the runtime or cache
/// folder on Linux, the local application data folder on Windows), not made.
std::string PerUserScratchFolder();

/// What FileInfo reports of a file.
struct Status {
    bool regular = false;
    std::uint64_t size = 0;
    timespec created{};  // birth time where it is kept, else the status change
    timespec accessed{};
    timespec modified{};
};
/// The status of the file at path, links followed; false when there is nothing.
bool GetStatus(const std::string& path, Status& status);

}  // namespace meridex::FileSystem

namespace meridex {
struct FileIdentity;
}

namespace meridex::FileSystem {

/// The identity of the file at path, links followed, without its hash
/// (exists false when there is no regular file).
FileIdentity IdentityOf(const std::string& path);
/// Reads the whole file and the identity of what was read (hash included)
/// from one open handle; false when it cannot be read.
bool ReadWithIdentity(const std::string& path, std::string& contents, FileIdentity& identity);
/// Gives the existing file a second name; false when the file system cannot
/// (or newPath is taken: never replaces anything).
bool MakeHardLink(const std::string& existing, const std::string& newPath);

}  // namespace meridex::FileSystem

// What a lock note beside an open document records.
namespace meridex::FileSystem {

/// The name of the user running this process ("" when unknown).
std::string UserName();
/// This computer's name ("" when unknown).
std::string HostName();
/// This process's number.
unsigned long long ProcessId();
/// False only when no process with that number runs on this computer.
bool ProcessRunning(unsigned long long pid);
/// Makes a new file holding bytes; false when one is there already or the
/// folder does not let it be made (never replaces anything).
bool CreateNewFile(const std::string& path, std::string_view bytes);

}  // namespace meridex::FileSystem
