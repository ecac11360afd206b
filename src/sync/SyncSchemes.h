#pragma once
#include <meridex/Export.h>
#include <array>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include <meridex/sync/SchemeFileCollection.h>
#include <meridex/sync/SchemeFileItem.h>
#include <meridex/sync/SchemeFileSystem.h>
#include <meridex/sync/SyncEvents.h>

namespace meridex {

/// Compares a remote and a local scheme folder and copies scheme families
/// (the files sharing one base name) in either direction.
///
/// GetSchemeList scans both trees for files whose extension begins with "sxs"
/// and sorts each scheme into NewerLocalFiles, NewerRemoteFiles or SyncedFiles
/// by its last-modified time, to the second. Sync then carries out the option
/// the caller set on each item. Paths use "/"; a relative path keeps its
/// leading separator ("/Sub/Site.SXS") and its key is the same in upper case,
/// so files whose paths differ only in letter case pair up.
///
/// Nothing already on disk is lost: every copy replaces its target atomically,
/// and a file about to be replaced, by an update as much as by a revert, is
/// first kept as "name~0000.BAK" (then ~0001, ...). Errors lists what could not
/// be scanned, sorted or copied, each item with its ErrDescription.
class MERIDEX_EXPORT SyncSchemes {
public:
    /// Works on the real file system.
    SyncSchemes();
    /// Works through fileSystem (null: the real one), so tests can make steps fail.
    explicit SyncSchemes(std::shared_ptr<SchemeFileSystem> fileSystem);
    ~SyncSchemes();
    SyncSchemes(const SyncSchemes&) = delete;
    SyncSchemes& operator=(const SyncSchemes&) = delete;

    /// Schemes whose local copy is newer (or only local).
    SchemeFileCollection& NewerLocalFiles() noexcept { return newerLocal_; }
    /// Schemes whose remote copy is newer (or only remote).
    SchemeFileCollection& NewerRemoteFiles() noexcept { return newerRemote_; }
    /// Schemes modified at the same second on both sides.
    SchemeFileCollection& SyncedFiles() noexcept { return synced_; }
    /// What could not be scanned, sorted or copied.
    SchemeFileCollection& Errors() noexcept { return errors_; }
    /// Schemes whose local copy is newer (or only local).
    const SchemeFileCollection& NewerLocalFiles() const noexcept { return newerLocal_; }
    /// Schemes whose remote copy is newer (or only remote).
    const SchemeFileCollection& NewerRemoteFiles() const noexcept { return newerRemote_; }
    /// Schemes modified at the same second on both sides.
    const SchemeFileCollection& SyncedFiles() const noexcept { return synced_; }
    /// What could not be scanned, sorted or copied.
    const SchemeFileCollection& Errors() const noexcept { return errors_; }

    /// The remote root given to the last GetSchemeList.
    const std::string& RemotePath() const noexcept { return remotePath_; }
    /// The local root given to the last GetSchemeList.
    const std::string& LocalPath() const noexcept { return localPath_; }
    /// True after CancelSearch, until the next GetSchemeList.
    bool CancelFlag() const noexcept { return cancel_; }

    /// Sets the receiver of the events (not owned; null for none).
    void setEvents(SyncEvents* events) noexcept { events_ = events; }
    /// The receiver of the events; null when there is none.
    SyncEvents* Events() const noexcept { return events_; }

    /// Ends the scan or the copying at the next file. Only GetSchemeList clears
    /// the flag.
    void CancelSearch() noexcept { cancel_ = true; }

    /// Scans both trees and adds what it finds to the result collections
    /// (earlier results stay; a key already listed keeps its earlier item). A
    /// missing root is an empty side. A cancelled scan sorts nothing, since a
    /// half-read tree would make schemes look one-sided.
    void GetSchemeList(const std::string& remotePath, const std::string& localPath);

    /// Carries out the option of every item of NewerLocalFiles, then of
    /// NewerRemoteFiles. (The routine the host knows as SyncSchemes; a C++
    /// member cannot share its class's name.)
    void Sync();

    /// The extensions copied with a family, in the order they are copied.
    static const std::array<std::string_view, 31>& CopiedExtensions();
    /// The description CopyFilesError gives.
    static constexpr const char* kTimesError = "Unable to revert file date/times";

private:
    struct Side;
    bool Scan(Side& side);
    void SyncItem(const SchemeFileItem& item, bool fromLocalList, std::int16_t progress);
    bool CopyFamily(const SchemeFileItem& item, const std::string& sourceFolder, const std::string& base,
                    const std::string& destinationFolder, std::string& error);
    /// The files of a folder, read once per Sync and kept up to date with what
    /// Sync itself writes there.
    struct FolderListing;
    FolderListing* Listing(const std::string& folder, int* errnoOut);
    void CommitPending();
    std::string ResolveFolder(const std::string& root, const std::string& relativeFolder);
    void AddError(SchemeFileItem item, const std::string& description);

    void RaiseFoundFiles(const std::string& path);
    void RaiseCopyFiles(const std::string& source, const std::string& destination, std::int16_t progress);
    void RaiseCopyFilesError(const std::string& source, const std::string& destination);

    std::shared_ptr<SchemeFileSystem> fs_;
    std::unordered_map<std::string, std::unique_ptr<FolderListing>> listings_;
    std::vector<SchemeFileSystem::PendingCopy> pending_;
    std::vector<SchemeFileItem> pendingItems_;
    std::unordered_set<std::string> pendingDestinations_;
    SyncEvents* events_ = nullptr;
    SchemeFileCollection newerLocal_;
    SchemeFileCollection newerRemote_;
    SchemeFileCollection synced_;
    SchemeFileCollection errors_;
    std::string remotePath_;
    std::string localPath_;
    std::string remoteRoot_;  ///< the same, absolute, as scanned
    std::string localRoot_;
    bool cancel_ = false;
};

}  // namespace meridex
