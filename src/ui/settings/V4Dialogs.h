#pragma once
#include <meridex/ui/Export.h>
#include <cstdint>
#include <memory>
#include <string>

#include <meridex/frame/UserInterface.h>
#include <meridex/frame/XmlNode.h>

namespace meridex {
class AddressBook;
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

    /// The address book editor on these files. Not connected yet: does nothing visible until the
    /// address book editor comes.
    void OpenAddressBook(const std::string& addressBookFile, const std::string& commsMapFile,
                         const std::string& schemesFolder) const;
    /// The `PROFILE` element of the site chosen in the site-profile selection dialog, or null. Not
    /// connected yet: shows nothing and answers null until that dialog comes.
    XmlNode SelectSiteCommsProfiles(AddressBook& addressBook) const;
    /// The new device profile built in the new-device dialog, or null. Not connected yet: shows
    /// nothing and answers null until that dialog comes.
    XmlNode SelectNewCommsDevice() const;
    /// The editor of the whole communications map on commsMapFile. Not connected yet: does nothing
    /// visible until that editor comes.
    void EditCommunicationsMap(const std::string& commsMapFile) const;

private:
    std::shared_ptr<UserInterface> ui() const;

    std::shared_ptr<UserInterface> ui_;
};

}  // namespace meridex::ui
