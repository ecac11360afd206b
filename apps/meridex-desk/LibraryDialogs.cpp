#include "LibraryDialogs.h"

#include <meridex/settings/Settings.h>
#include <meridex/ui/firmware/frmFirmware.h>
#include <meridex/ui/settings/V4Dialogs.h>

namespace meridex::desk {

ui::V4Dialogs LibraryDialogs::Dialogs() const {
    ui::V4Dialogs dialogs(ui_);
    dialogs.setCommsSources(ports_, store_);
    dialogs.setErrorHandler(errors_);
    return dialogs;
}

void LibraryDialogs::ShowProfileEditor(Settings& settings, QWidget* owner) {
    settings.ShowProfileEditor(owner);
}

void LibraryDialogs::OpenAddressBook(const std::string& addressBookFile, const std::string& commsMapFile,
                                     const std::string& schemesFolder) {
    Dialogs().OpenAddressBook(addressBookFile, commsMapFile, schemesFolder);
}

XmlNode LibraryDialogs::SelectSiteCommsProfiles(AddressBook& addressBook) {
    return Dialogs().SelectSiteCommsProfiles(addressBook);
}

XmlNode LibraryDialogs::SelectNewCommsDevice() { return Dialogs().SelectNewCommsDevice(); }

XmlNode LibraryDialogs::SelectCommsDevice(CommsProfileManager& map) { return Dialogs().SelectCommsDevice(map); }

void LibraryDialogs::EditCommunicationsMap(const std::string& commsMapFile) {
    Dialogs().EditCommunicationsMap(commsMapFile);
}

void LibraryDialogs::UpgradeFirmware(Logger& logger, ErrorHandler& errors, const std::string& firmwareFolder,
                                     QWidget* owner) {
    ui::UpgradeFirmwareForm::ShowUpgradeFirmware(&logger, &errors, firmwareFolder, owner, ui_);
}

}  // namespace meridex::desk
