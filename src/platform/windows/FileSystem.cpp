#include <meridex/platform/FileSystem.h>

#include <windows.h>

#include <cerrno>

#include <meridex/frame/Error.h>
#include <meridex/frame/FileIdentity.h>
#include <meridex/platform/windows/WideText.h>
#include <meridex/platform/windows/WindowsFiles.h>

namespace meridex::FileSystem {
namespace {

bool IsSeparator(char c) { return c == '\\' || c == '/'; }

// 100-nanosecond units since 1601 <-> the API's two halves.
FILETIME ToFileTime(std::int64_t value) {
    FILETIME time;
    time.dwLowDateTime = static_cast<DWORD>(static_cast<std::uint64_t>(value) & 0xFFFFFFFFu);
    time.dwHighDateTime = static_cast<DWORD>(static_cast<std::uint64_t>(value) >> 32);
    return time;
}

timespec ToTimespec(const FILETIME& time) {
    const std::int64_t value =
        static_cast<std::int64_t>((static_cast<std::uint64_t>(time.dwHighDateTime) << 32) | time.dwLowDateTime);
    constexpr std::int64_t kUnixEpoch = 116444736000000000LL;
    timespec ts{};
    std::int64_t since = value - kUnixEpoch;
    std::int64_t seconds = since / 10000000LL;
    std::int64_t rest = since % 10000000LL;
    if (rest < 0) {
        rest += 10000000LL;
        --seconds;
    }
    ts.tv_sec = static_cast<decltype(ts.tv_sec)>(seconds);
    ts.tv_nsec = static_cast<long>(rest * 100);
    return ts;
}

}  // namespace

std::size_t LastSeparator(std::string_view path) { return path.find_last_of("\\/"); }

bool NormalFileMatches(const std::string& path) {
    // The directory search matches wild cards itself; it lists folders too, so
    // each entry is checked. Hidden and system files do not count either.
    WIN32_FIND_DATAW entry;
    HANDLE search = ::FindFirstFileExW(Windows::LongPath(path).c_str(), FindExInfoBasic, &entry,
                                       FindExSearchNameMatch, nullptr, 0);
    if (search == INVALID_HANDLE_VALUE) return false;
    bool found = false;
    do {
        constexpr DWORD kNotNormal =
            FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM | FILE_ATTRIBUTE_DEVICE;
        found = (entry.dwFileAttributes & kNotNormal) == 0;
    } while (!found && ::FindNextFileW(search, &entry));
    ::FindClose(search);
    return found;
}

bool Exists(const std::string& path) {
    return ::GetFileAttributesW(Windows::LongPath(path).c_str()) != INVALID_FILE_ATTRIBUTES;
}

// A drive letter form: any character, a colon, a back slash (or a slash).
std::string NativePath(std::string_view path) {
    std::string out(path);
    for (char& c : out) {
        if (c == '/') c = '\\';
    }
    return out;
}

bool IsRootedLocalPath(std::string_view path) { return path.size() >= 3 && path[1] == ':' && IsSeparator(path[2]); }

std::size_t RootLength(std::string_view) { return 3; }

bool CreateFolder(const std::string& path, int& error) {
    const std::wstring wide = Windows::LongPath(path);
    if (::CreateDirectoryW(wide.c_str(), nullptr)) return true;
    const DWORD code = ::GetLastError();
    const DWORD attributes = ::GetFileAttributesW(wide.c_str());
    if (code == ERROR_ALREADY_EXISTS && attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY))
        return true;
    error = code == ERROR_ALREADY_EXISTS || code == ERROR_FILE_EXISTS ? ENOTDIR : Windows::ErrnoOf(code);
    return false;
}

