#pragma once
#include <filesystem>
#include <string>

namespace meridex {
class Settings;
}

namespace meridex::desk {

/// One workspace folder: the settings document, the address book, the communications map, the local
/// and remote scheme folders, the firmware folder and the error log, under the names the host
/// customarily gives them.
class Workspace {
public:
    /// The workspace in folder (nothing is created until Prepare).
    explicit Workspace(std::filesystem::path folder);

    /// $XDG_DATA_HOME/meridex/workspace, or ~/.local/share/meridex/workspace when XDG_DATA_HOME is unset.
    static std::filesystem::path DefaultFolder();
    /// The demo workspace new workspaces are made from: $MERIDEX_DEMO_DIR when set, else the one installed
    /// with the program (PREFIX/share/meridex/demo).
    static std::filesystem::path DemoFolder();

    /// Makes the folder ready: a folder that does not exist yet (or is empty) is filled from demo;
    /// missing subfolders are created. Nothing already there is replaced. False, with a reason in error,
    /// when the folder cannot be made.
    bool Prepare(const std::filesystem::path& demo, std::string* error = nullptr) const;

    /// The workspace folder.
    const std::filesystem::path& Folder() const noexcept { return folder_; }
    /// settings/V4Settings.xml
    std::filesystem::path SettingsFile() const { return folder_ / "settings" / "V4Settings.xml"; }
    /// AddressBook.xml
    std::filesystem::path AddressBookFile() const { return folder_ / "AddressBook.xml"; }
    /// CommsProfiles.xml
    std::filesystem::path CommsMapFile() const { return folder_ / "CommsProfiles.xml"; }
    /// firmware/
    std::filesystem::path FirmwareFolder() const { return folder_ / "firmware"; }
    /// ErrorLog.txt
    std::filesystem::path ErrorLogFile() const { return folder_ / "ErrorLog.txt"; }
    /// schemes/local, used unless the settings name another local scheme folder.
    std::filesystem::path DefaultLocalSchemes() const { return folder_ / "schemes" / "local"; }
    /// schemes/remote, the remote side the synchronisation window starts with.
    std::filesystem::path DefaultRemoteSchemes() const { return folder_ / "schemes" / "remote"; }

    /// The local scheme folder: V4SCHEMES_PATH of the settings when it names a folder that exists,
    /// else DefaultLocalSchemes (a path written on another PC must not send the desk elsewhere).
    std::filesystem::path LocalSchemes(const Settings& settings) const;

private:
    std::filesystem::path folder_;
};

}  // namespace meridex::desk
