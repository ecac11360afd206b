#include "settings/Settings.h"

#include <algorithm>
#include <filesystem>
#include <vector>

#include "frame/FileOps.h"
#include "frame/Text.h"
#include "frame/XMLOps.h"
#include "frame/XmlDocument.h"
#include "settings/KeyedElements.h"
#include "settings/V4StandardProfiles.h"

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

bool SameFile(const std::string& a, const std::string& b) {
    if (a == b) return true;
    std::error_code ec;
    return fs::equivalent(a, b, ec) && !ec;
}

// One catalogue feature with what it gives each kind of loaded profile.
struct CatalogueFeature {
    Feature feature;
    std::string foldedKey;
    bool administrator;
    bool lockdown;
    bool other;
};

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
    unreadablePath_.clear();
    try {
        if (FileOps::FileExists(settingsFile)) {
            const XmlDocument document = XmlDocument::Load(settingsFile);
            const XmlNode root = document.DocumentNode().SelectSingle(kRoot);
            if (root) {
                XmlNode profiles = root.SelectSingle(kProfiles);
                if (!profiles) profiles = XMLOps::CreateXMLElement(kProfiles);
                // Appending moves an existing PROFILES behind every key.
                if (root.AppendChild(profiles)) {
                    root_ = root;
                    profiles_.setXMLNode(profiles);
                    current_ = Profile(XmlNode{});
                    loaded = true;
                    CompleteProfiles();
                }
            }
            // Whatever was there is not a settings document we can read: a
            // save must not replace it before it has been kept.
            if (!loaded) unreadablePath_ = settingsFile;
        }
    } catch (...) {
        loaded = false;
    }
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
    for (XmlNode element = administrator.XMLNode().FirstChildElement("FEATURE"); element;
         element = element.NextSiblingElement("FEATURE")) {
        Feature feature(element);
        const std::string key = feature.Key();
        catalogue.push_back({feature, Text::FoldCase(key), feature.Available(),
                             lockdown.FeatureAvailable(key), standard.FeatureAvailable(key)});
    }

    std::vector<std::string> present;
    for (XmlNode element = profiles_.XMLNode().FirstChildElement("PROFILE"); element;
         element = element.NextSiblingElement("PROFILE")) {
        const Profile profile(element);
        const std::string profileKey = profile.Key();
        present.clear();
        KeyedElements::AppendFoldedKeys(element, "FEATURE", present);
        std::sort(present.begin(), present.end());
        for (const CatalogueFeature& entry : catalogue) {
            if (std::binary_search(present.begin(), present.end(), entry.foldedKey)) continue;
            const Feature added = entry.feature.Clone();
            added.setAvailable(profileKey == "ADMINISTRATOR" ? entry.administrator
                               : profileKey == "LOCKDOWN"    ? entry.lockdown
                                                             : entry.other);
            profile.Add(added);
        }
    }
}

bool Settings::KeepUnreadableBefore(const std::string& target) {
    if (unreadablePath_.empty() || !SameFile(unreadablePath_, target)) return true;
    if (FileOps::KeepUnreadableFile(unreadablePath_).empty()) {
        // Nothing to keep is fine; a copy that failed is not.
        std::error_code ec;
        const auto size = fs::file_size(unreadablePath_, ec);
        if (!ec && size > 0) return false;
    }
    unreadablePath_.clear();
    return true;
}

bool Settings::SaveSettings(const std::string& newSettingsFile) {
    try {
        if (!newSettingsFile.empty()) path_ = newSettingsFile;
        if (path_.empty() || IsReadOnlyFile(path_)) return false;
        if (!KeepUnreadableBefore(path_)) return false;
        std::string text = root_.Xml();
        text += "\r\n";
        return FileOps::WriteFileAtomic(path_, text);
    } catch (...) {
        return false;
    }
}

}  // namespace meridex
