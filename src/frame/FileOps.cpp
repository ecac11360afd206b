#include <meridex/frame/FileOps.h>

#include <dirent.h>
#include <fcntl.h>
#include <fnmatch.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <ctime>

#include <meridex/frame/Error.h>
#include <meridex/frame/Text.h>

namespace meridex::FileOps {
namespace {

std::size_t LastSeparator(std::string_view path) { return path.find_last_of("\\/"); }

// Days from 1970-01-01 to a civil date (proleptic Gregorian).
long long DaysFromCivil(long long y, unsigned m, unsigned d) {
    y -= m <= 2;
    const long long era = (y >= 0 ? y : y - 399) / 400;
    const unsigned yoe = static_cast<unsigned>(y - era * 400);
    const unsigned doy = (153 * (m + (m > 2 ? -3 : 9)) + 2) / 5 + d - 1;
    const unsigned doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
    return era * 146097 + static_cast<long long>(doe) - 719468;
}

std::string NativePath(std::string_view path) {
    std::string out(path);
    for (char& c : out) {
        if (c == '\\') c = '/';
    }
    return out;
}

bool WriteAll(int fd, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t n = ::write(fd, bytes.data(), bytes.size());
        if (n < 0) {
            if (errno == EINTR) continue;
            return false;
        }
        bytes.remove_prefix(static_cast<std::size_t>(n));
    }
    return true;
}

std::string Reason(const std::string& what, const std::string& path, int error) {
    return what + " " + path + ": " + std::strerror(error);
}

}  // namespace

bool IsSeparator(char c) noexcept { return c == '\\' || c == '/'; }

std::string GetFileBaseName(std::string_view path) {
    if (path.empty()) return {};
    const std::size_t sep = LastSeparator(path);
    const std::size_t slashPos = sep == std::string_view::npos ? 0 : sep + 1;  // 1-based, 0 if none
    const std::size_t dot = path.rfind('.');
    const std::size_t dotPos = dot == std::string_view::npos ? path.size() + 1 : dot + 1;
    if (dotPos < slashPos) return {};
    return std::string(Text::TrimTabs(path.substr(slashPos, dotPos - slashPos - 1)));
}

std::string GetFolderPath(std::string_view path) {
    if (path.empty()) return {};
    const std::size_t sep = LastSeparator(path);
    if (sep == std::string_view::npos) return {};
    return std::string(Text::TrimTabs(path.substr(0, sep + 1)));
}

