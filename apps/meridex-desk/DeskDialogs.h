#pragma once
#include <string>

#include <meridex/frame/XmlNode.h>

class QWidget;

namespace meridex {
class AddressBook;
class CommsProfileManager;
class ErrorHandler;
class Logger;
class Settings;
}  // namespace meridex

namespace meridex::desk {

/// The library dialogs the desk opens, in one place: the desk reaches them only through this seam, so
/// tests can see which dialog a command asked for and with which files, whether or not that dialog
/// exists yet in the library linked in.
class DeskDialogs {
public:
    virtual ~DeskDialogs() = default;
    /// The profile editor over settings; returns when it has closed (it saves the settings itself).
    virtual void ShowProfileEditor(Settings& settings, QWidget* owner) = 0;
    /// The address book editor on these files.
    virtual void OpenAddressBook(const std::string& addressBookFile, const std::string& commsMapFile,
                                 const std::string& schemesFolder) = 0;
    /// The PROFILE element of the site chosen, or null.
    virtual XmlNode SelectSiteCommsProfiles(AddressBook& addressBook) = 0;
    /// A new device profile, or null when none was made.
    virtual XmlNode SelectNewCommsDevice() = 0;
    /// The map's own profile of the device chosen, or null.
    virtual XmlNode SelectCommsDevice(CommsProfileManager& map) = 0;
    /// The editor of the whole communications map on commsMapFile.
    virtual void EditCommunicationsMap(const std::string& commsMapFile) = 0;
    /// The firmware dialog for logger with the files of firmwareFolder, failures logged through errors;
    /// returns when it has closed.
    virtual void UpgradeFirmware(Logger& logger, ErrorHandler& errors, const std::string& firmwareFolder,
                                 QWidget* owner) = 0;
};

}  // namespace meridex::desk
