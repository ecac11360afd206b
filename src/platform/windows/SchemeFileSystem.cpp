#include <meridex/sync/SchemeFileSystem.h>

#include <windows.h>
#include <fcntl.h>
#include <io.h>
// windows.h names its own CopyFile as a macro; ours is the member.
#undef CopyFile

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <vector>

#include <meridex/platform/windows/WideText.h>
#include <meridex/platform/windows/WindowsFiles.h>

// Scheme synchronisation's file operations with the Windows API. The copy is
// made under a hidden temporary name in the destination folder, given the
// source's creation, access and write times, flushed, and only then put in
// the target's place.
namespace meridex {
namespace {

std::string Describe(const std::string& what, const std::string& path, DWORD error) {
    return what + " " + path + ": " + Windows::Message(error);
}

// For a failed RenameFile, which says why in errno.
std::string DescribeRename(const std::string& what, const std::string& path) {
    return what + " " + path + ": " + std::strerror(errno);
}

HANDLE HandleOf(int fd) { return reinterpret_cast<HANDLE>(::_get_osfhandle(fd)); }

// A C runtime descriptor owning a handle, closed when it ends.
class Fd {
public:
    explicit Fd(HANDLE handle)
        : fd_(handle == INVALID_HANDLE_VALUE ? -1 : ::_open_osfhandle(reinterpret_cast<intptr_t>(handle), _O_BINARY)) {}
    ~Fd() {
        if (fd_ >= 0) ::_close(fd_);
    }
    Fd(const Fd&) = delete;
    Fd& operator=(const Fd&) = delete;
    int get() const { return fd_; }
    bool Close() {
        int fd = fd_;
        fd_ = -1;
        return ::_close(fd) == 0;
    }

private:
    int fd_;
};

// Removes the temporary file unless the copy got as far as renaming it.
class TempFile {
public:
    explicit TempFile(std::wstring path) : path_(std::move(path)) {}
    ~TempFile() {
        if (!path_.empty()) ::DeleteFileW(path_.c_str());
    }
    TempFile(const TempFile&) = delete;
    TempFile& operator=(const TempFile&) = delete;
    void Release() { path_.clear(); }

private:
    std::wstring path_;
};

std::size_t LastSeparator(const std::string& path) { return path.find_last_of("\\/"); }

std::string FolderOf(const std::string& path) {
    const std::size_t sep = LastSeparator(path);
    if (sep == std::string::npos) return ".";
    return path.substr(0, sep == 2 && path[1] == ':' ? 3 : sep);
}

std::string NameOf(const std::string& path) {
    const std::size_t sep = LastSeparator(path);
    return sep == std::string::npos ? path : path.substr(sep + 1);
}

timespec ToTimespec(const FILETIME& time) {
    const std::int64_t since =
        static_cast<std::int64_t>((static_cast<std::uint64_t>(time.dwHighDateTime) << 32) | time.dwLowDateTime) -
        116444736000000000LL;
    timespec ts{};
    ts.tv_sec = static_cast<decltype(ts.tv_sec)>(since / 10000000LL);
    ts.tv_nsec = static_cast<long>((since % 10000000LL) * 100);
    return ts;
}

FILETIME ToFileTime(const timespec& ts) {
    const std::uint64_t value = static_cast<std::uint64_t>(
        static_cast<std::int64_t>(ts.tv_sec) * 10000000LL + ts.tv_nsec / 100 + 116444736000000000LL);
    FILETIME time;
    time.dwLowDateTime = static_cast<DWORD>(value & 0xFFFFFFFFu);
    time.dwHighDateTime = static_cast<DWORD>(value >> 32);
    return time;
}

DWORD Attributes(const std::string& path) { return ::GetFileAttributesW(Windows::LongPath(path).c_str()); }

}  // namespace

bool SchemeFileSystem::RenameFile(const std::string& from, const std::string& to, bool replace) {
    const std::wstring source = Windows::LongPath(from);
    const std::wstring target = Windows::LongPath(to);
    if (replace && ::ReplaceFileW(target.c_str(), source.c_str(), nullptr, REPLACEFILE_IGNORE_MERGE_ERRORS, nullptr,
                                  nullptr))
        return true;
    if (::MoveFileExW(source.c_str(), target.c_str(), MOVEFILE_WRITE_THROUGH | (replace ? MOVEFILE_REPLACE_EXISTING : 0)))
        return true;
    errno = Windows::ErrnoOf(::GetLastError());
    return false;
}

bool SchemeFileSystem::IsWriteProtected(const std::string& path) const {
    const DWORD attributes = Attributes(path);
    return attributes != INVALID_FILE_ATTRIBUTES && !(attributes & FILE_ATTRIBUTE_DIRECTORY) &&
           (attributes & FILE_ATTRIBUTE_READONLY);
}

bool SchemeFileSystem::FolderExists(const std::string& path) const {
    const DWORD attributes = path.empty() ? INVALID_FILE_ATTRIBUTES : Attributes(path);
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY);
}

