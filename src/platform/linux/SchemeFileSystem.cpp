#include <meridex/sync/SchemeFileSystem.h>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <map>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <vector>

namespace meridex {

namespace {

std::string Describe(const std::string& what, const std::string& path, int err) {
    return what + " " + path + ": " + std::strerror(err);
}

class Fd {
public:
    explicit Fd(int fd = -1) : fd_(fd) {}
    ~Fd() {
        if (fd_ >= 0) ::close(fd_);
    }
    Fd(const Fd&) = delete;
    Fd& operator=(const Fd&) = delete;
    int get() const { return fd_; }
    // Closes now and reports whether the close succeeded (a late write error
    // of some file systems shows only here).
    bool Close() {
        int fd = fd_;
        fd_ = -1;
        return ::close(fd) == 0;
    }

private:
    int fd_;
};

// Removes the temporary file unless the copy got as far as renaming it.
class TempFile {
public:
    explicit TempFile(std::string path) : path_(std::move(path)) {}
    ~TempFile() {
        if (!path_.empty()) ::unlink(path_.c_str());
    }
    TempFile(const TempFile&) = delete;
    TempFile& operator=(const TempFile&) = delete;
    const std::string& Path() const { return path_; }
    void Release() { path_.clear(); }

private:
    std::string path_;
};

std::string FolderOf(const std::string& path) {
    auto slash = path.find_last_of('/');
    if (slash == std::string::npos) return ".";
    return slash == 0 ? std::string("/") : path.substr(0, slash);
}

std::string NameOf(const std::string& path) {
    auto slash = path.find_last_of('/');
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

bool RenameNoReplace(const std::string& from, const std::string& to) {
    if (::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) return true;
    if (errno != EINVAL && errno != ENOSYS) return false;
    // A file system without no-replace renames (some network shares): test
    // first; the window is small and only a backup name is at stake.
    struct stat st {};
    if (::lstat(to.c_str(), &st) == 0) {
        errno = EEXIST;
        return false;
    }
    return ::rename(from.c_str(), to.c_str()) == 0;
}

}  // namespace

bool SchemeFileSystem::RenameFile(const std::string& from, const std::string& to, bool replace) {
    return replace ? ::rename(from.c_str(), to.c_str()) == 0 : RenameNoReplace(from, to);
}

bool SchemeFileSystem::IsWriteProtected(const std::string& path) const {
    struct stat st {};
    return ::stat(path.c_str(), &st) == 0 && S_ISREG(st.st_mode) && (st.st_mode & 0222) == 0;
}

bool SchemeFileSystem::FolderExists(const std::string& path) const {
    struct stat st {};
    return !path.empty() && ::stat(path.c_str(), &st) == 0 && S_ISDIR(st.st_mode);
}

// Names are matched exactly here: a folder found is spelled as asked.
std::string SchemeFileSystem::FolderSpelling(const std::string& path) const {
    return FolderExists(path) ? NameOf(path) : std::string();
}

bool SchemeFileSystem::ListFolder(const std::string& folder, std::vector<std::string>& files,
                                  std::vector<std::string>& folders, int* errnoOut) {
    files.clear();
    folders.clear();
    DIR* dir = ::opendir(folder.c_str());
    if (!dir) {
        if (errnoOut) *errnoOut = errno;
        return false;
    }
    int fd = ::dirfd(dir);
    int err = 0;
    for (;;) {
        errno = 0;  // readdir tells its end from a failure only by errno
        struct dirent* entry = ::readdir(dir);
        if (!entry) {
            err = errno;
            break;
        }
        const char* name = entry->d_name;
        if (name[0] == '.' && (name[1] == 0 || (name[1] == '.' && name[2] == 0))) continue;
        unsigned char type = entry->d_type;
        if (type == DT_UNKNOWN) {
            struct stat st {};
            if (::fstatat(fd, name, &st, AT_SYMLINK_NOFOLLOW) != 0) continue;
            type = S_ISDIR(st.st_mode) ? DT_DIR : S_ISREG(st.st_mode) ? DT_REG : S_ISLNK(st.st_mode) ? DT_LNK : DT_UNKNOWN;
        }
        if (type == DT_LNK) {
            struct stat st {};
            if (::fstatat(fd, name, &st, 0) == 0 && S_ISREG(st.st_mode)) type = DT_REG;
        }
        if (type == DT_REG)
            files.emplace_back(name);
        else if (type == DT_DIR)
            folders.emplace_back(name);
    }
    ::closedir(dir);
    if (err != 0) {
        if (errnoOut) *errnoOut = err;
        return false;
    }
    std::sort(files.begin(), files.end());
    std::sort(folders.begin(), folders.end());
    return true;
}

bool SchemeFileSystem::Transfer(int in, int out, std::string& error) {
    bool kernelCopy = true;
    std::vector<char> buffer;
    for (;;) {
        if (kernelCopy) {
            ssize_t n = ::copy_file_range(in, nullptr, out, nullptr, std::size_t{1} << 30, 0);
            if (n > 0) continue;
            if (n == 0) return true;
            if (errno == EINTR) continue;
            if (errno == EXDEV || errno == ENOSYS || errno == EINVAL || errno == EOPNOTSUPP ||
                errno == EBADF || errno == EPERM) {
                // Not offered here: the offsets moved only past what was
                // copied, so a plain loop carries on from there.
                kernelCopy = false;
                buffer.resize(256 * 1024);
                continue;
            }
            error = std::strerror(errno);
            return false;
        }
        ssize_t got = ::read(in, buffer.data(), buffer.size());
        if (got == 0) return true;
        if (got < 0) {
            if (errno == EINTR) continue;
            error = std::strerror(errno);
            return false;
        }
        for (ssize_t done = 0; done < got;) {
            ssize_t put = ::write(out, buffer.data() + done, static_cast<std::size_t>(got - done));
            if (put < 0) {
                if (errno == EINTR) continue;
                error = std::strerror(errno);
                return false;
            }
            done += put;
        }
    }
}

bool SchemeFileSystem::ApplyTimes(int out, const timespec times[2]) {
    return ::futimens(out, times) == 0;
}

bool SchemeFileSystem::Flush(int out) { return ::fsync(out) == 0; }

// A rename is durable only once its folder is flushed too.
void SchemeFileSystem::FlushFolder(const std::string& folder) {
    int fd = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0) return;
    ::fsync(fd);
    ::close(fd);
}

bool SchemeFileSystem::FlushFileSystem(const std::string& folder) {
    int fd = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0) return false;
    bool ok = ::syncfs(fd) == 0;
    ::close(fd);
    return ok;
}

