#include <meridex/comms/ImportCommsProfiles.h>

#include <algorithm>
#include <exception>
#include <filesystem>
#include <system_error>
#include <utility>

#include <meridex/comms/XmlSchemeFile.h>
#include <meridex/frame/Utf8.h>
#include <meridex/frame/FileOps.h>
#include <meridex/frame/Numeric.h>
#include <meridex/frame/Text.h>

namespace meridex {

namespace fs = std::filesystem;

namespace {

constexpr char kSeparator = static_cast<char>(fs::path::preferred_separator);

bool IsSchemeFileName(const std::string& name) {
    return name.size() >= 4 && Text::EqualsIgnoreCase(std::string_view(name).substr(name.size() - 4), ".xml");
}

// Files and sub-folders of one folder, each sorted by name; empty when the
// folder cannot be listed.
std::pair<std::vector<std::string>, std::vector<std::string>> ListFolder(const std::string& folder) {
    std::vector<std::string> files;
    std::vector<std::string> folders;
    std::error_code error;
    fs::directory_iterator it(utf8::ToPath(folder), fs::directory_options::skip_permission_denied, error);
    for (const fs::directory_iterator end; !error && it != end; it.increment(error)) {
        const fs::directory_entry& entry = *it;
        const std::string name = utf8::FromPath(entry.path().filename());
        std::error_code statusError;
        if (entry.is_symlink(statusError)) {
            if (entry.is_regular_file(statusError) && IsSchemeFileName(name)) files.push_back(name);
        } else if (entry.is_directory(statusError)) {
            folders.push_back(name);
        } else if (entry.is_regular_file(statusError) && IsSchemeFileName(name)) {
            files.push_back(name);
        }
    }
    std::sort(files.begin(), files.end());
    std::sort(folders.begin(), folders.end());
    return {std::move(files), std::move(folders)};
}

}  // namespace

void ImportCommsProfiles::Message(const std::string& text) const {
    if (events_ != nullptr) events_->Message(text);
}

bool ImportCommsProfiles::CancelRequested() {
    if (!cancelled_ && events_ != nullptr && events_->CancelRequested()) cancelled_ = true;
    return cancelled_;
}

void ImportCommsProfiles::ImportSchemes(const std::string& rootPath, const SiteGroup& rootSiteGroup) {
    XmlSchemeFile scheme;
    ImportSchemes(rootPath, rootSiteGroup, scheme);
}

void ImportCommsProfiles::ImportSchemes(const std::string& rootPath, const SiteGroup& rootSiteGroup,
                                        Scheme& scheme) {
    schemes_.clear();
    sitesAdded_ = 0;
    cancelled_ = false;
    root_ = rootSiteGroup;

    // Paths are reported with this system's own separator, so Windows keeps its "\". Where "/" is
    // the separator, a "\" in rootPath separates folders too; the replacement keeps every length,
    // so scheme texts still begin with a text as long as rootPath.
    std::string folder = rootPath;
    if (kSeparator == '/') std::replace(folder.begin(), folder.end(), '\\', '/');
    // A trailing separator of either kind becomes the system's, so both forms find the same paths.
    if (!folder.empty() && FileOps::IsSeparator(folder.back())) folder.back() = kSeparator;
    else if (!folder.empty()) folder += kSeparator;
    if (!folder.empty()) FindSchemes(folder);

    const std::size_t count = schemes_.size();
    for (std::size_t i = 1; i <= count && !CancelRequested(); ++i) {
        try {
            ProcessScheme(scheme, schemes_[i - 1], rootPath);
        } catch (const std::exception&) {
            // A scheme that cannot be processed is skipped like one that
            // cannot be opened; the import goes on.
        }
        if (events_ != nullptr) events_->Progress(Numeric::ToInt16(static_cast<double>(i) * 100.0 / count));
    }
    root_ = SiteGroup::None();
    if (events_ != nullptr) events_->Complete();
}

void ImportCommsProfiles::FindSchemes(const std::string& root) {
    // Depth first without recursion, so a deep tree cannot exhaust the stack:
    // the stack holds the folders still to search, next one on top.
    std::vector<std::string> pending{root};
    while (!pending.empty() && !CancelRequested()) {
        const std::string folder = std::move(pending.back());
        pending.pop_back();
        auto [files, folders] = ListFolder(folder);
        for (const auto& name : files) {
            schemes_.push_back(folder + name);
            Message("Scheme Found: " + schemes_.back());
        }
        for (auto name = folders.rbegin(); name != folders.rend(); ++name)
            pending.push_back(folder + *name + kSeparator);
    }
}

void ImportCommsProfiles::ProcessScheme(Scheme& scheme, const std::string& path, const std::string& rootPath) {
    if (!scheme.Open(path)) return;
    const std::string text = scheme.SchemeText();
    Message("Processing Scheme: " + text);

    std::vector<XmlNode> dialable;
    for (const XmlNode& profile : scheme.CommsProfiles().SelectAll("PROFILE")) {
        const std::string type = profile.SelectSingle("TYPE").Text();
        const std::string method = profile.SelectSingle("METHOD").Text();
        if ((type == "RS232" && method != "DIRECT") || type == "IP") dialable.push_back(profile);
    }
    if (dialable.empty()) return;

    const SiteGroup group = TargetGroup(text, rootPath);
    for (const XmlNode& profile : dialable) {
        const XmlNode name = profile.SelectSingle("NAME");
        // The missing closing parenthesis of a named profile is the system's own.
        const std::string device = name.IsNull() ? std::string("Unknown Device)") : name.Text();
        Site site;
        site.setName(text + " (" + device);
        site.setProfile(profile);
        if (group.AddSite(site)) ++sitesAdded_;
    }
}

SiteGroup ImportCommsProfiles::TargetGroup(const std::string& schemeText, const std::string& rootPath) const {
    std::string_view rest = schemeText.size() > rootPath.size() ? std::string_view(schemeText).substr(rootPath.size())
                                                                : std::string_view();
    if (!rest.empty() && FileOps::IsSeparator(rest.front())) rest.remove_prefix(1);
    if (!rest.empty() && FileOps::IsSeparator(rest.back())) rest.remove_suffix(1);

    SiteGroup group = root_;
    while (!rest.empty()) {
        const auto end = std::find_if(rest.begin(), rest.end(), FileOps::IsSeparator);
        const std::string_view name = rest.substr(0, static_cast<std::size_t>(end - rest.begin()));
        rest.remove_prefix(std::min(rest.size(), name.size() + 1));
        if (name.empty()) continue;
        SiteGroup child = group.Group(name);
        if (child.IsNull()) {
            SiteGroup created;
            created.setName(name);
            if (!group.AddGroup(created)) return group;
            // Found again through this group, so the new view shares its key index.
            child = group.Group(created.Key());
        }
        group = child;
    }
    return group;
}

}  // namespace meridex
