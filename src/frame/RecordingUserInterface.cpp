#include <meridex/frame/RecordingUserInterface.h>

namespace meridex {

MessageResult RecordingUserInterface::MessageBox(const std::string& text, MessageButtons buttons, MessageIcon icon,
                                                 const std::string& caption) {
    messages_.push_back({text, buttons, icon, caption});
    if (!messageResults_.empty()) {
        const MessageResult result = messageResults_.front();
        messageResults_.pop_front();
        return result;
    }
    return buttons == MessageButtons::YesNo || buttons == MessageButtons::YesNoCancel ? MessageResult::Yes
                                                                                       : MessageResult::OK;
}

std::optional<std::string> RecordingUserInterface::InputBox(const std::string& prompt, const std::string&,
                                                            const std::string& defaultText) {
    prompts_.push_back(prompt);
    if (!inputs_.empty()) {
        std::optional<std::string> answer = std::move(inputs_.front());
        inputs_.pop_front();
        return answer;
    }
    return defaultText;
}

}  // namespace meridex