std::vector<std::string> SchemeFileSystem::CommitPending(std::vector<PendingCopy>& pending) {
    std::vector<std::string> errors(pending.size());
    // One folder for each file system the copies are on.
    std::map<dev_t, std::string> fileSystems;
    std::vector<dev_t> deviceOf(pending.size(), 0);
    std::map<std::string, dev_t> deviceOfFolder;  // the copies of a batch share a few folders
    for (std::size_t i = 0; i < pending.size(); ++i) {
        std::string folder = FolderOf(pending[i].temp);
        auto known = deviceOfFolder.find(folder);
        if (known == deviceOfFolder.end()) {
            struct stat st {};
            if (::stat(folder.c_str(), &st) == 0) fileSystems.emplace(st.st_dev, folder);
            known = deviceOfFolder.emplace(std::move(folder), st.st_dev).first;
        }
        deviceOf[i] = known->second;
    }
    std::map<dev_t, bool> flushed;
    for (const auto& [device, folder] : fileSystems) flushed[device] = FlushFileSystem(folder);
    for (std::size_t i = 0; i < pending.size(); ++i) {
        const PendingCopy& copy = pending[i];
        struct stat st {};
        std::string& error = errors[i];
        if (!flushed[deviceOf[i]]) {
            error = "Unable to write " + copy.destination + ": the disk could not be flushed";
        } else if (!copy.replaces) {
            if (!RenameFile(copy.temp, copy.destination, false)) error = Describe("Unable to place", copy.destination, errno);
        } else if (!replaceReadOnly_ && IsWriteProtected(copy.destination)) {
            error = "Unable to replace " + copy.destination + ": the file is read-only";
        } else if (copy.backup && ::lstat(copy.destination.c_str(), &st) == 0 &&
                   BackupFile(copy.destination, error).empty()) {
            // error says why: the old file stays as it is
        } else if (!RenameFile(copy.temp, copy.destination, true)) {
            error = Describe("Unable to replace", copy.destination, errno);
        }
        if (!error.empty()) ::unlink(copy.temp.c_str());
    }
    for (const auto& [device, folder] : fileSystems)
        if (flushed[device]) FlushFileSystem(folder);
    pending.clear();
    return errors;
}