void MakeFolder(const std::string& path) {
    if (::CreateDirectoryW(Windows::LongPath(path).c_str(), nullptr)) return;
    const DWORD error = ::GetLastError();
    if (error == ERROR_ALREADY_EXISTS && (::GetFileAttributesW(Windows::LongPath(path).c_str()) & FILE_ATTRIBUTE_DIRECTORY))
        return;
    const std::int32_t number = error == ERROR_PATH_NOT_FOUND || error == ERROR_FILE_NOT_FOUND ||
                                        error == ERROR_INVALID_NAME || error == ERROR_DIRECTORY
                                    ? ErrorNumber::PathNotFound
                                    : ErrorNumber::PathFileAccess;
    throw Error(number, "CreateFolderPath", "cannot create folder " + path + ": " + Windows::Message(error));
}

bool SetFileTimes(const std::string& path, std::int64_t created, std::int64_t accessed, std::int64_t modified,
                  bool local) {
    FILETIME times[3] = {ToFileTime(created), ToFileTime(accessed), ToFileTime(modified)};
    if (local) {
        for (FILETIME& time : times) {
            FILETIME utc;
            if (!::LocalFileTimeToFileTime(&time, &utc)) return true;
            time = utc;
        }
    }
    // Opened for writing, sharing reading and writing, never created.
    HANDLE file = ::CreateFileW(Windows::LongPath(path).c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) return true;
    const bool set = ::SetFileTime(file, &times[0], &times[1], &times[2]) != FALSE;
    return !::CloseHandle(file) || !set;
}

bool AppendToFile(const std::string& path, std::string_view bytes, std::string& reason) {
    // Append-only access: every write lands at the end, whoever else appends.
    HANDLE file = ::CreateFileW(Windows::LongPath(path).c_str(), FILE_APPEND_DATA, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        reason = Windows::Message(::GetLastError());
        return false;
    }
    DWORD written = 0;
    const bool wrote = ::WriteFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr) &&
                       written == bytes.size();
    const DWORD writeError = ::GetLastError();
    const bool closed = ::CloseHandle(file) != FALSE;
    if (wrote && closed) return true;
    reason = Windows::Message(wrote ? ::GetLastError() : writeError);
    return false;
}

bool GetStatus(const std::string& path, Status& status) {
    if (path.empty()) return false;
    WIN32_FILE_ATTRIBUTE_DATA data;
    if (!::GetFileAttributesExW(Windows::LongPath(path).c_str(), GetFileExInfoStandard, &data)) return false;
    status.regular = (data.dwFileAttributes & (FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_DEVICE)) == 0;
    status.size = (static_cast<std::uint64_t>(data.nFileSizeHigh) << 32) | data.nFileSizeLow;
    status.created = ToTimespec(data.ftCreationTime);
    status.accessed = ToTimespec(data.ftLastAccessTime);
    status.modified = ToTimespec(data.ftLastWriteTime);
    return true;
}

std::string PerUserScratchFolder() {
    wchar_t buffer[MAX_PATH + 1];
    DWORD n = ::GetEnvironmentVariableW(L"LOCALAPPDATA", buffer, MAX_PATH + 1);
    if (n > 0 && n <= MAX_PATH) return Wide::ToUtf8(std::wstring_view(buffer, n));
    n = ::GetTempPathW(MAX_PATH + 1, buffer);
    // The temporary folder's name ends with its separator.
    while (n > 0 && (buffer[n - 1] == L'\\' || buffer[n - 1] == L'/')) --n;
    return Wide::ToUtf8(std::wstring_view(buffer, n));
}

}  // namespace meridex::FileSystem

