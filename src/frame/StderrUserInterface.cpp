#include <meridex/frame/StderrUserInterface.h>

#include <iostream>

namespace meridex {

MessageResult StderrUserInterface::MessageBox(const std::string& text, MessageButtons buttons, MessageIcon,
                                              const std::string& caption, MessageDefaultButton) {
    std::string shown;
    for (char c : text) {
        if (c != '\r') shown += c;
    }
    std::cerr << (caption.empty() ? DefaultCaption() : caption) << ": " << shown << '\n';
    return buttons == MessageButtons::YesNo || buttons == MessageButtons::YesNoCancel ? MessageResult::Yes
                                                                                       : MessageResult::OK;
}

std::optional<std::string> StderrUserInterface::InputBox(const std::string& prompt, const std::string& title,
                                                         const InputBoxOptions&) {
    std::cerr << title << ": " << prompt << " (no one to answer; cancelled)\n";
    return std::nullopt;
}

std::string StderrUserInterface::SetPassword() {
    std::cerr << "Set Password (no one to answer; cancelled)\n";
    return {};
}

bool StderrUserInterface::EnterPassword(const std::string&) {
    std::cerr << "Enter Password (no one to answer; cancelled)\n";
    return false;
}

}  // namespace meridex
