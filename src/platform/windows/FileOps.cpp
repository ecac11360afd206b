#include <meridex/frame/FileOps.h>

#include <windows.h>
#include <fcntl.h>
#include <io.h>

#include <cerrno>
#include <cstring>

#include <meridex/frame/DiskSteps.h>
#include <meridex/platform/windows/WideText.h>
#include <meridex/platform/windows/WindowsFiles.h>

// The file helpers that read and write files, on Windows. A save writes a
// temporary file beside the target, flushes it and puts it in the target's
// place with the replace-file call, which keeps the target's attributes,
// security and creation time.
namespace meridex::FileOps {
namespace {

// Every program that reads or writes a document links this file.
const bool kWindows1252Ready = (Windows::RegisterWindows1252Encoding(), true);

std::string Reason(const std::string& what, const std::string& path, int error) {
    return what + " " + path + ": " + std::strerror(error);
}

int SetErrno(DWORD error) {
    errno = Windows::ErrnoOf(error);
    return -1;
}

// A C runtime descriptor for a handle (closing it closes the handle).
int AsDescriptor(HANDLE handle) {
    if (handle == INVALID_HANDLE_VALUE) return SetErrno(::GetLastError());
    const int fd = ::_open_osfhandle(reinterpret_cast<intptr_t>(handle), _O_BINARY);
    if (fd < 0) ::CloseHandle(handle);
    return fd;
}

HANDLE HandleOf(int fd) { return reinterpret_cast<HANDLE>(::_get_osfhandle(fd)); }

bool IsReadOnlyFile(DWORD attributes) {
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_READONLY);
}

}  // namespace

bool ReadWholeFile(const std::string& path, std::string& contents) {
    HANDLE file = ::CreateFileW(Windows::LongPath(path).c_str(), GENERIC_READ,
                                FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING,
                                FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        SetErrno(::GetLastError());
        return false;
    }
    contents.clear();
    LARGE_INTEGER size{};
    if (::GetFileSizeEx(file, &size) && size.QuadPart > 0) contents.reserve(static_cast<std::size_t>(size.QuadPart));
    char buffer[65536];
    bool ok = true;
    for (;;) {
        DWORD got = 0;
        if (!::ReadFile(file, buffer, sizeof buffer, &got, nullptr)) {
            SetErrno(::GetLastError());
            ok = false;
            break;
        }
        if (got == 0) break;
        contents.append(buffer, got);
    }
    ::CloseHandle(file);
    return ok;
}

// The template's XXXXXX become a counter and the clock; the file is made new
// (never over another) and held without sharing until it is renamed, which
// tells a later save that its writer is alive.
int DiskSteps::CreateTemp(std::string& pathTemplate) {
    static unsigned counter = 0;
    const std::size_t x = pathTemplate.rfind("XXXXXX");
    if (x == std::string::npos) return SetErrno(ERROR_INVALID_NAME);
    for (int attempt = 0; attempt < 100; ++attempt) {
        char suffix[7];
        const unsigned value = (::GetTickCount() * 31u + counter++ * 7919u) % 1000000u;
        std::snprintf(suffix, sizeof suffix, "%06u", value);
        pathTemplate.replace(x, 6, suffix);
        HANDLE file = ::CreateFileW(Windows::LongPath(pathTemplate).c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                                    FILE_ATTRIBUTE_NORMAL, nullptr);
        if (file != INVALID_HANDLE_VALUE) return AsDescriptor(file);
        if (::GetLastError() != ERROR_FILE_EXISTS) return SetErrno(::GetLastError());
        pathTemplate.replace(x, 6, "XXXXXX");
    }
    return SetErrno(ERROR_FILE_EXISTS);
}