// A search for the path itself answers the name as the disk keeps it.
std::string SchemeFileSystem::FolderSpelling(const std::string& path) const {
    if (path.empty() || path.find_first_of("*?") != std::string::npos) return "";
    WIN32_FIND_DATAW entry;
    HANDLE search = ::FindFirstFileExW(Windows::LongPath(path).c_str(), FindExInfoBasic, &entry, FindExSearchNameMatch,
                                       nullptr, 0);
    if (search == INVALID_HANDLE_VALUE) return "";
    ::FindClose(search);
    return (entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) ? Wide::ToUtf8(entry.cFileName) : std::string();
}

bool SchemeFileSystem::ListFolder(const std::string& folder, std::vector<std::string>& files,
                                  std::vector<std::string>& folders, int* errnoOut) {
    files.clear();
    folders.clear();
    WIN32_FIND_DATAW entry;
    HANDLE search = ::FindFirstFileExW(Windows::LongPath(folder + "\\*").c_str(), FindExInfoBasic, &entry,
                                       FindExSearchNameMatch, nullptr, 0);
    if (search == INVALID_HANDLE_VALUE) {
        if (errnoOut) *errnoOut = Windows::ErrnoOf(::GetLastError());
        return false;
    }
    do {
        const std::wstring name = entry.cFileName;
        if (name == L"." || name == L"..") continue;
        if (entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) {
            // Links and junctions to folders are not followed: no loop can trap a scan.
            if (!(entry.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT)) folders.push_back(Wide::ToUtf8(name));
        } else if (!(entry.dwFileAttributes & FILE_ATTRIBUTE_DEVICE)) {
            files.push_back(Wide::ToUtf8(name));
        }
    } while (::FindNextFileW(search, &entry));
    const DWORD end = ::GetLastError();
    ::FindClose(search);
    if (end != ERROR_NO_MORE_FILES) {
        if (errnoOut) *errnoOut = Windows::ErrnoOf(end);
        return false;
    }
    std::sort(files.begin(), files.end());
    std::sort(folders.begin(), folders.end());
    return true;
}

bool SchemeFileSystem::Transfer(int in, int out, std::string& error) {
    std::vector<char> buffer(256 * 1024);
    for (;;) {
        DWORD got = 0;
        if (!::ReadFile(HandleOf(in), buffer.data(), static_cast<DWORD>(buffer.size()), &got, nullptr)) {
            error = Windows::Message(::GetLastError());
            return false;
        }
        if (got == 0) return true;
        for (DWORD done = 0; done < got;) {
            DWORD put = 0;
            if (!::WriteFile(HandleOf(out), buffer.data() + done, got - done, &put, nullptr)) {
                error = Windows::Message(::GetLastError());
                return false;
            }
            done += put;
        }
    }
}

