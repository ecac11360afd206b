#include <meridex/sync/SyncSchemes.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <system_error>
#include <tuple>
#include <unordered_map>
#include <unordered_set>

#include <meridex/frame/Error.h>
#include <meridex/frame/Text.h>
#include <meridex/platform/FileSystem.h>

namespace meridex {

namespace {

constexpr std::size_t kCopiesPerFlush = 512;

bool EndsWithSeparator(const std::string& path) {
    return !path.empty() && FileSystem::LastSeparator(path) == path.size() - 1;
}

std::string Join(const std::string& folder, const std::string& name) {
    if (folder.empty()) return name;
    return EndsWithSeparator(folder) ? folder + name : folder + "/" + name;
}

// "/a/b/" and "/a/b" are the same root ("C:\a\b\" too on Windows); "/"
// and "C:\" stay as they are.
std::string NormalRoot(const std::string& path) {
    std::string root = path;
    while (root.size() > FileSystem::RootLength(root) && EndsWithSeparator(root)) root.pop_back();
    return root;
}

std::string RelativeTo(const std::string& root, const std::string& path) {
    if (root == "/") return path == "/" ? std::string() : path;
    return path.substr(root.size());
}

bool IsSchemeExtension(const std::string& name) {
    auto dot = name.rfind('.');
    if (dot == std::string::npos || name.size() - dot - 1 < 3) return false;
    return Text::EqualsIgnoreCase(std::string_view(name).substr(dot + 1, 3), "sxs");
}

std::string Absolute(const std::string& path) {
    std::error_code ec;
    // UTF-8 both ways, whatever the platform's narrow encoding is.
    const std::filesystem::path absolute =
        std::filesystem::absolute(std::filesystem::path(std::u8string(path.begin(), path.end())), ec);
    if (ec) return path;
    const std::u8string text = absolute.u8string();
    return std::string(text.begin(), text.end());
}

// A root as the scan walks it: absolute, so every path found is a full path.
std::string ScanRoot(const std::string& path) { return path.empty() ? path : NormalRoot(Absolute(path)); }

// A file or folder name here may hold a back slash, so unlike the path
// helpers, which take it for a separator, these split at "/" only.
std::string FolderPart(const std::string& relativePath) {
    auto slash = relativePath.rfind('/');
    return slash == std::string::npos ? std::string() : relativePath.substr(0, slash + 1);
}
std::string BaseName(const std::string& name) { return name.substr(0, name.rfind('.')); }

// Creates a folder and its missing parents; throws when one cannot be made.
void MakeFolders(const std::string& folder) {
    for (std::size_t end = folder.find('/', 1);; end = folder.find('/', end + 1)) {
        std::string part = folder.substr(0, end);
        int error = 0;
        if (!FileSystem::CreateFolder(part, error))
            throw std::system_error(error, std::generic_category(), "Unable to create folder " + part);
        if (end == std::string::npos) return;
    }
}

std::string AsFolder(const std::string& path) { return path.empty() || path.back() == '/' ? path : path + "/"; }

// A folder's name as it is on disk, matched ignoring letter case.
const std::string* FindFolder(const std::vector<std::string>& names, const std::string& wanted) {
    for (const auto& name : names)
        if (Text::EqualsIgnoreCase(name, wanted)) return &name;
    return nullptr;
}

}  // namespace

struct SyncSchemes::Side {
    std::string root;
    std::vector<SchemeFileItem> items;
    std::vector<std::string> folded;  // folded relative path of each item
    std::unordered_map<std::string, std::size_t> byPath;
    std::vector<std::string> unreadable;  // folded relative folders, with a trailing "/"

    bool CouldNotRead(const std::string& foldedPath) const {
        for (const auto& folder : unreadable)
            if (foldedPath.compare(0, folder.size(), folder) == 0) return true;
        return false;
    }
};

// The files of one folder, indexed for the two questions a family copy asks:
// which files share a base name, and what a name is spelt like on disk.
struct SyncSchemes::FolderListing {
    std::unordered_set<std::string> names;
    std::unordered_map<std::string, std::string> byFolded;  // first spelling found of each name
    std::unordered_map<std::string, std::vector<std::string>> byBase;  // folded part before the last full stop