bool FileExists(std::string_view path) {
    std::string clean;
    for (char c : path) {
        if (c != '"') clean += c;
    }
    if (clean.empty()) return false;
    const std::string native = NativePath(clean);
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

void CreateFolderPath(std::string_view path) {
    std::string p(path);
    if (!p.empty() && IsSeparator(p.back())) p.pop_back();
    // An absolute path stands where the drive-letter form would; relative
    // and network paths are not supported.
    if (p.empty() || !IsSeparator(p[0]) || (p.size() > 1 && IsSeparator(p[1])))
        throw Error(ErrorNumber::PathNotFound, "CreateFolderPath", "Path not found");
    const std::string native = NativePath(p);
    struct stat st {};
    if (::lstat(native.c_str(), &st) == 0) return;
    const std::size_t sep = native.rfind('/');
    if (sep != 0 && sep != std::string::npos) CreateFolderPath(std::string_view(p).substr(0, sep));
    if (::mkdir(native.c_str(), 0777) != 0 && errno != EEXIST) {
        const int error = errno;
        const std::int32_t number = error == ENOENT || error == ENOTDIR ? ErrorNumber::PathNotFound
                                                                         : ErrorNumber::PathFileAccess;
        throw Error(number, "CreateFolderPath", Reason("cannot create folder", p, error));
    }
}

SystemTime DateToSystemTime(const DateTime& date) {
    SystemTime st;
    st.wYear = static_cast<std::int16_t>(date.year);
    st.wMonth = static_cast<std::int16_t>(date.month);
    st.wDay = static_cast<std::int16_t>(date.day);
    st.wHour = static_cast<std::int16_t>(date.hour);
    st.wMinute = static_cast<std::int16_t>(date.minute);
    st.wSecond = static_cast<std::int16_t>(date.second);
    return st;
}

std::int64_t DateToFileTime(const DateTime& date) {
    const SystemTime st = DateToSystemTime(date);
    constexpr long long kDaysFrom1601To1970 = 134774;
    const long long days = DaysFromCivil(st.wYear, static_cast<unsigned>(st.wMonth), static_cast<unsigned>(st.wDay)) +
                           kDaysFrom1601To1970;
    const long long seconds = days * 86400LL + st.wHour * 3600LL + st.wMinute * 60LL + st.wSecond;
    return seconds * 10000000LL + st.wMilliseconds * 10000LL;
}

bool SetFileDateTimes(std::string_view path, const DateTime& created, const DateTime& accessed,
                      const DateTime& modified, bool local) {
    (void)created;  // a Linux file's creation (birth) time cannot be set
    const auto toTimespec = [local](const DateTime& date) {
        std::tm tm{};
        tm.tm_year = date.year - 1900;
        tm.tm_mon = date.month - 1;
        tm.tm_mday = date.day;
        tm.tm_hour = date.hour;
        tm.tm_min = date.minute;
        tm.tm_sec = date.second;
        tm.tm_isdst = -1;
        timespec ts{};
        ts.tv_sec = local ? std::mktime(&tm) : timegm(&tm);
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

bool ReadWholeFile(const std::string& path, std::string& contents) {
    const int fd = ::open(NativePath(path).c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) return false;
    struct stat st {};
    if (::fstat(fd, &st) != 0 || !S_ISREG(st.st_mode)) {
        ::close(fd);
        return false;
    }
    contents.clear();
    contents.reserve(static_cast<std::size_t>(st.st_size));
    char buffer[65536];
    while (true) {
        const ssize_t n = ::read(fd, buffer, sizeof buffer);
        if (n < 0 && errno == EINTR) continue;
        if (n < 0) {
            ::close(fd);
            return false;
        }
        if (n == 0) break;
        contents.append(buffer, static_cast<std::size_t>(n));
    }
    ::close(fd);
    return true;
}

bool WriteFileAtomic(const std::string& path, std::string_view bytes, std::string* error) {
    const auto fail = [&](std::string reason) {
        if (error) *error = std::move(reason);
        return false;
    };
    const std::string native = NativePath(path);
    if (native.empty() || native.back() == '/') return fail("not a file path: " + path);
    mode_t mode = 0644;
    struct stat st {};
    if (::stat(native.c_str(), &st) == 0) {
        if (!S_ISREG(st.st_mode)) return fail(path + " is not a regular file");
        if ((st.st_mode & 0222) == 0) return fail(path + " is read-only");
        mode = st.st_mode & 07777;
    }
    const std::size_t sep = native.rfind('/');
    const std::string folder = sep == std::string::npos ? "." : (sep == 0 ? "/" : native.substr(0, sep));
    const std::string name = sep == std::string::npos ? native : native.substr(sep + 1);
    std::string temp = folder + "/." + name + ".tmp-XXXXXX";
    const int fd = ::mkostemp(temp.data(), O_CLOEXEC);
    if (fd < 0) return fail(Reason("cannot write in", folder, errno));
    bool ok = WriteAll(fd, bytes) && ::fchmod(fd, mode) == 0 && ::fsync(fd) == 0;
    const int writeError = errno;
    ok = (::close(fd) == 0) && ok;
    if (!ok) {
        ::unlink(temp.c_str());
        return fail(Reason("cannot write", path, writeError));
    }
    if (::rename(temp.c_str(), native.c_str()) != 0) {
        const int renameError = errno;
        ::unlink(temp.c_str());
        return fail(Reason("cannot replace", path, renameError));
    }
    // Make the rename itself durable.
    const int dirFd = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (dirFd >= 0) {
        ::fsync(dirFd);
        ::close(dirFd);
    }
    return true;
}

std::string KeepUnreadableFile(const std::string& path) {
    const std::string native = NativePath(path);
    struct stat st {};
    if (::stat(native.c_str(), &st) != 0 || !S_ISREG(st.st_mode)) return {};
    for (int n = 0; n < 10000; ++n) {
        const std::string candidate = path + ".unreadable" + (n ? "-" + std::to_string(n) : "");
        struct stat taken {};
        if (::lstat(NativePath(candidate).c_str(), &taken) == 0) continue;
        // A second name for the same bytes: the atomic save that follows
        // replaces only the original name.
        if (::link(native.c_str(), NativePath(candidate).c_str()) == 0) return candidate;
        std::string contents;
        if (ReadWholeFile(path, contents) && WriteFileAtomic(candidate, contents)) return candidate;
        return {};
    }
    return {};
}

}  // namespace meridex::FileOps