bool SchemeFileSystem::ApplyTimes(int out, const timespec times[2]) {
    const FILETIME accessed = ToFileTime(times[0]);
    const FILETIME written = ToFileTime(times[1]);
    return ::SetFileTime(HandleOf(out), nullptr, &accessed, &written) != FALSE;
}

bool SchemeFileSystem::Flush(int out) { return ::FlushFileBuffers(HandleOf(out)) != FALSE; }

// A move with MOVEFILE_WRITE_THROUGH is on disk when it returns; a folder
// cannot be flushed on its own.
void SchemeFileSystem::FlushFolder(const std::string&) {}

// Flushing a whole volume needs an administrator: each pending copy is
// flushed when it is closed instead.
bool SchemeFileSystem::FlushFileSystem(const std::string&) { return true; }

std::vector<std::string> SchemeFileSystem::CommitPending(std::vector<PendingCopy>& pending) {
    std::vector<std::string> errors(pending.size());
    for (std::size_t i = 0; i < pending.size(); ++i) {
        const PendingCopy& copy = pending[i];
        std::string& error = errors[i];
        if (!copy.replaces) {
            if (!RenameFile(copy.temp, copy.destination, false))
                error = DescribeRename("Unable to place", copy.destination);
        } else if (!replaceReadOnly_ && IsWriteProtected(copy.destination)) {
            error = "Unable to replace " + copy.destination + ": the file is read-only";
        } else if (copy.backup && Attributes(copy.destination) != INVALID_FILE_ATTRIBUTES &&
                   BackupFile(copy.destination, error).empty()) {
            // error says why: the old file stays as it is
        } else if (!RenameFile(copy.temp, copy.destination, true)) {
            error = DescribeRename("Unable to replace", copy.destination);
        }
        if (!error.empty()) ::DeleteFileW(Windows::LongPath(copy.temp).c_str());
    }
    pending.clear();
    return errors;
}

