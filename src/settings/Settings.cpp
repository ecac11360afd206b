#include <meridex/settings/Settings.h>

#include <algorithm>
#include <filesystem>
#include <vector>

#include <meridex/frame/Utf8.h>
#include <meridex/frame/FileOps.h>
#include <meridex/frame/LockNote.h>
#include <meridex/frame/Text.h>
#include <meridex/frame/ThreeWayMerge.h>
#include <meridex/frame/XMLOps.h>
#include <meridex/frame/XmlDocument.h>
#include <meridex/frame/XmlSave.h>
#include <meridex/settings/KeyedElements.h>
#include <meridex/settings/V4StandardProfiles.h>

namespace meridex {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view kRoot = "V4SETTINGS";
constexpr std::string_view kProfiles = "PROFILES";
constexpr std::string_view kCurrentProfile = "CURRENT_PROFILE";

// A key is one element name: a path ("A/B") or a wild card would reach into
// other elements, and PROFILES is the collection, not a setting.
bool IsSettingKey(std::string_view key) {
    return !key.empty() && key.find_first_of("/*") == std::string_view::npos && key != kProfiles;
}

bool IsReadOnlyFile(const fs::path& path) {
    std::error_code ec;
    const fs::file_status status = fs::status(path, ec);
    if (ec || !fs::is_regular_file(status)) return false;
    return (status.permissions() & fs::perms::owner_write) == fs::perms::none;
}


// One catalogue feature with what it gives each kind of loaded profile, and
// the administrator's feature made available and unavailable once, to be cloned.
struct CatalogueFeature {
    Feature available;
    Feature unavailable;
    bool administrator;
    bool lockdown;
    bool other;
};

// Case-folds key into folded, reusing its buffer: loading folds every key of
// every profile, and plain ASCII keys need no allocation.
void FoldInto(std::string_view key, std::string& folded) {
    const bool ascii = std::all_of(key.begin(), key.end(),
                                   [](char c) { return static_cast<unsigned char>(c) < 0x80; });
    if (!ascii) {
        folded = Text::FoldCase(key);
        return;
    }
    folded.assign(key);
    for (char& c : folded) {
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    }
}

}  // namespace

Settings::Settings() { Reset(); }

bool Settings::IsKey(std::string_view key) {
    XMLFactoryLease lease;
    return IsSettingKey(key) && !XMLOps::CreateXMLElement(key).IsNull();
}

void Settings::Reset() {
    root_ = XMLOps::CreateXMLElement(kRoot);
    profiles_ = ::meridex::Profiles();
    root_.AppendChild(profiles_.XMLNode());
    current_ = Profile(XmlNode{});
}

namespace {

Settings::ProfileEditorOpener& InstalledProfileEditor() {
    static Settings::ProfileEditorOpener opener;
    return opener;
}

}  // namespace

void Settings::setProfileEditorOpener(ProfileEditorOpener opener) { InstalledProfileEditor() = std::move(opener); }

bool Settings::ShowProfileEditor(void* ownerWindow) {
    // Copied, so an editor that installs another opener while it is open cannot pull the running one away.
    const ProfileEditorOpener opener = InstalledProfileEditor();
    if (!opener) return false;
    LockNote note;  // tells a second editor who has the file open
    if (!path_.empty() && !note.Acquire(path_)) return false;
    try {
        opener(*this, ownerWindow);
    } catch (...) {
        // The editor reports its own failures; whatever escapes it still leaves a document to save.
    }
    if (!path_.empty()) SaveSettings();
    return false;
}

void Settings::setCurrentProfile(const Profile& profile) {
    current_ = profile;
    SetString(kCurrentProfile, profile.Key(), true);
}

std::string Settings::GetString(std::string_view key, std::string_view defaultValue) const {
    if (!IsSettingKey(key)) return std::string(defaultValue);
    return XMLOps::GetXMLValue(root_, key, defaultValue);
}

void Settings::SetString(std::string_view key, std::string_view newValue, bool saveNull) {
    if (!IsSettingKey(key)) return;
    XMLOps::SetXMLValue(root_, key, newValue, saveNull);
}

bool Settings::GetBoolean(std::string_view key, bool defaultValue) const {
    return Numeric::LeadingNumber(GetString(key, defaultValue ? "-1" : "0")) != 0;
}

void Settings::SetBoolean(std::string_view key, bool newValue, bool saveNull) {
    SetString(key, newValue ? "-1" : "0", saveNull);
}

