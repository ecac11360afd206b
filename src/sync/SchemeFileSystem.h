#pragma once
#include <meridex/Export.h>
#include <cstdint>
#include <ctime>
#include <string>
#include <vector>

#include <meridex/sync/FileInfo.h>

namespace meridex {

/// The file operations scheme synchronisation needs (each platform's folder
/// has its own, on POSIX or the Windows API). Copies never
/// damage what they replace: the bytes go to a hidden temporary file in the
/// destination folder, which gets the source's times, is flushed to disk and
/// only then renamed over the target. A failed copy removes its temporary
/// file and leaves the target exactly as it was.
///
/// The few steps that touch the disk are virtual so tests can make them fail.
class MERIDEX_EXPORT SchemeFileSystem {
public:
    /// How a copy ended.
    enum class CopyResult {
        Copied,             ///< done, times given back
        CopiedTimesNotSet,  ///< done, but the source's times could not be given to the copy
        SourceMissing,      ///< the source went away before it could be opened
        Failed,             ///< nothing changed at the destination
    };

    virtual ~SchemeFileSystem() = default;

    /// True when path names a folder (a link to one included).
    bool FolderExists(const std::string& path) const;
    /// The name of the folder at path as the file system keeps it, which may
    /// differ in letter case from the name asked for where names are matched
    /// ignoring case; "" when no folder is there.
    std::string FolderSpelling(const std::string& path) const;
    /// The normal files and the sub-folders of a folder, each sorted by name.
    /// Symbolic links count as what they point to, except that links to folders
    /// are not followed (so a link loop cannot trap a scan). False, with
    /// errnoOut set, when the folder cannot be read.
    virtual bool ListFolder(const std::string& folder, std::vector<std::string>& files,
                            std::vector<std::string>& folders, int* errnoOut = nullptr);
    /// What is known of the file at path now (none when there is no file).
    FileInfo GetFile(const std::string& path) const { return FileInfo::FromPath(path); }

    /// A complete and dated copy still under its temporary name, waiting for
    /// CommitPending.
    struct PendingCopy {
        std::string temp;         ///< The copy, under its hidden temporary name.
        std::string destination;  ///< The name it is to take.
        bool replaces = false;  ///< a file was there when the copy was made
        bool backup = false;    ///< keep that file by BackupFile before replacing it
    };

    /// Copies source over destination as described above; error says why it
    /// failed. With backup, an existing destination is first kept by
    /// BackupFile, once the new copy is ready and just before it replaces the
    /// old file; when no backup can be made nothing is replaced (Failed).
    ///
    /// Alone, each copy is flushed to disk before its rename. With pending
    /// given, the copy is left in its temporary file and added to pending, so
    /// that a whole batch costs one flush of the disk instead of one per file
    /// (flushing file by file made a sync many times slower than cp).
    CopyResult CopyFile(const std::string& source, const std::string& destination, bool backup,
                        std::string& error, std::string* backupPath = nullptr,
                        std::vector<PendingCopy>* pending = nullptr);
    /// Flushes the file systems holding the pending copies; only then backs up
    /// and replaces each target, or gives a new copy its name (never over a
    /// file that has appeared there since), and flushes again. Answers one
    /// text per copy: "" when it is in place, else why not (its temporary file
    /// is then gone and the target as it was). Empties pending.
    std::vector<std::string> CommitPending(std::vector<PendingCopy>& pending);
    /// Keeps a copy of path under the first free name path + "~0000.BAK",
    /// "~0001.BAK", ... Earlier backups are never touched. Answers the backup's
    /// path, or "" (with error set) when none could be made.
    std::string BackupFile(const std::string& path, std::string& error);

    /// Makes the entries of a folder (a rename, a new name) durable.
    virtual void FlushFolder(const std::string& folder);

    /// True when path is a file without write permission, which a copy does
    /// not replace (as an overwriting copy fails on Windows) unless allowed.
    bool IsWriteProtected(const std::string& path) const;
    /// Whether copies may replace write-protected files (false by default).
    bool ReplaceReadOnly() const noexcept { return replaceReadOnly_; }
    /// Lets copies replace write-protected files, or stops them.
    void setReplaceReadOnly(bool replace) noexcept { replaceReadOnly_ = replace; }

    /// The name a backup number gives: "Site.SXS~0007.BAK".
    static std::string BackupName(const std::string& path, unsigned number);

protected:
    /// Moves all of in's bytes to out (C runtime descriptors on both platforms).
    virtual bool Transfer(int in, int out, std::string& error);
    /// Sets out's access and modification times (times[0], times[1]); on
    /// Windows the copy is given the source's creation time as well.
    virtual bool ApplyTimes(int out, const timespec times[2]);
    /// Makes out durable.
    virtual bool Flush(int out);
    /// Makes everything written to the file system holding folder durable.
    virtual bool FlushFileSystem(const std::string& folder);
    /// Gives a finished temporary its name: over an existing file with
    /// replace, else never over one (errno EEXIST).
    virtual bool RenameFile(const std::string& from, const std::string& to, bool replace);

private:
    bool replaceReadOnly_ = false;
    enum class Commit { Replace, NoReplace };
    CopyResult CopyInto(const std::string& source, const std::string& destination, Commit commit,
                        bool backup, std::string& error, std::string* backupPath, int* errnoOut,
                        std::vector<PendingCopy>* pending);
};

}  // namespace meridex
