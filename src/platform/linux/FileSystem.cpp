#include <meridex/platform/FileSystem.h>

#include <dirent.h>
#include <fcntl.h>
#include <fnmatch.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include <meridex/frame/Error.h>
#include <meridex/frame/FileIdentity.h>

namespace meridex::FileSystem {
std::string NativePath(std::string_view path) {
    std::string out(path);
    for (char& c : out) {
        if (c == '\\') c = '/';
    }
    return out;
}

namespace {

bool IsSeparator(char c) { return c == '\\' || c == '/'; }

}  // namespace

std::size_t LastSeparator(std::string_view path) { return path.rfind('/'); }

std::string PerUserScratchFolder() {
    if (const char* runtime = std::getenv("XDG_RUNTIME_DIR"); runtime && *runtime) return runtime;
    if (const char* cache = std::getenv("XDG_CACHE_HOME"); cache && *cache) return cache;
    if (const char* home = std::getenv("HOME"); home && *home) return std::string(home) + "/.cache";
    const char* temp = std::getenv("TMPDIR");
    return temp && *temp ? temp : "/tmp";
}

bool NormalFileMatches(const std::string& path) {
    const std::string native = NativePath(path);
    const std::size_t sep = native.rfind('/');
    const std::string name = sep == std::string::npos ? native : native.substr(sep + 1);
    if (name.find_first_of("*?") == std::string::npos) {
        struct stat st {};
        return ::stat(native.c_str(), &st) == 0 && S_ISREG(st.st_mode);
    }
    // Wild cards match normal files of the folder, as a directory search does.
    const std::string folder = sep == std::string::npos ? "." : (sep == 0 ? "/" : native.substr(0, sep));
    DIR* dir = ::opendir(folder.c_str());
    if (!dir) return false;
    bool found = false;
    while (dirent* entry = ::readdir(dir)) {
        if (::fnmatch(name.c_str(), entry->d_name, FNM_PERIOD) != 0) continue;
        struct stat st {};
        const std::string full = folder + "/" + entry->d_name;
        if (::stat(full.c_str(), &st) == 0 && S_ISREG(st.st_mode)) {
            found = true;
            break;
        }
    }
    ::closedir(dir);
    return found;
}

bool Exists(const std::string& path) {
    struct stat st {};
    return ::lstat(NativePath(path).c_str(), &st) == 0;
}

// An absolute path stands where the drive-letter form would.
bool IsRootedLocalPath(std::string_view path) {
    return !path.empty() && IsSeparator(path[0]) && !(path.size() > 1 && IsSeparator(path[1]));
}

std::size_t RootLength(std::string_view) { return 1; }

bool CreateFolder(const std::string& path, int& error) {
    const std::string native = NativePath(path);
    if (::mkdir(native.c_str(), 0777) == 0) return true;
    error = errno;
    struct stat st {};
    if (error != EEXIST) return false;
    if (::stat(native.c_str(), &st) == 0 && S_ISDIR(st.st_mode)) return true;
    error = ENOTDIR;
    return false;
}

void MakeFolder(const std::string& path) {
    if (::mkdir(NativePath(path).c_str(), 0777) == 0 || errno == EEXIST) return;
    const int error = errno;
    const std::int32_t number =
        error == ENOENT || error == ENOTDIR ? ErrorNumber::PathNotFound : ErrorNumber::PathFileAccess;
    throw Error(number, "CreateFolderPath", "cannot create folder " + path + ": " + std::strerror(error));
}

bool SetFileTimes(const std::string& path, std::int64_t, std::int64_t accessed, std::int64_t modified, bool local) {
    // A Linux file's creation (birth) time cannot be set.
    constexpr std::int64_t kUnixEpoch = 116444736000000000LL;
    const auto toTimespec = [local](std::int64_t fileTime) {
        const std::time_t asUtc = static_cast<std::time_t>((fileTime - kUnixEpoch) / 10000000LL);
        timespec ts{};
        if (!local) {
            ts.tv_sec = asUtc;
            return ts;
        }
        // The calendar fields, read in the local zone (daylight saving by the date).
        std::tm tm{};
        gmtime_r(&asUtc, &tm);
        tm.tm_isdst = -1;
        ts.tv_sec = std::mktime(&tm);
        return ts;
    };
    const std::string native = NativePath(path);
    struct stat st {};
    // A file without write permission is read-only, as on the platform the
    // data comes from, even for a user who could override it.
    if (::stat(native.c_str(), &st) != 0 || !S_ISREG(st.st_mode) || (st.st_mode & 0222) == 0) return true;
    const int fd = ::open(native.c_str(), O_WRONLY | O_CLOEXEC);
    if (fd < 0) return true;
    const timespec times[2] = {toTimespec(accessed), toTimespec(modified)};
    const bool failed = ::futimens(fd, times) != 0;
    return ::close(fd) != 0 || failed;
}

bool AppendToFile(const std::string& path, std::string_view bytes, std::string& reason) {
    // One write with O_APPEND: lines from several processes never interleave,
    // and the file is never truncated.
    const int fd = ::open(path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0644);
    if (fd < 0) {
        reason = std::strerror(errno);
        return false;
    }
    const ssize_t written = ::write(fd, bytes.data(), bytes.size());
    const int writeError = errno;
    const bool closed = ::close(fd) == 0;
    if (written == static_cast<ssize_t>(bytes.size()) && closed) return true;
    reason = std::strerror(written < 0 ? writeError : EIO);
    return false;
}

bool GetStatus(const std::string& path, Status& status) {
    struct statx sx {};
    if (path.empty() || statx(AT_FDCWD, path.c_str(), 0, STATX_BASIC_STATS | STATX_BTIME, &sx) != 0) return false;
    const auto toTimespec = [](const struct statx_timestamp& t) {
        timespec ts{};
        ts.tv_sec = static_cast<std::time_t>(t.tv_sec);
        ts.tv_nsec = static_cast<long>(t.tv_nsec);
        return ts;
    };
    status.regular = S_ISREG(sx.stx_mode);
    status.size = sx.stx_size;
    status.accessed = toTimespec(sx.stx_atime);
    status.modified = toTimespec(sx.stx_mtime);
    status.created = (sx.stx_mask & STATX_BTIME) ? toTimespec(sx.stx_btime) : toTimespec(sx.stx_ctime);
    return true;
}

}  // namespace meridex::FileSystem

