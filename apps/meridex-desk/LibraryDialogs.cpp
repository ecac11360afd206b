#include "LibraryDialogs.h"

#include <meridex/settings/Settings.h>
#include <meridex/ui/settings/V4Dialogs.h>

namespace meridex::desk {

void LibraryDialogs::ShowProfileEditor(Settings& settings, QWidget* owner) {
    settings.ShowProfileEditor(owner);
}

void LibraryDialogs::OpenAddressBook(const std::string& addressBookFile, const std::string& commsMapFile,
                                     const std::string& schemesFolder) {
    ui::V4Dialogs(ui_).OpenAddressBook(addressBookFile, commsMapFile, schemesFolder);
}

XmlNode LibraryDialogs::SelectSiteCommsProfiles(AddressBook& addressBook) {
    return ui::V4Dialogs(ui_).SelectSiteCommsProfiles(addressBook);
}

XmlNode LibraryDialogs::SelectNewCommsDevice() { return ui::V4Dialogs(ui_).SelectNewCommsDevice(); }

void LibraryDialogs::EditCommunicationsMap(const std::string& commsMapFile) {
    ui::V4Dialogs(ui_).EditCommunicationsMap(commsMapFile);
}

bool LibraryDialogs::UpgradeFirmware(const std::string& firmwareFolder, QWidget* owner) {
    // FIRMWARE HOOK: no firmware dialog is linked into this build yet. When it lands, open it here
    // (UpgradeFirmwareForm over firmwareFolder, owned by owner) and answer true.
    (void)firmwareFolder, (void)owner;
    return false;
}

}  // namespace meridex::desk
