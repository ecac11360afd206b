#pragma once
#include <memory>

#include <meridex/frame/UserInterface.h>

#include "DeskDialogs.h"

namespace meridex {
class SerialPortSource;
class UserStore;
}  // namespace meridex

namespace meridex::ui {
class V4Dialogs;
}  // namespace meridex::ui

namespace meridex::desk {

/// The desk's dialogs as the library offers them: `V4Dialogs`, `Settings::ShowProfileEditor` and
/// `UpgradeFirmwareForm`.
class LibraryDialogs : public DeskDialogs {
public:
    /// Prompts of the dialogs go to ui (null: the installed interface); the device dialogs' maps use
    /// ports and store (null: this PC's), as the desk's own map does; what the editors cannot do is
    /// logged through errors (not owned; null: not logged).
    explicit LibraryDialogs(std::shared_ptr<UserInterface> ui = nullptr, std::shared_ptr<SerialPortSource> ports = nullptr,
                            std::shared_ptr<UserStore> store = nullptr, ErrorHandler* errors = nullptr)
        : ui_(std::move(ui)), ports_(std::move(ports)), store_(std::move(store)), errors_(errors) {}

    void ShowProfileEditor(Settings& settings, QWidget* owner) override;
    void OpenAddressBook(const std::string& addressBookFile, const std::string& commsMapFile,
                         const std::string& schemesFolder) override;
    XmlNode SelectSiteCommsProfiles(AddressBook& addressBook) override;
    XmlNode SelectNewCommsDevice() override;
    XmlNode SelectCommsDevice(CommsProfileManager& map) override;
    void EditCommunicationsMap(const std::string& commsMapFile) override;
    void UpgradeFirmware(Logger& logger, ErrorHandler& errors, const std::string& firmwareFolder,
                         QWidget* owner) override;

private:
    ui::V4Dialogs Dialogs() const;

    std::shared_ptr<UserInterface> ui_;
    std::shared_ptr<SerialPortSource> ports_;
    std::shared_ptr<UserStore> store_;
    ErrorHandler* errors_;
};

}  // namespace meridex::desk
