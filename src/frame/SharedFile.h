#pragma once
#include <meridex/Export.h>
#include <functional>
#include <string>

#include <meridex/frame/FileIdentity.h>

namespace meridex {

/// The file of a document that several people may open at once (a shared
/// folder). It remembers the version a load read, and a save checks, just
/// before its rename, that the file is still that version. When someone else
/// saved in between, their version is merged into ours; what the merge
/// cannot keep (or a version it cannot read) is first kept beside the target
/// as "NAME.conflict-YYYYMMDD-HHMMSS" (then -1, -2, ...; a hard link where
/// possible), logged and told to the user, and then ours is saved.
class MERIDEX_EXPORT SharedFile {
public:
    /// Merges their bytes into the document in memory, base being the bytes
    /// of the version loaded: false when something of theirs was left out
    /// (their version then goes to a conflict copy).
    using Merge = std::function<bool(const std::string& base, const std::string& theirs)>;

    /// Reads path into bytes and remembers the version read (or that there
    /// was no file); false when nothing could be read.
    bool Read(const std::string& path, std::string& bytes);
    /// Remembers path as a file that had nothing to load (any version found at
    /// save counts as someone else's).
    void NotRead(const std::string& path);
    /// The document as loaded, in the form merges compare against (after Read:
    /// the bytes read).
    void setBase(std::string bytes) { base_ = std::move(bytes); }

    /// Writes serialize()'s bytes to target atomically. When target is the file
    /// loaded or last saved and someone else saved it since, merges (merge may
    /// be empty: nothing merges), keeps a conflict copy where needed, reports
    /// it under context ("AddressBook:SaveAddressBook") and writes again. False
    /// with a reason when the bytes could not be written.
    bool Save(const std::string& target, const std::function<std::string()>& serialize, const Merge& merge,
              const std::string& context, std::string* error = nullptr);

    /// The conflict copy the last save made ("" when it made none).
    const std::string& ConflictCopy() const noexcept { return conflictCopy_; }

    /// The log conflicts are written to (by default MeridexAppLibrary.log
    /// beside the library; "" for none); one for the process.
    static void setErrorLogFile(std::string path);
    /// The log conflicts are written to.
    static std::string ErrorLogFile();

private:
    std::string path_;
    FileIdentity identity_;
    std::string base_;
    std::string conflictCopy_;
};

}  // namespace meridex
