#include <meridex/frame/FileOps.h>

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <ctime>

#include <meridex/frame/DiskSteps.h>
#include <meridex/platform/FileSystem.h>

// The file helpers that read and write files, on POSIX.
namespace meridex::FileOps {
namespace {

using FileSystem::NativePath;

std::string Reason(const std::string& what, const std::string& path, int error) {
    return what + " " + path + ": " + std::strerror(error);
}

}  // namespace

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

int DiskSteps::CreateTemp(std::string& pathTemplate) { return ::mkostemp(pathTemplate.data(), O_CLOEXEC); }

int DiskSteps::OpenExisting(const std::string& path) { return ::open(path.c_str(), O_WRONLY | O_CLOEXEC | O_NOFOLLOW); }

ssize_t DiskSteps::Write(int fd, const char* data, std::size_t size, off_t offset) {
    return ::pwrite(fd, data, size, offset);
}

int DiskSteps::Sync(int fd) { return ::fsync(fd); }

int DiskSteps::Rename(const std::string& from, const std::string& to) { return ::rename(from.c_str(), to.c_str()); }

int DiskSteps::Truncate(int fd, std::uint64_t size) { return ::ftruncate(fd, static_cast<off_t>(size)); }

int DiskSteps::Close(int fd) { return ::close(fd); }

namespace {

// The file a path finally names: symbolic links are followed (relative ones
// from their own folder), so a save replaces the shared file a link points
// to, never the link. A path whose last link points nowhere yet names that
// nowhere. Empty on a loop.
std::string FollowLinks(std::string path) {
    for (int hops = 0; hops < 40; ++hops) {
        char buffer[4096];
        const ssize_t n = ::readlink(path.c_str(), buffer, sizeof buffer);
        if (n < 0) return path;  // not a link (or not there): the final name
        std::string link(buffer, static_cast<std::size_t>(n));
        if (link.empty()) return {};
        if (link[0] != '/') {
            const std::size_t sep = path.rfind('/');
            if (sep != std::string::npos) link = path.substr(0, sep + 1) + link;
        }
        path = std::move(link);
    }
    return {};
}

constexpr std::string_view kTempTag = ".tmp-";

// Temporary files that earlier saves of this file left when they were killed:
// ".NAME.tmp-PID-XXXXXX" whose process is gone and which nobody holds
// locked. A live writer keeps its temporary locked from creation to rename,
// so it is never taken for a dead one, whatever its process number.
void RemoveDeadTemporaries(const std::string& folder, const std::string& name) {
    DIR* dir = ::opendir(folder.c_str());
    if (!dir) return;
    const std::string prefix = "." + name + std::string(kTempTag);
    while (dirent* entry = ::readdir(dir)) {
        const std::string_view entryName(entry->d_name);
        if (entryName.substr(0, prefix.size()) != prefix) continue;
        const std::string_view rest = entryName.substr(prefix.size());
        const std::size_t dash = rest.find('-');
        // Saves before process numbers were in the name left ".NAME.tmp-XXXXXX":
        // no save takes an hour, so one that old is dead.
        const bool unnumbered = dash == std::string_view::npos && rest.size() == 6;
        if (!unnumbered) {
            const unsigned long long pid = TemporaryWriter(rest);
            if (pid == 0 || pid > 0x7FFFFFFFull || pid == static_cast<unsigned long long>(::getpid())) continue;
            if (::kill(static_cast<pid_t>(pid), 0) == 0 || errno != ESRCH) continue;  // maybe still writing
        }
        const std::string full = folder + "/" + std::string(entryName);
        const int fd = ::open(full.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK);
        if (fd < 0) continue;
        struct stat st {};
        if (::fstat(fd, &st) == 0 && S_ISREG(st.st_mode) && (!unnumbered || st.st_mtime < std::time(nullptr) - 3600) &&
            ::flock(fd, LOCK_EX | LOCK_NB) == 0)
            ::unlink(full.c_str());
        ::close(fd);
    }
    ::closedir(dir);
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
    const std::string given = NativePath(path);
    if (given.empty() || given.back() == '/') return fail("not a file path: " + path);
    const std::string native = FollowLinks(given);
    if (native.empty()) return fail(Reason("cannot follow the links of", path, ELOOP));
    mode_t mode = 0644;
    struct stat st {};
    const bool exists = ::stat(native.c_str(), &st) == 0;
    if (exists) {
        if (!S_ISREG(st.st_mode)) return fail(path + " is not a regular file");
        if ((st.st_mode & 0222) == 0) return fail(path + " is read-only");
        mode = st.st_mode & 07777;
    }
    const std::size_t sep = native.rfind('/');
    const std::string folder = sep == std::string::npos ? "." : (sep == 0 ? "/" : native.substr(0, sep));
    const std::string name = sep == std::string::npos ? native : native.substr(sep + 1);
    RemoveDeadTemporaries(folder, name);
    std::string temp = folder + "/." + name + std::string(kTempTag) + std::to_string(::getpid()) + "-XXXXXX";
    DiskSteps& steps = CurrentDiskSteps();
    const int fd = steps.CreateTemp(temp);
    if (fd < 0) {
        const int createError = errno;
        if (!exists || (createError != EACCES && createError != EPERM)) return fail(Reason("cannot write in", folder, createError));
        if (check && !check({}, native)) return fail(path + " was changed by someone else");
        int inPlaceError = 0;
        if (!WriteInPlace(native, bytes, inPlaceError)) return fail(Reason("cannot write", path, inPlaceError));
        return true;
    }
    // Held until the rename: tells a later save that this writer is alive.
    ::flock(fd, LOCK_EX);
    errno = 0;
    bool ok = WriteAllAt(fd, bytes) && ::fchmod(fd, mode) == 0 && steps.Sync(fd) == 0;
    int writeError = errno;
    if (exists && (st.st_uid != ::geteuid() || st.st_gid != ::getegid()))
        (void)::fchown(fd, st.st_uid, st.st_gid);  // best effort: the file keeps its owner
    if (steps.Close(fd) != 0 && ok) {
        ok = false;
        writeError = errno;
    }
    if (!ok) {
        ::unlink(temp.c_str());
        return fail(Reason("cannot write", path, writeError ? writeError : EIO));
    }
    const int dirFd = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    // A checked save holds the folder from its check to its rename, so no
    // other checked save can put a version in place in between (a file
    // system without such locks is checked all the same).
    if (check && dirFd >= 0) ::flock(dirFd, LOCK_EX);
    if (check && !check(temp, native)) {
        ::unlink(temp.c_str());
        if (dirFd >= 0) ::close(dirFd);
        return fail(path + " was changed by someone else");
    }
    if (steps.Rename(temp, native) != 0) {
        const int renameError = errno;
        ::unlink(temp.c_str());
        if (dirFd >= 0) ::close(dirFd);
        return fail(Reason("cannot replace", path, renameError));
    }
    // Make the rename itself durable.
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
        // Through a symbolic link, the bytes it points to are what is kept.
        if (::linkat(AT_FDCWD, native.c_str(), AT_FDCWD, NativePath(candidate).c_str(), AT_SYMLINK_FOLLOW) == 0)
            return candidate;
        std::string contents;
        if (ReadWholeFile(path, contents) && WriteFileAtomic(candidate, contents)) return candidate;
        return {};
    }
    return {};
}

}  // namespace meridex::FileOps
