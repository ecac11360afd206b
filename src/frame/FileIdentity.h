#pragma once
#include <meridex/Export.h>
#include <cstdint>

namespace meridex {

/// What tells one version of a file from another: its size, its modification
/// time to the nanosecond (as far as the file system keeps it), the file's id
/// (device and inode on Linux, volume serial and file index on Windows) and a
/// hash of its bytes. A file that is not there has exists false.
struct MERIDEX_EXPORT FileIdentity {
    bool exists = false;
    std::uint64_t size = 0;
    std::int64_t modifiedNs = 0;
    std::uint64_t volume = 0;
    std::uint64_t fileId = 0;
    std::uint64_t hash = 0;

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
