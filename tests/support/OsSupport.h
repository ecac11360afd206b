#pragma once
// The few operating-system calls the tests make themselves, one file per system.
#include <ctime>
#include <memory>
#include <string>

#include <meridex/platform/UserStore.h>

namespace meridex::test {

// Gives a file exact access and modification times (seconds since 1970 and
// nanoseconds; Windows keeps them to 100 nanoseconds). False when it cannot.
bool SetFileTimes(const std::string& path, const timespec& accessed, const timespec& modified);
// Makes a file read-only (no write permission; the read-only attribute on
// Windows) or writable again; false when it cannot.
bool SetReadOnly(const std::string& path, bool readOnly);
// Writes bytes to a C runtime file descriptor; false when not all could be.
bool WriteToDescriptor(int fd, const std::string& bytes);
// A per-user store of its own for one test, empty at first, that never
// touches the real user's settings: files under folder on Linux, a scratch
// registry key (removed when the store ends) on Windows.
std::shared_ptr<UserStore> MakeScratchUserStore(const std::string& folder);
// True where "\\" separates path parts (Windows); on Linux it is a character of a name.
extern const bool kBackSlashSeparates;
// Why a test of folders closed to writing cannot run here, or null when it can.
const char* WhyFolderPermissionsCannotBeTested();

}  // namespace meridex::test
