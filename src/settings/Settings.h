#pragma once
#include <meridex/Export.h>
#include <concepts>
#include <functional>
#include <string>
#include <vector>
#include <string_view>

#include <meridex/frame/Numeric.h>
#include <meridex/frame/SharedFile.h>
#include <meridex/frame/UnreadableFiles.h>
#include <meridex/frame/XMLFactoryLease.h>
#include <meridex/frame/XmlNode.h>
#include <meridex/settings/Profile.h>
#include <meridex/settings/Profiles.h>

namespace meridex {

/// The settings store: one V4SETTINGS document in memory, its keys (child
/// elements holding text), its profile collection (PROFILES, always the
/// root's last child) and the current profile. The caller names the file.
class MERIDEX_EXPORT Settings {
public:
    /// Empty settings: no keys, no profiles, no current profile.
    Settings();
    Settings(const Settings&) = delete;
    Settings& operator=(const Settings&) = delete;

    /// The profile collection (the PROFILES element).
    ::meridex::Profiles Profiles() const { return profiles_; }
    /// Null when there is no current profile.
    Profile CurrentProfile() const { return current_; }
    /// Keeps the profile and stores its key as CURRENT_PROFILE (always, an
    /// empty key included).
    void setCurrentProfile(const Profile& profile);

    /// True when key can name a setting: one valid element name, not PROFILES.
    static bool IsKey(std::string_view key);

    /// A key is an element name. A missing key gives the default, which is
    /// then stored unless it is empty or "0" (the document helper's rule); a
    /// key that is not a valid element name gives the default.
    std::string GetString(std::string_view key, std::string_view defaultValue) const;
    /// Stores by the set rule: with saveNull the text is always written;
    /// without, "" and "0" remove the key and an unchanged text is not
    /// rewritten. Invalid keys and PROFILES (the collection) are left alone.
    void SetString(std::string_view key, std::string_view newValue, bool saveNull = false);
    /// As SetString, for an integer stored as decimal text.
    template <std::integral T>
        requires(!std::same_as<T, bool>)
    void SetString(std::string_view key, T newValue, bool saveNull = false) {
        SetString(key, std::string_view(Numeric::ToText(static_cast<long long>(newValue))),
                  saveNull);
    }
    /// True when the leading number of the text is not zero ("TRUE" is false).
    bool GetBoolean(std::string_view key, bool defaultValue) const;
    /// Stores "-1" or "0" by the set rule, so false without saveNull removes
    /// the key.
    void SetBoolean(std::string_view key, bool newValue, bool saveNull = false);

    /// Reads the file and completes its profiles from the feature catalogue.
    /// A missing, unreadable or foreign file gives empty settings; its path is
    /// remembered either way. True when the file was read.
    bool LoadSettings(const std::string& settingsFile);
    /// Writes the V4SETTINGS element's XML and CR LF to newSettingsFile (when
    /// not empty, it becomes the remembered path) or the remembered path,
    /// atomically. A file that could not be read is first kept beside itself.
    /// Failures are not reported beyond the result: true when written.
    bool SaveSettings(const std::string& newSettingsFile = {});

    /// Opens the profile editor modally over ownerWindow (null: no owner), then saves to the
    /// remembered path when there is one. Always false; the result carries no meaning. The core has no
    /// GUI: the editor is the one the dialog library installs with setProfileEditorOpener (the Qt
    /// dialogs take ownerWindow as a QWidget*). With no editor installed the call shows nothing and
    /// saves nothing.
    bool ShowProfileEditor(void* ownerWindow = nullptr);
    /// What opens the profile editor over settings and returns when it has closed.
    using ProfileEditorOpener = std::function<void(Settings& settings, void* ownerWindow)>;
    /// Installs the profile editor of this process (an empty opener removes it).
    static void setProfileEditorOpener(ProfileEditorOpener opener);

    /// The remembered settings file ("" until one is named).
    const std::string& SettingsFile() const noexcept { return path_; }
    /// The copy of someone else's version the last save kept beside the file
    /// ("NAME.conflict-..."), or "" when it kept none.
    const std::string& ConflictCopy() const noexcept { return shared_.ConflictCopy(); }
    /// The V4SETTINGS element.
    const XmlNode& Root() const noexcept { return root_; }

private:
    void Reset();
    void CompleteProfiles() const;

    XMLFactoryLease lease_;
    std::string path_;
    /// Files that existed but could not be read; each is copied aside before a
    /// save replaces it.
    UnreadableFiles unreadable_;
    /// The version loaded, so a save merges what others saved since.
    SharedFile shared_;
    XmlNode root_;
    ::meridex::Profiles profiles_;
    Profile current_{XmlNode{}};
};

}  // namespace meridex
