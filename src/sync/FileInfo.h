#pragma once
#include <meridex/Export.h>
#include <cstdint>
#include <ctime>
#include <string>

#include <meridex/frame/DateTime.h>

namespace meridex {

/// What is known of one file on disk when it was looked at: its name, full
/// path, parent folder, size and times. A plain value; it does not follow
/// later changes of the file.
///
/// "Created" is the creation time on Windows; on Linux the birth time where
/// the file system records it (statx), otherwise the time of the last status
/// change, the nearest thing POSIX has.
class MERIDEX_EXPORT FileInfo {
public:
    /// None: no file.
    FileInfo() = default;
    /// None, as the default constructor makes it.
    static FileInfo None() { return FileInfo(); }

    /// The file at path (a symbolic link is followed); none when there is no
    /// normal file there.
    static FileInfo FromPath(const std::string& path);

    /// True for none.
    bool IsNull() const noexcept { return path_.empty(); }
    /// True for a file (the opposite of IsNull).
    explicit operator bool() const noexcept { return !path_.empty(); }
    /// The file name with its extension, without the folder.
    const std::string& Name() const noexcept { return name_; }
    /// The path the file was looked up by.
    const std::string& Path() const noexcept { return path_; }
    /// The folder holding the file, without a trailing separator.
    const std::string& ParentFolder() const noexcept { return parent_; }
    /// The size in bytes.
    std::uint64_t Size() const noexcept { return size_; }

    /// The time the file was made (see above), exactly as the file system keeps it.
    const timespec& Created() const noexcept { return created_; }
    /// The time of the last access, exactly.
    const timespec& Accessed() const noexcept { return accessed_; }
    /// The time of the last change of content, exactly.
    const timespec& Modified() const noexcept { return modified_; }

    /// Created as a local calendar date, to the second.
    DateTime DateCreated() const { return DateTime::FromLocal(created_.tv_sec); }
    /// Accessed as a local calendar date, to the second.
    DateTime DateLastAccessed() const { return DateTime::FromLocal(accessed_.tv_sec); }
    /// Modified as a local calendar date, to the second.
    DateTime DateLastModified() const { return DateTime::FromLocal(modified_.tv_sec); }

private:
    std::string name_;
    std::string path_;
    std::string parent_;
    std::uint64_t size_ = 0;
    timespec created_{};
    timespec accessed_{};
    timespec modified_{};
};

}  // namespace meridex
