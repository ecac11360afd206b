#include <meridex/frame/DiskSteps.h>

#include <cerrno>

#include <meridex/frame/FileOps.h>

// The parts of a save that are the same on every system; the steps
// themselves are in each platform's FileOps.cpp.
namespace meridex::FileOps {
namespace {

DiskSteps gRealSteps;
DiskSteps* gSteps = &gRealSteps;

}  // namespace

DiskSteps* InstallDiskSteps(DiskSteps* steps) noexcept {
    DiskSteps* previous = gSteps == &gRealSteps ? nullptr : gSteps;
    gSteps = steps ? steps : &gRealSteps;
    return previous;
}

DiskSteps& CurrentDiskSteps() noexcept { return *gSteps; }

unsigned long long TemporaryWriter(std::string_view rest) {
    const std::size_t dash = rest.find('-');
    if (dash == 0 || dash == std::string_view::npos || rest.size() - dash != 7) return 0;
    unsigned long long pid = 0;
    for (char c : rest.substr(0, dash)) {
        if (c < '0' || c > '9') return 0;
        pid = pid * 10 + static_cast<unsigned long long>(c - '0');
        if (pid > 0xFFFFFFFFull) return 0;
    }
    return pid;
}

bool WriteAllAt(int fd, std::string_view bytes) {
    off_t offset = 0;
    while (!bytes.empty()) {
        const ssize_t n = gSteps->Write(fd, bytes.data(), bytes.size(), offset);
        if (n < 0) {
            if (errno == EINTR) continue;
            return false;
        }
        if (n == 0) {
            errno = EIO;
            return false;
        }
        bytes.remove_prefix(static_cast<std::size_t>(n));
        offset += n;
    }
    return true;
}

bool WriteInPlace(const std::string& target, std::string_view bytes, int& errorOut) {
    std::string old;
    if (!ReadWholeFile(target, old)) {
        errorOut = errno ? errno : EIO;
        return false;
    }
    const int fd = gSteps->OpenExisting(target);
    if (fd < 0) {
        errorOut = errno;
        return false;
    }
    bool ok = WriteAllAt(fd, bytes) && gSteps->Truncate(fd, bytes.size()) == 0 && gSteps->Sync(fd) == 0;
    if (!ok) {
        errorOut = errno;
        if (WriteAllAt(fd, old) && gSteps->Truncate(fd, old.size()) == 0) gSteps->Sync(fd);
    }
    ok = gSteps->Close(fd) == 0 && ok;
    if (!ok && errorOut == 0) errorOut = errno;
    return ok;
}

}  // namespace meridex::FileOps