namespace meridex::FileSystem {
namespace {

// Size, last write time (100-nanosecond units since 1601, as nanoseconds),
// volume serial number and file index of an open file.
FileIdentity IdentityOfHandle(HANDLE file) {
    FileIdentity id;
    BY_HANDLE_FILE_INFORMATION info;
    if (!::GetFileInformationByHandle(file, &info) || (info.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY)) return id;
    id.exists = true;
    id.size = (static_cast<std::uint64_t>(info.nFileSizeHigh) << 32) | info.nFileSizeLow;
    const std::uint64_t ticks =
        (static_cast<std::uint64_t>(info.ftLastWriteTime.dwHighDateTime) << 32) | info.ftLastWriteTime.dwLowDateTime;
    id.modifiedNs = static_cast<std::int64_t>(ticks) * 100;
    id.volume = info.dwVolumeSerialNumber;
    id.fileId = (static_cast<std::uint64_t>(info.nFileIndexHigh) << 32) | info.nFileIndexLow;
    return id;
}

HANDLE OpenForReading(const std::string& path) {
    return ::CreateFileW(Windows::LongPath(path).c_str(), GENERIC_READ,
                         FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING,
                         FILE_ATTRIBUTE_NORMAL, nullptr);
}

}  // namespace

FileIdentity IdentityOf(const std::string& path) {
    HANDLE file = OpenForReading(path);
    if (file == INVALID_HANDLE_VALUE) return {};
    const FileIdentity id = IdentityOfHandle(file);
    ::CloseHandle(file);
    return id;
}

bool ReadWithIdentity(const std::string& path, std::string& contents, FileIdentity& identity) {
    HANDLE file = OpenForReading(path);
    if (file == INVALID_HANDLE_VALUE) {
        errno = Windows::ErrnoOf(::GetLastError());
        return false;
    }
    FileIdentity id = IdentityOfHandle(file);
    bool ok = id.exists;
    contents.clear();
    if (ok) contents.reserve(static_cast<std::size_t>(id.size));
    char buffer[65536];
    while (ok) {
        DWORD got = 0;
        if (!::ReadFile(file, buffer, sizeof buffer, &got, nullptr)) {
            errno = Windows::ErrnoOf(::GetLastError());
            ok = false;
            break;
        }
        if (got == 0) break;
        contents.append(buffer, got);
    }
    ::CloseHandle(file);
    if (!ok) return false;
    id.size = contents.size();
    id.hash = FileIdentity::HashOf(contents.data(), contents.size());
    identity = id;
    return true;
}

bool MakeHardLink(const std::string& existing, const std::string& newPath) {
    return ::CreateHardLinkW(Windows::LongPath(newPath).c_str(), Windows::LongPath(existing).c_str(), nullptr) != 0;
}

}  // namespace meridex::FileSystem

namespace meridex::FileSystem {

std::string UserName() {
    wchar_t name[257];
    DWORD size = 257;
    return ::GetUserNameW(name, &size) && size > 0 ? Wide::ToUtf8(std::wstring_view(name, size - 1)) : std::string();
}

std::string HostName() {
    wchar_t name[MAX_COMPUTERNAME_LENGTH + 1];
    DWORD size = MAX_COMPUTERNAME_LENGTH + 1;
    return ::GetComputerNameW(name, &size) ? Wide::ToUtf8(std::wstring_view(name, size)) : std::string();
}

unsigned long long ProcessId() { return ::GetCurrentProcessId(); }

bool ProcessRunning(unsigned long long pid) {
    if (pid == 0 || pid > 0xFFFFFFFFull) return false;
    HANDLE process = ::OpenProcess(SYNCHRONIZE, FALSE, static_cast<DWORD>(pid));
    if (!process) return ::GetLastError() == ERROR_ACCESS_DENIED;  // there, but not ours to open
    const bool running = ::WaitForSingleObject(process, 0) == WAIT_TIMEOUT;
    ::CloseHandle(process);
    return running;
}

bool CreateNewFile(const std::string& path, std::string_view bytes) {
    const std::wstring wide = Windows::LongPath(path);
    HANDLE file = ::CreateFileW(wide.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_DELETE, nullptr, CREATE_NEW,
                                FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) return false;
    DWORD written = 0;
    const bool ok = ::WriteFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr) &&
                    written == bytes.size();
    ::CloseHandle(file);
    if (!ok) ::DeleteFileW(wide.c_str());
    return ok;
}

}  // namespace meridex::FileSystem
