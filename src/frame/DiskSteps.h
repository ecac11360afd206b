#pragma once
#include <sys/types.h>

#include <string>

// Internal: the system calls a save makes, one virtual step each, so tests can
// make any of them fail (disk full, I/O error, a folder without write
// permission) without a real faulty disk. Not installed.
namespace meridex::FileOps {

/// The disk steps of `WriteFileAtomic`; each answers as the system call it wraps (errno set on failure).
class DiskSteps {
public:
    virtual ~DiskSteps() = default;
    /// mkostemp: makes the temporary file from its XXXXXX template.
    virtual int CreateTemp(std::string& pathTemplate);
    /// open(O_WRONLY) of the target itself, for the in-place fallback.
    virtual int OpenExisting(const std::string& path);
    /// pwrite.
    virtual ssize_t Write(int fd, const char* data, std::size_t size, off_t offset);
    /// fsync.
    virtual int Sync(int fd);
    /// rename.
    virtual int Rename(const std::string& from, const std::string& to);
};

/// Installs the steps every later save uses (nullptr: the real system calls); answers the previous ones.
DiskSteps* InstallDiskSteps(DiskSteps* steps) noexcept;

}  // namespace meridex::FileOps