int DiskSteps::OpenExisting(const std::string& path) {
    return AsDescriptor(::CreateFileW(Windows::LongPath(path).c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr,
                                      OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
}

ssize_t DiskSteps::Write(int fd, const char* data, std::size_t size, off_t offset) {
    OVERLAPPED at{};
    at.Offset = static_cast<DWORD>(static_cast<std::uint64_t>(offset) & 0xFFFFFFFFu);
    at.OffsetHigh = static_cast<DWORD>(static_cast<std::uint64_t>(offset) >> 32);
    DWORD written = 0;
    const DWORD chunk = size > (1u << 30) ? (1u << 30) : static_cast<DWORD>(size);
    if (!::WriteFile(HandleOf(fd), data, chunk, &written, &at)) return SetErrno(::GetLastError());
    return static_cast<ssize_t>(written);
}

int DiskSteps::Sync(int fd) { return ::FlushFileBuffers(HandleOf(fd)) ? 0 : SetErrno(::GetLastError()); }

int DiskSteps::Truncate(int fd, std::uint64_t size) {
    LARGE_INTEGER end{};
    end.QuadPart = static_cast<LONGLONG>(size);
    if (::SetFilePointerEx(HandleOf(fd), end, nullptr, FILE_BEGIN) && ::SetEndOfFile(HandleOf(fd))) return 0;
    return SetErrno(::GetLastError());
}

int DiskSteps::Close(int fd) { return ::_close(fd); }

int DiskSteps::Rename(const std::string& from, const std::string& to) {
    const std::wstring source = Windows::LongPath(from);
    const std::wstring target = Windows::LongPath(to);
    if (::ReplaceFileW(target.c_str(), source.c_str(), nullptr, REPLACEFILE_IGNORE_MERGE_ERRORS, nullptr, nullptr))
        return 0;
    const DWORD error = ::GetLastError();
    // Nothing to replace yet: a plain move, flushed through.
    if (error == ERROR_FILE_NOT_FOUND &&
        ::MoveFileExW(source.c_str(), target.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH))
        return 0;
    return SetErrno(error == ERROR_FILE_NOT_FOUND ? ::GetLastError() : error);
}

namespace {

constexpr std::string_view kTempTag = ".tmp-";

// Temporaries of earlier saves of this file that were killed: their process
// is gone, and nobody holds them (a live writer shares its temporary with no
// one, so it cannot be removed under it).
void RemoveDeadTemporaries(const std::string& folder, const std::string& name) {
    const std::string prefix = "." + name + std::string(kTempTag);
    WIN32_FIND_DATAW entry;
    HANDLE search = ::FindFirstFileW(Windows::LongPath(folder + "\\" + prefix + "*").c_str(), &entry);
    if (search == INVALID_HANDLE_VALUE) return;
    do {
        const std::string entryName = Wide::ToUtf8(entry.cFileName);
        const std::string rest = entryName.substr(std::min(prefix.size(), entryName.size()));
        const unsigned long long pid = TemporaryWriter(rest);
        if (pid == 0 || pid == ::GetCurrentProcessId()) continue;
        HANDLE process = ::OpenProcess(SYNCHRONIZE, FALSE, static_cast<DWORD>(pid));
        if (process) {
            const bool running = ::WaitForSingleObject(process, 0) == WAIT_TIMEOUT;
            ::CloseHandle(process);
            if (running) continue;  // maybe still writing
        }
        ::DeleteFileW(Windows::LongPath(folder + "\\" + entryName).c_str());
    } while (::FindNextFileW(search, &entry));
    ::FindClose(search);
}

// The save lock of a file: ".NAME.savelock" beside it, shared with no one
// and deleted when closed, so it is never left behind. Waits up to ten
// seconds for another save to finish; where it cannot be made (a folder the
// user may not write) the save goes on without it.
HANDLE LockForSave(const std::string& folderPrefix, const std::string& name) {
    const std::wstring lockPath = Windows::LongPath(folderPrefix + "." + name + ".savelock");
    for (int attempt = 0; attempt < 1000; ++attempt) {
        HANDLE lock = ::CreateFileW(lockPath.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                                    FILE_ATTRIBUTE_HIDDEN | FILE_FLAG_DELETE_ON_CLOSE, nullptr);
        if (lock != INVALID_HANDLE_VALUE) return lock;
        const DWORD error = ::GetLastError();
        if (error != ERROR_SHARING_VIOLATION && error != ERROR_ACCESS_DENIED) return INVALID_HANDLE_VALUE;
        ::Sleep(10);
    }
    return INVALID_HANDLE_VALUE;
}

}  // namespace

bool WriteFileAtomic(const std::string& path, std::string_view bytes, std::string* error) {
    return WriteFileAtomicChecked(path, bytes, error, {});
}

bool WriteFileAtomicChecked(const std::string& path, std::string_view bytes, std::string* error,
                            const RenameCheck& check) {
    const auto fail = [&](std::string reason) {
        if (error) *error = std::move(reason);
        return false;
    };
    if (path.empty() || path.back() == '/' || path.back() == '\\') return fail("not a file path: " + path);
    const DWORD attributes = ::GetFileAttributesW(Windows::LongPath(path).c_str());
    const bool exists = attributes != INVALID_FILE_ATTRIBUTES;
    if (exists && (attributes & (FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_DEVICE)))
        return fail(path + " is not a regular file");
    if (exists && IsReadOnlyFile(attributes)) return fail(path + " is read-only");
    const std::size_t sep = path.find_last_of("\\/");
    const std::string folder = sep == std::string::npos ? "." : path.substr(0, sep == 2 && path[1] == ':' ? 3 : sep);
    const std::string name = sep == std::string::npos ? path : path.substr(sep + 1);
    const std::string folderPrefix = sep == std::string::npos ? std::string() : path.substr(0, sep + 1);
    RemoveDeadTemporaries(folder, name);
    std::string temp =
        folderPrefix + "." + name + std::string(kTempTag) + std::to_string(::GetCurrentProcessId()) + "-XXXXXX";
    DiskSteps& steps = CurrentDiskSteps();
    const int fd = steps.CreateTemp(temp);
    if (fd < 0) {
        const int createError = errno;
        if (!exists || (createError != EACCES && createError != EPERM))
            return fail(Reason("cannot write in", folder, createError));
        if (check && !check({}, path)) return fail(path + " was changed by someone else");
        int inPlaceError = 0;
        if (!WriteInPlace(path, bytes, inPlaceError)) return fail(Reason("cannot write", path, inPlaceError));
        return true;
    }
    errno = 0;
    bool ok = WriteAllAt(fd, bytes) && steps.Sync(fd) == 0;
    int writeError = errno;
    if (steps.Close(fd) != 0 && ok) {
        ok = false;
        writeError = errno;
    }
    const std::wstring wideTemp = Windows::LongPath(temp);
    if (!ok) {
        ::DeleteFileW(wideTemp.c_str());
        return fail(Reason("cannot write", path, writeError ? writeError : EIO));
    }
    // A checked save holds the save lock of the file from its check to its
    // rename, so no other checked save can put a version in place in between.
    const HANDLE lock = check ? LockForSave(folderPrefix, name) : INVALID_HANDLE_VALUE;
    if (check && !check(temp, path)) {
        ::DeleteFileW(wideTemp.c_str());
        if (lock != INVALID_HANDLE_VALUE) ::CloseHandle(lock);
        return fail(path + " was changed by someone else");
    }
    const bool renamed = steps.Rename(temp, path) == 0;
    const int renameError = errno;
    if (lock != INVALID_HANDLE_VALUE) ::CloseHandle(lock);
    if (!renamed) {
        ::DeleteFileW(wideTemp.c_str());
        return fail(Reason("cannot replace", path, renameError));
    }
    return true;
}

std::string KeepUnreadableFile(const std::string& path) {
    const DWORD attributes = ::GetFileAttributesW(Windows::LongPath(path).c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES || (attributes & FILE_ATTRIBUTE_DIRECTORY)) return {};
    for (int n = 0; n < 10000; ++n) {
        const std::string candidate = path + ".unreadable" + (n ? "-" + std::to_string(n) : "");
        if (::GetFileAttributesW(Windows::LongPath(candidate).c_str()) != INVALID_FILE_ATTRIBUTES) continue;
        // A second name for the same bytes: the save that follows replaces
        // only the original name.
        if (::CreateHardLinkW(Windows::LongPath(candidate).c_str(), Windows::LongPath(path).c_str(), nullptr))
            return candidate;
        std::string contents;
        if (ReadWholeFile(path, contents) && WriteFileAtomic(candidate, contents)) return candidate;
        return {};
    }
    return {};
}

}  // namespace meridex::FileOps
