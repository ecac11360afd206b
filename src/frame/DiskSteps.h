#pragma once
#include <sys/types.h>

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

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
    /// ftruncate: cuts (or extends) the file to size bytes.
    virtual int Truncate(int fd, std::uint64_t size);
    /// close.
    virtual int Close(int fd);
};

/// Installs the steps every later save uses (nullptr: the real system calls); answers the previous ones.
DiskSteps* InstallDiskSteps(DiskSteps* steps) noexcept;
/// The steps saves use now.
DiskSteps& CurrentDiskSteps() noexcept;

/// The process number a save's temporary carries in its name, given the part
/// after "." name ".tmp-": "<number>-XXXXXX". 0 when rest has not that form
/// or the number is above 32 bits.
unsigned long long TemporaryWriter(std::string_view rest);
/// Writes all of bytes from the start of fd through the current steps; false with errno set.
bool WriteAllAt(int fd, std::string_view bytes);
/// The fallback when no file can be made beside the target (a folder the user
/// may not write, holding a file the user may): the target is rewritten in
/// place and flushed. If a write fails part-way, the old bytes are written
/// back, so only a crash in the middle can leave a mixed file. False with
/// errorOut an errno value.
bool WriteInPlace(const std::string& target, std::string_view bytes, int& errorOut);

/// Asked just before a save puts its written temporary in place of the target
/// (the final file, links followed), while no other checked save of that folder
/// can do the same: true lets the rename go on; false ends the save, the
/// temporary removed and the target untouched. The in-place fallback asks it
/// with an empty temporary before it writes.
using RenameCheck = std::function<bool(const std::string& temporary, const std::string& target)>;
/// WriteFileAtomic with the check made inside its rename step (none when empty).
bool WriteFileAtomicChecked(const std::string& path, std::string_view bytes, std::string* error,
                            const RenameCheck& check);

}  // namespace meridex::FileOps