SchemeFileSystem::CopyResult SchemeFileSystem::CopyInto(const std::string& source, const std::string& destination,
                                                        Commit commit, bool backup, std::string& error,
                                                        std::string* backupPath, int* errnoOut,
                                                        std::vector<PendingCopy>* pending) {
    auto fail = [&](std::string text, int err) {
        error = std::move(text);
        if (errnoOut) *errnoOut = err;
        return CopyResult::Failed;
    };
    HANDLE inHandle = ::CreateFileW(Windows::LongPath(source).c_str(), GENERIC_READ,
                                    FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING,
                                    FILE_FLAG_SEQUENTIAL_SCAN, nullptr);
    if (inHandle == INVALID_HANDLE_VALUE) {
        const DWORD code = ::GetLastError();
        if (code == ERROR_FILE_NOT_FOUND || code == ERROR_PATH_NOT_FOUND) return CopyResult::SourceMissing;
        return fail(Describe("Unable to open", source, code), Windows::ErrnoOf(code));
    }
    // Its times are read before the handle becomes a C runtime descriptor:
    // the runtime may read from the file as it wraps it, which moves the
    // access time the copy is to keep.
    BY_HANDLE_FILE_INFORMATION src{};
    if (!::GetFileInformationByHandle(inHandle, &src)) {
        const DWORD code = ::GetLastError();
        ::CloseHandle(inHandle);
        return fail(Describe("Unable to read", source, code), EIO);
    }
    Fd in(inHandle);
    if (src.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) return fail("Not a normal file: " + source, EINVAL);

    const DWORD target = Attributes(destination);
    const bool targetExists = target != INVALID_FILE_ATTRIBUTES;
    if (targetExists && (target & FILE_ATTRIBUTE_DIRECTORY)) return fail("A folder is in the way: " + destination, EISDIR);
    if (commit == Commit::Replace && !replaceReadOnly_ && IsWriteProtected(destination))
        return fail("Unable to replace " + destination + ": the file is read-only", EACCES);

    const std::string folder = FolderOf(destination);
    const std::string prefix = destination.substr(0, destination.size() - NameOf(destination).size());
    static unsigned counter = 0;
    std::string tempPath;
    HANDLE outHandle = INVALID_HANDLE_VALUE;
    for (int attempt = 0; attempt < 100 && outHandle == INVALID_HANDLE_VALUE; ++attempt) {
        // Neither its extension nor its name can pass for a scheme or a
        // member of a family.
        tempPath = prefix + "." + NameOf(destination) + ".sync-" + std::to_string(::GetCurrentProcessId()) + "-" +
                   std::to_string(counter++);
        outHandle = ::CreateFileW(Windows::LongPath(tempPath).c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                                  CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
        if (outHandle == INVALID_HANDLE_VALUE && ::GetLastError() != ERROR_FILE_EXISTS)
            return fail(Describe("Unable to write in", folder, ::GetLastError()), Windows::ErrnoOf(::GetLastError()));
    }
    if (outHandle == INVALID_HANDLE_VALUE) return fail("No free temporary name in " + folder, EEXIST);
    // Declared first so it ends last: an open temporary (shared with no one) cannot be deleted.
    TempFile temp(Windows::LongPath(tempPath));
    Fd out(outHandle);

    std::string why;
    if (!Transfer(in.get(), out.get(), why)) return fail("Unable to copy " + source + ": " + why, EIO);
    const timespec times[2] = {ToTimespec(src.ftLastAccessTime), ToTimespec(src.ftLastWriteTime)};
    bool timesSet = ApplyTimes(out.get(), times) &&
                    ::SetFileTime(outHandle, &src.ftCreationTime, nullptr, nullptr) != FALSE;
    if (!Flush(out.get())) return fail(Describe("Unable to write", destination, ::GetLastError()), EIO);
    if (!out.Close()) return fail(Describe("Unable to write", destination, ::GetLastError()), EIO);
    if (pending && commit == Commit::Replace) {
        pending->push_back(PendingCopy{tempPath, destination, targetExists, backup && targetExists});
        temp.Release();
        return timesSet ? CopyResult::Copied : CopyResult::CopiedTimesNotSet;
    }
    if (backup && targetExists) {
        std::string made = BackupFile(destination, why);
        if (made.empty()) return fail(why, EIO);
        if (backupPath) *backupPath = made;
    }
    if (!RenameFile(tempPath, destination, commit == Commit::Replace))
        return fail(DescribeRename("Unable to replace", destination), errno);
    temp.Release();
    return timesSet ? CopyResult::Copied : CopyResult::CopiedTimesNotSet;
}

std::string SchemeFileSystem::BackupFile(const std::string& path, std::string& error) {
    for (unsigned number = 0; number < 1000000; ++number) {
        std::string candidate = BackupName(path, number);
        if (Attributes(candidate) != INVALID_FILE_ATTRIBUTES) continue;
        // A second name for the same bytes is the cheapest exact backup.
        if (::CreateHardLinkW(Windows::LongPath(candidate).c_str(), Windows::LongPath(path).c_str(), nullptr))
            return candidate;
        const DWORD code = ::GetLastError();
        if (code == ERROR_ALREADY_EXISTS || code == ERROR_FILE_EXISTS) continue;
        if (code == ERROR_FILE_NOT_FOUND) {
            error = Describe("Unable to make a backup of", path, code);
            return "";
        }
        // No hard links here (FAT, some network shares): a real copy.
        int err = 0;
        CopyResult result = CopyInto(path, candidate, Commit::NoReplace, false, error, nullptr, &err, nullptr);
        if (result == CopyResult::Copied || result == CopyResult::CopiedTimesNotSet) return candidate;
        if (result == CopyResult::Failed && err == EEXIST) continue;
        if (result == CopyResult::SourceMissing) error = "Unable to make a backup of " + path + ": it has gone";
        return "";
    }
    error = "No free backup name for " + path;
    return "";
}

}  // namespace meridex
