#pragma once
#include <memory>

#include <meridex/frame/UserInterface.h>

#include "DeskDialogs.h"

namespace meridex::desk {

/// The desk's dialogs as the library offers them: `V4Dialogs` and `Settings::ShowProfileEditor`.
class LibraryDialogs : public DeskDialogs {
public:
    /// Prompts of the dialogs go to ui (null: the installed interface).
    explicit LibraryDialogs(std::shared_ptr<UserInterface> ui = nullptr) : ui_(std::move(ui)) {}

    void ShowProfileEditor(Settings& settings, QWidget* owner) override;
    void OpenAddressBook(const std::string& addressBookFile, const std::string& commsMapFile,
                         const std::string& schemesFolder) override;
    XmlNode SelectSiteCommsProfiles(AddressBook& addressBook) override;
    XmlNode SelectNewCommsDevice() override;
    void EditCommunicationsMap(const std::string& commsMapFile) override;
    bool UpgradeFirmware(const std::string& firmwareFolder, QWidget* owner) override;

private:
    std::shared_ptr<UserInterface> ui_;
};

}  // namespace meridex::desk
