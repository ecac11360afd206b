#include <meridex/ui/settings/V4Dialogs.h>

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

void V4Dialogs::OpenAddressBook(const std::string&, const std::string&, const std::string&) const {}

XmlNode V4Dialogs::SelectSiteCommsProfiles(AddressBook&) const { return {}; }

XmlNode V4Dialogs::SelectNewCommsDevice() const { return {}; }

void V4Dialogs::EditCommunicationsMap(const std::string&) const {}

}  // namespace meridex::ui
