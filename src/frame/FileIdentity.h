#pragma once
#include <meridex/Export.h>
#include <cstdint>

namespace meridex {

/// What tells one version of a file from another: its size, its modification
/// time to the nanosecond (as far as the file system keeps it), the file's id
/// (device and inode on Linux, volume serial and file index on Windows) and a
/// hash of its bytes. A file that is not there has exists false.
struct MERIDEX_EXPORT FileIdentity {
    bool exists = false;             ///< False when no file was there.
    std::uint64_t size = 0;          ///< Its size in bytes.
    std::int64_t modifiedNs = 0;     ///< Its modification time, nanoseconds since 1970 (UTC).
    std::uint64_t volume = 0;        ///< The device (Linux) or volume serial number (Windows) holding it.
    std::uint64_t fileId = 0;        ///< The inode (Linux) or file index (Windows) within that volume.
    std::uint64_t hash = 0;          ///< HashOf its bytes, where they were read (0 where not).

    /// True when both name the same version by their metadata (the hash is
    /// not compared: a file whose metadata differs is read and hashed).
    bool SameMetadata(const FileIdentity& other) const noexcept {
        return exists == other.exists && (!exists || (size == other.size && modifiedNs == other.modifiedNs &&
                                                      volume == other.volume && fileId == other.fileId));
    }
    /// The hash FileIdentity keeps of a file's bytes.
    static std::uint64_t HashOf(const char* data, std::uint64_t size) noexcept;
};

}  // namespace meridex