namespace meridex::FileSystem {
namespace {

FileIdentity IdentityOfStat(const struct stat& st) {
    FileIdentity id;
    id.exists = S_ISREG(st.st_mode);
    if (!id.exists) return id;
    id.size = static_cast<std::uint64_t>(st.st_size);
    id.modifiedNs = static_cast<std::int64_t>(st.st_mtim.tv_sec) * 1000000000LL + st.st_mtim.tv_nsec;
    id.volume = static_cast<std::uint64_t>(st.st_dev);
    id.fileId = static_cast<std::uint64_t>(st.st_ino);
    return id;
}

}  // namespace

FileIdentity IdentityOf(const std::string& path) {
    struct stat st {};
    if (::stat(NativePath(path).c_str(), &st) != 0) return {};
    return IdentityOfStat(st);
}

bool ReadWithIdentity(const std::string& path, std::string& contents, FileIdentity& identity) {
    const int fd = ::open(NativePath(path).c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) return false;
    struct stat st {};
    bool ok = ::fstat(fd, &st) == 0 && S_ISREG(st.st_mode);
    if (ok) {
        contents.clear();
        contents.reserve(static_cast<std::size_t>(st.st_size));
        char buffer[65536];
        for (;;) {
            const ssize_t n = ::read(fd, buffer, sizeof buffer);
            if (n < 0 && errno == EINTR) continue;
            if (n <= 0) {
                ok = n == 0;
                break;
            }
            contents.append(buffer, static_cast<std::size_t>(n));
        }
    }
    ::close(fd);
    if (!ok) return false;
    identity = IdentityOfStat(st);
    identity.size = contents.size();
    identity.hash = FileIdentity::HashOf(contents.data(), contents.size());
    return true;
}

bool MakeHardLink(const std::string& existing, const std::string& newPath) {
    return ::linkat(AT_FDCWD, NativePath(existing).c_str(), AT_FDCWD, NativePath(newPath).c_str(), AT_SYMLINK_FOLLOW) == 0;
}

}  // namespace meridex::FileSystem

namespace meridex::FileSystem {

std::string UserName() {
    if (const passwd* entry = ::getpwuid(::geteuid()); entry && entry->pw_name) return entry->pw_name;
    const char* user = std::getenv("USER");
    return user ? user : "";
}

std::string HostName() {
    char name[256] = {};
    if (::gethostname(name, sizeof name - 1) != 0) return {};
    return name;
}

unsigned long long ProcessId() { return static_cast<unsigned long long>(::getpid()); }

bool ProcessRunning(unsigned long long pid) {
    if (pid == 0 || pid > 0x7FFFFFFFull) return false;
    return ::kill(static_cast<pid_t>(pid), 0) == 0 || errno != ESRCH;
}

bool CreateNewFile(const std::string& path, std::string_view bytes) {
    const int fd = ::open(NativePath(path).c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0644);
    if (fd < 0) return false;
    const bool ok = ::write(fd, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size());
    ::close(fd);
    if (!ok) ::unlink(NativePath(path).c_str());
    return ok;
}

}  // namespace meridex::FileSystem
