#pragma once
#include <meridex/ui/Export.h>
#include <cstdint>
#include <memory>
#include <string>

#include <meridex/frame/UserInterface.h>
#include <meridex/frame/XmlNode.h>
#include <meridex/platform/SerialPortSource.h>
#include <meridex/platform/UserStore.h>

namespace meridex {
class AddressBook;
class CommsProfileManager;
class ErrorHandler;
}

namespace meridex::ui {

/// The host's one entry to the library's dialogs. The small prompts go through the user interface
/// (the Qt one opens `frmV4InputBox`, `frmSetPassword` and `frmEnterPassword`); the editors are
/// opened by the facade itself as they come.
class MERIDEX_UI_EXPORT V4Dialogs {
public:
    /// Prompts go to ui; a null ui means the interface installed at the time of each call.
    explicit V4Dialogs(std::shared_ptr<UserInterface> ui = nullptr);

    /// One line of text under caption; empty when cancelled. maxLength 0 or less is no limit;
    /// numbersOnly lets only digits be typed; toolTipText is the text field's tooltip.
    std::string InputBox(const std::string& prompt, const std::string& caption, std::int16_t maxLength = 0,
                         bool numbersOnly = false, const std::string& toolTipText = {}) const;
    /// A new password typed twice alike; empty when cancelled.
    std::string SetPassword() const;
    /// True when the person types exactly password; false when the entry differs or is cancelled.
    bool EnterPassword(const std::string& password) const;

    /// Opens the address book editor (`frmAddressBook`) modally on these files; the book is saved
    /// when the editor closes.
    void OpenAddressBook(const std::string& addressBookFile, const std::string& commsMapFile,
                         const std::string& schemesFolder) const;
    /// The `PROFILE` element (the book's own, not a copy) of the site chosen in the site-selection
    /// dialog (`frmSelectSite`), or null when none was chosen.
    XmlNode SelectSiteCommsProfiles(AddressBook& addressBook) const;
    /// The new device profile built in the new-device dialog (`frmNewCommsMapDevice`, its
    /// NewDevice), or null when cancelled. The profile lives in a scratch map of its own; give it to
    /// CommsProfileManager::AddApplicationProfile to add it to a map with a fresh key.
    XmlNode SelectNewCommsDevice() const;
    /// The profile of map chosen in the device-selection dialog (`frmSelectDevice`, its
    /// SelectedDevice): the map's own element, or null when nothing was chosen or it was cancelled.
    /// The device-selection dialog has this operation of its own, so that SelectNewCommsDevice keeps
    /// answering a new device as the facade's table has it.
    XmlNode SelectCommsDevice(CommsProfileManager& map) const;
    /// Opens the editor of the whole communications map (`frmCommsMap`) on commsMapFile (its LoadMap)
    /// and returns when it has closed; the file changes only when the person confirms with OK.
    void EditCommunicationsMap(const std::string& commsMapFile) const;

    /// The handler that logs what the editors cannot do, such as a failed save (not owned; null: none).
    void setErrorHandler(ErrorHandler* errors) noexcept { errors_ = errors; }

    /// The serial ports and per-user store that the device dialogs' maps use (null: this PC's).
    void setCommsSources(std::shared_ptr<SerialPortSource> ports, std::shared_ptr<UserStore> store);

private:
    std::shared_ptr<UserInterface> ui() const;

    std::shared_ptr<UserInterface> ui_;
    std::shared_ptr<SerialPortSource> ports_;
    std::shared_ptr<UserStore> store_;
    ErrorHandler* errors_ = nullptr;
};

}  // namespace meridex::ui
