#pragma once
#include <meridex/Export.h>
#include <cstddef>
#include <string>
#include <vector>

#include <meridex/comms/ImportEvents.h>
#include <meridex/addressbook/SiteGroup.h>
#include <meridex/comms/Scheme.h>

namespace meridex {

/// Turns a folder tree of schemes into address-book sites: one site per
/// profile that can be dialled from anywhere (phone modems, TYPE "RS232" with
/// a METHOD other than "DIRECT", and every TYPE "IP"), in groups that mirror
/// the scheme's folders below the root. The scheme text is the scheme's full
/// file path, so the last group level is named after the file.
///
/// Discovery is depth first: a folder's "*.XML" files (extension matched
/// ignoring case), then each sub-folder in turn. Within a folder, files and
/// sub-folders are taken in byte order of their names, so a run is
/// repeatable. Both "/" and "\" separate folders. Symbolic links to folders
/// are not followed (no loops); folders that cannot be listed are skipped
/// silently, like scheme files that cannot be opened.
///
/// Everything runs synchronously on the caller's thread; events go to the
/// receiver given. A receiver that asks to cancel stops the import between
/// folders or between schemes: sites already added stay, and Complete is
/// raised all the same (Cancelled() then answers true).
class MERIDEX_EXPORT ImportCommsProfiles {
public:
    /// An importer reporting to events (not owned; null for none).
    explicit ImportCommsProfiles(ImportEvents* events = nullptr) : events_(events) {}

    /// Sets the receiver of the events (not owned; null for none).
    void setEvents(ImportEvents* events) { events_ = events; }

    /// Imports with the open XML scheme reader.
    void ImportSchemes(const std::string& rootPath, const SiteGroup& rootSiteGroup);
    /// Imports with the given scheme reader, reused for every file.
    void ImportSchemes(const std::string& rootPath, const SiteGroup& rootSiteGroup, Scheme& scheme);

    /// The scheme files found by the last run, in discovery order.
    const std::vector<std::string>& SchemeList() const noexcept { return schemes_; }
    /// The number of sites the last run added.
    std::size_t SitesAdded() const noexcept { return sitesAdded_; }
    /// True when the last run was cancelled by its receiver.
    bool Cancelled() const noexcept { return cancelled_; }

private:
    void FindSchemes(const std::string& folder);
    void ProcessScheme(Scheme& scheme, const std::string& path, const std::string& rootPath);
    SiteGroup TargetGroup(const std::string& schemeText, const std::string& rootPath) const;
    bool CancelRequested();
    void Message(const std::string& text) const;

    ImportEvents* events_ = nullptr;
    std::vector<std::string> schemes_;
    SiteGroup root_ = SiteGroup::None();
    std::size_t sitesAdded_ = 0;
    bool cancelled_ = false;
};

}  // namespace meridex
