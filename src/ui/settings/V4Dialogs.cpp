#include <meridex/ui/settings/V4Dialogs.h>

#include <meridex/frame/LockNote.h>
#include <meridex/ui/comms/frmCommsMap.h>
#include <meridex/ui/comms/frmNewCommsMapDevice.h>
#include <meridex/ui/comms/frmSelectDevice.h>
#include <meridex/ui/addressbook/frmAddressBook.h>
#include <meridex/ui/addressbook/frmSelectSite.h>

namespace meridex::ui {

V4Dialogs::V4Dialogs(std::shared_ptr<UserInterface> ui) : ui_(std::move(ui)) {}

std::shared_ptr<UserInterface> V4Dialogs::ui() const { return ui_ ? ui_ : UserInterface::Current(); }

std::string V4Dialogs::InputBox(const std::string& prompt, const std::string& caption, std::int16_t maxLength,
                                bool numbersOnly, const std::string& toolTipText) const {
    InputBoxOptions options;
    options.maxLength = maxLength;
    options.numbersOnly = numbersOnly;
    options.toolTip = toolTipText;
    return ui()->InputBox(prompt, caption, options).value_or(std::string());
}

std::string V4Dialogs::SetPassword() const { return ui()->SetPassword(); }

bool V4Dialogs::EnterPassword(const std::string& password) const { return ui()->EnterPassword(password); }

void V4Dialogs::OpenAddressBook(const std::string& addressBookFile, const std::string& commsMapFile,
                                const std::string& schemesFolder) const {
    LockNote note;  // tells a second editor who has the book open
    if (!note.Acquire(addressBookFile, ui_)) return;
    frmAddressBook editor(ui_);
    editor.setErrorHandler(errors_);
    editor.LoadAddressBook(addressBookFile, commsMapFile, schemesFolder);
    editor.exec();
}

XmlNode V4Dialogs::SelectSiteCommsProfiles(AddressBook& addressBook) const {
    frmSelectSite dialog;
    dialog.setAddressBook(&addressBook);
    dialog.exec();
    return dialog.SelectedProfile();
}

void V4Dialogs::setCommsSources(std::shared_ptr<SerialPortSource> ports, std::shared_ptr<UserStore> store) {
    ports_ = std::move(ports);
    store_ = std::move(store);
}

XmlNode V4Dialogs::SelectNewCommsDevice() const {
    frmNewCommsMapDevice form(ports_, store_);
    form.exec();
    return form.NewDevice();
}

XmlNode V4Dialogs::SelectCommsDevice(CommsProfileManager& map) const {
    frmSelectDevice form;
    form.setCommunicationsManager(&map);
    form.exec();
    return form.SelectedDevice();
}

void V4Dialogs::EditCommunicationsMap(const std::string& commsMapFile) const {
    LockNote note;
    if (!note.Acquire(commsMapFile, ui_)) return;
    frmCommsMap form(ui_, ports_, store_);
    form.LoadMap(commsMapFile);
    form.exec();
}

}  // namespace meridex::ui