SchemeFileSystem::CopyResult SchemeFileSystem::CopyInto(const std::string& source,
                                                        const std::string& destination, Commit commit,
                                                        bool backup, std::string& error,
                                                        std::string* backupPath, int* errnoOut,
                                                        std::vector<PendingCopy>* pending) {
    auto fail = [&](std::string text, int err) {
        error = std::move(text);
        if (errnoOut) *errnoOut = err;
        return CopyResult::Failed;
    };
    // O_NOATIME keeps the source's access time as the copy will show it; only
    // the owner may ask for it.
    int inFd = ::open(source.c_str(), O_RDONLY | O_CLOEXEC | O_NOATIME);
    if (inFd < 0 && errno == EPERM) inFd = ::open(source.c_str(), O_RDONLY | O_CLOEXEC);
    if (inFd < 0) {
        if (errno == ENOENT) return CopyResult::SourceMissing;
        return fail(Describe("Unable to open", source, errno), errno);
    }
    Fd in(inFd);
    struct stat src {};
    if (::fstat(in.get(), &src) != 0) return fail(Describe("Unable to read", source, errno), errno);
    if (!S_ISREG(src.st_mode)) return fail("Not a normal file: " + source, EINVAL);

    struct stat target {};
    bool targetExists = ::lstat(destination.c_str(), &target) == 0;
    if (targetExists && S_ISDIR(target.st_mode)) return fail("A folder is in the way: " + destination, EISDIR);
    bool keepTargetMode = targetExists && S_ISREG(target.st_mode);
    if (commit == Commit::Replace && !replaceReadOnly_ && IsWriteProtected(destination))
        return fail("Unable to replace " + destination + ": the file is read-only", EACCES);

    const std::string folder = FolderOf(destination);
    const std::string name = NameOf(destination);
    static unsigned counter = 0;
    std::string tempPath;
    int outFd = -1;
    for (int attempt = 0; attempt < 100 && outFd < 0; ++attempt) {
        // A leading full stop hides it, and neither its extension nor its
        // name can pass for a scheme or a member of a family.
        tempPath = folder + "/." + name + ".sync-" + std::to_string(::getpid()) + "-" + std::to_string(counter++);
        outFd = ::open(tempPath.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC,
                       keepTargetMode ? (target.st_mode & 07777) : (src.st_mode & 0777));
        if (outFd < 0 && errno != EEXIST) return fail(Describe("Unable to write in", folder, errno), errno);
    }
    if (outFd < 0) return fail("No free temporary name in " + folder, EEXIST);
    Fd out(outFd);
    TempFile temp(tempPath);
    if (keepTargetMode) {
        // Best effort: the replacement looks like the file it replaces.
        ::fchmod(out.get(), target.st_mode & 07777);
        if (target.st_uid != ::geteuid() || target.st_gid != ::getegid())
            (void)::fchown(out.get(), target.st_uid, target.st_gid);
    }

    std::string why;
    if (!Transfer(in.get(), out.get(), why)) return fail("Unable to copy " + source + ": " + why, EIO);
    const timespec times[2] = {src.st_atim, src.st_mtim};
    bool timesSet = ApplyTimes(out.get(), times);
    if (pending && commit == Commit::Replace) {
        if (!out.Close()) return fail(Describe("Unable to write", destination, errno), errno);
        pending->push_back(PendingCopy{tempPath, destination, targetExists, backup && targetExists});
        temp.Release();
        return timesSet ? CopyResult::Copied : CopyResult::CopiedTimesNotSet;
    }
    if (!Flush(out.get())) return fail(Describe("Unable to write", destination, errno), errno);
    if (!out.Close()) return fail(Describe("Unable to write", destination, errno), errno);

    if (backup && targetExists) {
        std::string made = BackupFile(destination, why);
        if (made.empty()) return fail(why, EIO);
        if (backupPath) *backupPath = made;
    }
    bool renamed = RenameFile(tempPath, destination, commit == Commit::Replace);
    if (!renamed) return fail(Describe("Unable to replace", destination, errno), errno);
    temp.Release();
    FlushFolder(folder);
    return timesSet ? CopyResult::Copied : CopyResult::CopiedTimesNotSet;
}

std::string SchemeFileSystem::BackupFile(const std::string& path, std::string& error) {
    for (unsigned number = 0; number < 1000000; ++number) {
        std::string candidate = BackupName(path, number);
        struct stat st {};
        if (::lstat(candidate.c_str(), &st) == 0) continue;
        if (errno != ENOENT) {
            error = Describe("Unable to make a backup", candidate, errno);
            return "";
        }
        // A second name for the same bytes is the cheapest exact backup; the
        // original name is then replaced by a rename, never written in place.
        // (Made durable by the folder flush that follows the replacement.)
        if (::link(path.c_str(), candidate.c_str()) == 0) return candidate;
        if (errno == EEXIST) continue;
        if (errno == ENOENT) {
            error = Describe("Unable to make a backup of", path, errno);
            return "";
        }
        // No hard links here (some network shares): a real copy.
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
