#pragma once
#include <meridex/Export.h>
#include <deque>
#include <optional>
#include <string>
#include <vector>

#include <meridex/frame/UserInterface.h>

namespace meridex {

// A user interface that remembers every message and answers from a script;
// for tests and for unattended runs.
class MERIDEX_EXPORT RecordingUserInterface : public UserInterface {
public:
    struct Message {
        std::string text;
        MessageButtons buttons;
        MessageIcon icon;
        std::string caption;
    };

    MessageResult MessageBox(const std::string& text, MessageButtons buttons, MessageIcon icon,
                             const std::string& caption) override;
    std::optional<std::string> InputBox(const std::string& prompt, const std::string& title,
                                        const std::string& defaultText) override;

    // Answers given in order; when none is queued a message box answers its
    // first button and an input box answers its default text.
    void QueueMessageResult(MessageResult result) { messageResults_.push_back(result); }
    void QueueInput(std::optional<std::string> answer) { inputs_.push_back(std::move(answer)); }

    const std::vector<Message>& Messages() const noexcept { return messages_; }
    const std::vector<std::string>& Prompts() const noexcept { return prompts_; }
    void Clear() { messages_.clear(); prompts_.clear(); }

private:
    std::vector<Message> messages_;
    std::vector<std::string> prompts_;
    std::deque<MessageResult> messageResults_;
    std::deque<std::optional<std::string>> inputs_;
};

}  // namespace meridex
