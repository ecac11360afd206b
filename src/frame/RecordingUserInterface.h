#pragma once
#include <meridex/Export.h>
#include <deque>
#include <optional>
#include <string>
#include <vector>

#include <meridex/frame/UserInterface.h>

namespace meridex {

/// A user interface that remembers every message and answers from a script;
/// for tests and for unattended runs.
class MERIDEX_EXPORT RecordingUserInterface : public UserInterface {
public:
    /// One message box as it was asked for.
    struct Message {
        std::string text;        ///< The message.
        MessageButtons buttons;  ///< The buttons offered.
        MessageIcon icon;        ///< The icon shown.
        std::string caption;     ///< The title.
    };

    /// Records the message and answers the next queued result.
    MessageResult MessageBox(const std::string& text, MessageButtons buttons, MessageIcon icon,
                             const std::string& caption) override;
    /// Records the prompt and answers the next queued input.
    std::optional<std::string> InputBox(const std::string& prompt, const std::string& title,
                                        const std::string& defaultText) override;

    /// Queues the answer of a later message box. Answers are given in order;
    /// when none is queued a message box answers its first button.
    void QueueMessageResult(MessageResult result) { messageResults_.push_back(result); }
    /// Queues the answer of a later input box (empty: cancelled); when none
    /// is queued an input box answers its default text.
    void QueueInput(std::optional<std::string> answer) { inputs_.push_back(std::move(answer)); }

    /// Every message box shown so far, in order.
    const std::vector<Message>& Messages() const noexcept { return messages_; }
    /// The prompt of every input box shown so far, in order.
    const std::vector<std::string>& Prompts() const noexcept { return prompts_; }
    /// Forgets the recorded messages and prompts (queued answers stay).
    void Clear() { messages_.clear(); prompts_.clear(); }

private:
    std::vector<Message> messages_;
    std::vector<std::string> prompts_;
    std::deque<MessageResult> messageResults_;
    std::deque<std::optional<std::string>> inputs_;
};

}  // namespace meridex
