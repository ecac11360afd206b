#include <meridex/frame/RecordingUserInterface.h>

namespace meridex {
namespace {

// The answer of the button Enter would choose.
MessageResult DefaultAnswer(MessageButtons buttons, MessageDefaultButton defaultButton) {
    const int n = static_cast<int>(defaultButton);
    switch (buttons) {
    case MessageButtons::OK: return MessageResult::OK;
    case MessageButtons::OKCancel: return n == 0 ? MessageResult::OK : MessageResult::Cancel;
    case MessageButtons::YesNo: return n == 0 ? MessageResult::Yes : MessageResult::No;
    case MessageButtons::YesNoCancel:
        return n == 0 ? MessageResult::Yes : n == 1 ? MessageResult::No : MessageResult::Cancel;
    }
    return MessageResult::OK;
}

template <class T>
std::optional<T> Next(std::deque<T>& queue) {
    if (queue.empty()) return std::nullopt;
    T answer = std::move(queue.front());
    queue.pop_front();
    return answer;
}

}  // namespace

MessageResult RecordingUserInterface::MessageBox(const std::string& text, MessageButtons buttons, MessageIcon icon,
                                                 const std::string& caption, MessageDefaultButton defaultButton) {
    messages_.push_back({text, buttons, icon, caption, defaultButton});
    return Next(messageResults_).value_or(DefaultAnswer(buttons, defaultButton));
}

std::optional<std::string> RecordingUserInterface::InputBox(const std::string& prompt, const std::string& title,
                                                            const InputBoxOptions& options) {
    prompts_.push_back(prompt);
    inputs_asked_.push_back({prompt, title, options});
    return Next(inputs_).value_or(options.defaultText);
}

std::string RecordingUserInterface::SetPassword() {
    ++setPasswordCount_;
    return Next(newPasswords_).value_or(std::string());
}

bool RecordingUserInterface::EnterPassword(const std::string& password) {
    passwordChecks_.push_back(password);
    const std::optional<std::string> typed = Next(passwordEntries_).value_or(std::nullopt);
    return typed && *typed == password;
}

std::optional<int> RecordingUserInterface::Choose(const std::string& text, const std::vector<std::string>& choices,
                                                  MessageIcon icon, const std::string& caption, int defaultChoice) {
    choicesAsked_.push_back({text, choices, icon, caption, defaultChoice});
    return Next(choices_).value_or(std::nullopt);
}

std::optional<std::string> RecordingUserInterface::SaveFileName(const std::string&, const std::string& suggestedPath) {
    saveFileNamesAsked_.push_back(suggestedPath);
    return Next(saveFileNames_).value_or(std::nullopt);
}

void RecordingUserInterface::Clear() {
    messages_.clear();
    choicesAsked_.clear();
    saveFileNamesAsked_.clear();
    prompts_.clear();
    inputs_asked_.clear();
    passwordChecks_.clear();
    setPasswordCount_ = 0;
}

}  // namespace meridex
