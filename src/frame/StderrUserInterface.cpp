#include <meridex/frame/StderrUserInterface.h>

#include <iostream>

namespace meridex {

namespace {

void Write(const std::string& text, const std::string& caption) {
    std::string shown;
    for (char c : text) {
        if (c != '\r') shown += c;
    }
    std::cerr << (caption.empty() ? UserInterface::DefaultCaption() : caption) << ": " << shown << '\n';
}

}  // namespace

MessageResult StderrUserInterface::MessageBox(const std::string& text, MessageButtons buttons, MessageIcon,
                                              const std::string& caption, MessageDefaultButton) {
    Write(text, caption);
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

std::optional<int> StderrUserInterface::Choose(const std::string& text, const std::vector<std::string>&, MessageIcon,
                                               const std::string& caption, int) {
    // Answering a choice for someone who is not there could repeat it for ever; nothing is chosen.
    Write(text + " (no one to choose; nothing chosen)", caption);
    return std::nullopt;
}

std::optional<std::string> StderrUserInterface::SaveFileName(const std::string& title, const std::string&) {
    std::cerr << title << " (no one to answer; cancelled)\n";
    return std::nullopt;
}

}  // namespace meridex