    void Add(const std::string& name) {
        if (!names.insert(name).second) return;
        byFolded.emplace(Text::FoldCase(name), name);
        auto dot = name.rfind('.');
        if (dot != std::string::npos) byBase[Text::FoldCase(std::string_view(name).substr(0, dot))].push_back(name);
    }
    // The exact spelling first, then any that differs only in letter case.
    const std::string* Find(const std::string& wanted) const {
        auto exact = names.find(wanted);
        if (exact != names.end()) return &*exact;
        auto folded = byFolded.find(Text::FoldCase(wanted));
        return folded == byFolded.end() ? nullptr : &folded->second;
    }
};

SyncSchemes::SyncSchemes() : SyncSchemes(std::make_shared<SchemeFileSystem>()) {}
SyncSchemes::~SyncSchemes() = default;

SyncSchemes::SyncSchemes(std::shared_ptr<SchemeFileSystem> fileSystem)
    : fs_(fileSystem ? std::move(fileSystem) : std::make_shared<SchemeFileSystem>()) {}

const std::array<std::string_view, 31>& SyncSchemes::CopiedExtensions() {
    static const std::array<std::string_view, 31> extensions = {
        "XML",  "SXS",  "LDR",  "KBD", "TAVI", "INC", "CDT", "ENT", "EVT", "FTU", "INI",
        "INP",  "LDRJ", "LDRS", "LSTJ", "LSTS", "LST", "OPT", "SCM", "MXS", "MXZ", "SR0",
        "SR1",  "SR2",  "SR3",  "SR4",  "SR5",  "SR6", "SR7", "SRC", "BAK"};
    return extensions;
}

void SyncSchemes::RaiseFoundFiles(const std::string& path) {
    if (!events_) return;
    try {
        events_->FoundFiles(path + "\r\n");
    } catch (...) {
    }
}

void SyncSchemes::RaiseCopyFiles(const std::string& source, const std::string& destination, std::int16_t progress) {
    if (!events_) return;
    try {
        events_->CopyFiles(source, destination, progress);
    } catch (...) {
    }
}

void SyncSchemes::RaiseCopyFilesError(const std::string& source, const std::string& destination) {
    if (!events_) return;
    try {
        events_->CopyFilesError(source, destination, kTimesError);
    } catch (...) {
    }
}

void SyncSchemes::AddError(SchemeFileItem item, const std::string& description) {
    item.setErrDescription(description);
    // One item may fail more than once (a second Sync); each failure is kept.
    std::string key = item.Key();
    for (int n = 2; !errors_.Add(item, key); ++n) key = item.Key() + " (" + std::to_string(n) + ")";
}

// Depth first with a list of folders still to read instead of recursion, so a
// very deep tree cannot exhaust the stack. Files of a folder come before its
// sub-folders, each in name order.
bool SyncSchemes::Scan(Side& side) {
    std::vector<std::string> pending{side.root};
    std::vector<std::string> files;
    std::vector<std::string> folders;
    while (!pending.empty()) {
        std::string folder = std::move(pending.back());
        pending.pop_back();
        int err = 0;
        if (!fs_->ListFolder(folder, files, folders, &err)) {
            // Skipped, and remembered: a scheme of the other side under this
            // folder cannot be called one-sided.
            std::string relative = RelativeTo(side.root, folder) + "/";
            side.unreadable.push_back(Text::FoldCase(relative));
            SchemeFileItem item;
            item.setRelativePath(relative);
            item.setKey(Text::ToUpper(relative));
            AddError(item, "Unable to read folder " + folder + ": " + std::strerror(err));
            continue;
        }
        for (const auto& name : files) {
            if (IsSchemeExtension(name)) {
                std::string path = Join(folder, name);
                FileInfo file = fs_->GetFile(path);
                if (!file.IsNull()) {
                    SchemeFileItem item;
                    item.setFile(file);
                    item.setRelativePath(RelativeTo(side.root, path));
                    item.setKey(Text::ToUpper(item.RelativePath()));
                    std::string folded = Text::FoldCase(item.RelativePath());
                    auto [slot, added] = side.byPath.emplace(folded, side.items.size());
                    if (added) {
                        side.items.push_back(item);
                        side.folded.push_back(std::move(folded));
                    } else {
                        // Possible only where names are case-sensitive: which
                        // of the two is the scheme cannot be decided here.
                        AddError(item, "Another scheme file differs from it only in letter case: " +
                                           side.items[slot->second].File().Path());
                    }
                    RaiseFoundFiles(path);
                }
            }
            if (cancel_) return false;
        }
        for (auto sub = folders.rbegin(); sub != folders.rend(); ++sub) pending.push_back(Join(folder, *sub));
        if (cancel_) return false;
    }
    return true;
}

void SyncSchemes::GetSchemeList(const std::string& remotePath, const std::string& localPath) {
    try {
        cancel_ = false;
        remotePath_ = remotePath;
        localPath_ = localPath;
        Side remote;
        Side local;
        remote.root = remoteRoot_ = ScanRoot(remotePath);
        local.root = localRoot_ = ScanRoot(localPath);
        if (fs_->FolderExists(remote.root) && !Scan(remote)) return;
        if (fs_->FolderExists(local.root) && !Scan(local)) return;

        const std::string unreadableOtherSide = "The folder that would hold its copy on the other side could not be read";
        std::vector<bool> paired(local.items.size(), false);
        for (std::size_t r = 0; r < remote.items.size(); ++r) {
            SchemeFileItem R = remote.items[r];
            auto found = local.byPath.find(remote.folded[r]);
            if (found == local.byPath.end()) {
                if (local.CouldNotRead(remote.folded[r]))
                    AddError(R, unreadableOtherSide);
                else
                    newerRemote_.Add(R, R.Key());
                continue;
            }
            paired[found->second] = true;
            SchemeFileItem L = local.items[found->second];
            L.setOtherFile(R.File());
            R.setOtherFile(L.File());
            // Whole seconds: finer differences are not a newer scheme.
            auto localTime = L.File().Modified().tv_sec;
            auto remoteTime = R.File().Modified().tv_sec;
            if (localTime > remoteTime)
                newerLocal_.Add(L, L.Key());
            else if (localTime == remoteTime)
                synced_.Add(L, L.Key());
            else
                newerRemote_.Add(R, R.Key());
        }
        for (std::size_t l = 0; l < local.items.size(); ++l) {
            if (paired[l]) continue;
            if (remote.CouldNotRead(local.folded[l]))
                AddError(local.items[l], unreadableOtherSide);
            else
                newerLocal_.Add(local.items[l], local.items[l].Key());
        }
    } catch (...) {
        // Trapped: the lists keep what was sorted so far.
    }
}

SyncSchemes::FolderListing* SyncSchemes::Listing(const std::string& folder, int* errnoOut) {
    auto found = listings_.find(folder);
    if (found != listings_.end()) return found->second.get();
    std::vector<std::string> files;
    std::vector<std::string> folders;
    if (!fs_->ListFolder(folder, files, folders, errnoOut)) return nullptr;
    auto listing = std::make_unique<FolderListing>();
    for (const auto& name : files) listing->Add(name);
    return (listings_[folder] = std::move(listing)).get();
}

void SyncSchemes::CommitPending() {
    if (pending_.empty()) return;
    std::vector<std::string> errors = fs_->CommitPending(pending_);
    for (std::size_t i = 0; i < errors.size(); ++i) {
        // One entry per scheme, for the first of its files that failed.
        if (!errors[i].empty() && (i == 0 || !(pendingItems_[i] == pendingItems_[i - 1]) || errors[i - 1].empty()))
            AddError(pendingItems_[i], errors[i]);
    }
    pendingItems_.clear();
    pendingDestinations_.clear();
}

void SyncSchemes::Sync() {
    listings_.clear();
    try {
        long total = 0;
        for (const auto* list : {&newerLocal_, &newerRemote_})
            for (long i = 1; i <= list->Count(); ++i)
                if (list->Item(i).SyncOptions() != syncIgnore) ++total;
        long done = 0;
        for (auto* list : {&newerLocal_, &newerRemote_}) {
            for (long i = 1; i <= list->Count() && !cancel_; ++i) {
                SchemeFileItem item = list->Item(i);
                if (item.SyncOptions() != syncUpdate && item.SyncOptions() != syncRevert) continue;
                // The share of the chosen schemes already done when this one starts.
                auto progress = static_cast<std::int16_t>(total > 0 ? done * 100 / total : 0);
                ++done;
                SyncItem(item, list == &newerLocal_, progress);
                // Bounds what a crash could leave behind as hidden temporary
                // files. (Batches of 4,096 measured slower than 512 on ext4:
                // fewer flushes, but each waits for far more at once.)
                if (pending_.size() >= kCopiesPerFlush) CommitPending();
            }
        }
    } catch (...) {
    }
    try {
        CommitPending();
    } catch (...) {
    }
    listings_.clear();
}

void SyncSchemes::SyncItem(const SchemeFileItem& item, bool fromLocalList, std::int16_t progress) {
    try {
        const std::string& otherRoot = fromLocalList ? remoteRoot_ : localRoot_;
        if (otherRoot.empty() || item.File().IsNull()) {
            AddError(item, "No folder to copy to or from");
            return;
        }
        const std::string ownFolder = item.File().ParentFolder();
        const std::string base = BaseName(item.File().Name());
        const std::string otherFolder = ResolveFolder(otherRoot, FolderPart(item.RelativePath()));
        const bool update = item.SyncOptions() == syncUpdate;
        const std::string& source = update ? ownFolder : otherFolder;
        const std::string& destination = update ? otherFolder : ownFolder;
        if (update && !fs_->FolderExists(destination)) MakeFolders(destination);
        // The destination as a folder path (trailing separator), ready for a file name.
        RaiseCopyFiles(Join(source, base), AsFolder(destination), progress);
        std::string error;
        if (!CopyFamily(item, source, base, destination, error)) AddError(item, error);
    } catch (const Error& e) {
        AddError(item, e.Description());
    } catch (const std::exception& e) {
        AddError(item, e.what());
    }
}

// Family members are the files named base + "." + one of the copied
// extensions. A name with a further full stop is not a member: so
// "Site.SXS~0000.BAK", a backup, never lands on the other side as "Site.BAK".
bool SyncSchemes::CopyFamily(const SchemeFileItem& item, const std::string& sourceFolder, const std::string& base,
                             const std::string& destinationFolder, std::string& error) {
    int err = 0;
    const FolderListing* listing = Listing(sourceFolder, &err);
    if (!listing) {
        if (err == ENOENT || err == ENOTDIR) return true;  // nothing there to copy
        error = "Unable to read folder " + sourceFolder + ": " + std::strerror(err);
        return false;
    }
    auto family = listing->byBase.find(Text::FoldCase(base));
    if (family == listing->byBase.end()) return true;
    const auto& extensions = CopiedExtensions();
    struct Member {
        std::size_t order;
        std::string name;    // as in the source folder
        std::string target;  // base + "." + the extension in upper case
        bool operator<(const Member& other) const { return std::tie(order, name) < std::tie(other.order, other.name); }
    };
    std::vector<Member> members;
    for (const auto& name : family->second) {
        std::string extension = Text::ToUpper(std::string_view(name).substr(name.rfind('.') + 1));
        auto found = std::find(extensions.begin(), extensions.end(), extension);
        if (found != extensions.end())
            members.push_back(Member{static_cast<std::size_t>(found - extensions.begin()), name, base + "." + extension});
    }
    if (members.empty()) return true;
    std::sort(members.begin(), members.end());

    if (!fs_->FolderExists(destinationFolder)) {
        MakeFolders(destinationFolder);
        listings_.erase(destinationFolder);
    }
    FolderListing none;
    FolderListing* listed = Listing(destinationFolder, nullptr);
    FolderListing& existing = listed ? *listed : none;

    // A write-protected file at the destination fails the whole family before
    // anything is copied, so no half of it is replaced.
    if (!fs_->ReplaceReadOnly()) {
        for (const auto& member : members) {
            const std::string* present = existing.Find(member.target);
            const std::string destination = Join(destinationFolder, present ? *present : member.target);
            if (present && fs_->IsWriteProtected(destination)) {
                error = "Unable to replace " + destination + ": the file is read-only";
                return false;
            }
        }
    }
    for (const auto& member : members) {
        if (cancel_) return true;
        const std::string source = Join(sourceFolder, member.name);
        // A file already there keeps its spelling; a new one is named base.EXT.
        const std::string* present = existing.Find(member.target);
        const std::string destination = Join(destinationFolder, present ? *present : member.target);
        // Two scheme files of one family (Site.SXS, Site.SXS1) bring the same
        // files: the second need not copy what is already on its way.
        if (source == destination || pendingDestinations_.count(destination)) continue;
        const std::size_t pendingBefore = pending_.size();
        switch (fs_->CopyFile(source, destination, true, error, nullptr, &pending_)) {
            case SchemeFileSystem::CopyResult::Copied:
                break;
            case SchemeFileSystem::CopyResult::CopiedTimesNotSet:
                RaiseCopyFilesError(source, destination);
                break;
            case SchemeFileSystem::CopyResult::SourceMissing:
                continue;  // gone since the folder was read: nothing to copy
            case SchemeFileSystem::CopyResult::Failed:
                return false;
        }
        if (pending_.size() > pendingBefore) {
            pendingItems_.push_back(item);
            pendingDestinations_.insert(destination);
        }
        if (!present) existing.Add(member.target);
    }
    return true;
}

// The other side's folder for a relative folder, each part matched to an
// existing folder ignoring letter case, so "/Sub/" finds "/SUB".
std::string SyncSchemes::ResolveFolder(const std::string& root, const std::string& relativeFolder) {
    std::string path = root;
    bool searching = true;
    std::vector<std::string> files;
    std::vector<std::string> folders;
    std::size_t start = 0;
    while (start < relativeFolder.size()) {
        std::size_t end = relativeFolder.find('/', start);
        if (end == std::string::npos) end = relativeFolder.size();
        std::string part = relativeFolder.substr(start, end - start);
        start = end + 1;
        if (part.empty()) continue;
        std::string next = Join(path, part);
        if (searching) {
            // Where names are matched ignoring case the folder is found as
            // asked, but it keeps the spelling it has on disk.
            const std::string spelling = fs_->FolderSpelling(next);
            const std::string* match = &spelling;
            if (spelling.empty() && fs_->ListFolder(path, files, folders)) match = FindFolder(folders, part);
            if (match && !match->empty())
                next = Join(path, *match);
            else
                searching = false;  // nothing below a missing folder exists either
        }
        path = std::move(next);
    }
    return path;
}

}  // namespace meridex
