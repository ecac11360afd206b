#include <meridex/frame/StderrUserInterface.h>

#include <iostream>

namespace meridex {

MessageResult StderrUserInterface::MessageBox(const std::string& text, MessageButtons buttons, MessageIcon,
                                              const std::string& caption) {
    std::string shown;
    for (char c : text) {
        if (c != '\r') shown += c;
    }
    std::cerr << caption << ": " << shown << '\n';
    return buttons == MessageButtons::YesNo || buttons == MessageButtons::YesNoCancel ? MessageResult::Yes
                                                                                       : MessageResult::OK;
}

std::optional<std::string> StderrUserInterface::InputBox(const std::string& prompt, const std::string& title,
                                                         const std::string&) {
    std::cerr << title << ": " << prompt << " (no one to answer; cancelled)\n";
    return std::nullopt;
}

}  // namespace meridex