bool Settings::LoadSettings(const std::string& settingsFile) {
    bool loaded = false;
    try {
        shared_.NotRead(settingsFile);
        std::string bytes;
        if (FileOps::FileExists(settingsFile)) {
            const XmlDocument document = shared_.Read(settingsFile, bytes) ? XmlDocument::Parse(bytes) : XmlDocument();
            const XmlNode root = document.DocumentNode().SelectSingle(kRoot);
            if (root) {
                XmlNode profiles = root.SelectSingle(kProfiles);
                // Already last (as every file saved here has it): moving it
                // would change nothing but cost a walk of every profile.
                const bool last = profiles && profiles.NextSibling().IsNull();
                if (!profiles) profiles = XMLOps::CreateXMLElement(kProfiles);
                // Appending moves an existing PROFILES behind every key.
                if (last || root.AppendChild(profiles)) {
                    root_ = root;
                    profiles_.setXMLNode(profiles);
                    current_ = Profile(XmlNode{});
                    loaded = true;
                    CompleteProfiles();
                    shared_.setBase(root_.Xml());  // merges compare with the completed profiles
                }
            }
            // Whatever was there is not a settings document we can read: a
            // save must not replace it before it has been kept.
            // Remembered across later loads of other files, so a save to this
            // path, whenever it comes, keeps the old file first.
            if (!loaded) unreadable_.Remember(settingsFile);
        }
    } catch (...) {
        loaded = false;
    }
    if (loaded) unreadable_.Forget(settingsFile);
    if (!loaded) Reset();
    path_ = settingsFile;
    try {
        const std::string key = GetString(kCurrentProfile, "");
        if (!key.empty()) current_ = profiles_.Item(key);
    } catch (...) {
    }
    return loaded;
}

// Every loaded profile gains the catalogue features it lacks: administrator
// values for "ADMINISTRATOR", lockdown values for "LOCKDOWN" (exact case),
// default values for any other. The standard profiles are built once.
void Settings::CompleteProfiles() const {
    const Profile administrator = V4StandardProfiles::GetDefaultAdministratorProfile();
    const Profile lockdown = V4StandardProfiles::GetDefaultLockdownProfile();
    const Profile standard = V4StandardProfiles::GetDefaultProfile();

    std::vector<CatalogueFeature> catalogue;
    // Folded key and catalogue position, sorted, to mark what a profile has.
    std::vector<std::pair<std::string, std::size_t>> positions;
    for (XmlNode element = administrator.XMLNode().FirstChildElement("FEATURE"); element;
         element = element.NextSiblingElement("FEATURE")) {
        Feature feature(element);
        const std::string key = feature.Key();
        positions.emplace_back(Text::FoldCase(key), catalogue.size());
        Feature unavailable = feature.Clone();
        unavailable.setAvailable(false);
        catalogue.push_back({feature, unavailable, feature.Available(), lockdown.FeatureAvailable(key),
                             standard.FeatureAvailable(key)});
    }
    std::sort(positions.begin(), positions.end());

    std::vector<bool> present(catalogue.size());
    std::string folded;
    const auto mark = [&](std::string_view key) {
        FoldInto(key, folded);
        const auto found = std::lower_bound(
            positions.begin(), positions.end(), folded,
            [](const auto& entry, const std::string& wanted) { return entry.first < wanted; });
        if (found != positions.end() && found->first == folded) present[found->second] = true;
    };
    for (XmlNode element = profiles_.XMLNode().FirstChildElement("PROFILE"); element;
         element = element.NextSiblingElement("PROFILE")) {
        const Profile profile(element);
        const std::string profileKey = profile.Key();
        std::fill(present.begin(), present.end(), false);
        KeyedElements::ForEachKey(element, "FEATURE", mark);
        for (std::size_t i = 0; i < catalogue.size(); ++i) {
            if (present[i]) continue;
            const CatalogueFeature& entry = catalogue[i];
            const bool available = profileKey == "ADMINISTRATOR" ? entry.administrator
                                   : profileKey == "LOCKDOWN"    ? entry.lockdown
                                                                 : entry.other;
            profile.Add((available ? entry.available : entry.unavailable).Clone());
        }
    }
}

bool Settings::SaveSettings(const std::string& newSettingsFile) {
    try {
        if (!newSettingsFile.empty()) path_ = newSettingsFile;
        // Refused before an unreadable file is kept, so a refusal leaves no copy.
        if (path_.empty() || IsReadOnlyFile(utf8::ToPath(path_))) return false;
        if (!unreadable_.KeepBeforeReplacing(path_)) return false;
        // References for everything above 127: read alike as UTF-8 and as windows-1252.
        const auto serialize = [this] { return XmlSave::AsciiXml(root_, false, "\r\n"); };
        const auto merge = [this](const std::string& base, const std::string& theirs) {
            ThreeWayMerge::Rules rules;
            rules.descend = [](std::string_view name) { return name == kProfiles || name == "PROFILE"; };
            return ThreeWayMerge::MergeDocuments(root_, base, theirs, rules);
        };
        return shared_.Save(path_, serialize, merge, "Settings:SaveSettings");
    } catch (...) {
        return false;
    }
}

}  // namespace meridex
