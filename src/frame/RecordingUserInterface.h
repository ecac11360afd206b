#pragma once
#include <meridex/Export.h>
#include <deque>
#include <optional>
#include <string>
#include <vector>

#include <meridex/frame/UserInterface.h>

namespace meridex {

/// A user interface that remembers everything it is asked and answers from a script: for tests and
/// unattended runs. Unscripted, a message box answers its default button, an input box its default
/// text, and both password dialogs are cancelled.
class MERIDEX_EXPORT RecordingUserInterface : public UserInterface {
public:
    /// One message box as it was asked for.
    struct Message {
        std::string text;                    ///< The message.
        MessageButtons buttons;              ///< The buttons offered.
        MessageIcon icon;                    ///< The icon shown.
        std::string caption;                 ///< The title.
        MessageDefaultButton defaultButton;  ///< The button Enter chooses.
    };
    /// One input box as it was asked for.
    struct Input {
        std::string prompt;       ///< The prompt.
        std::string title;        ///< The title.
        InputBoxOptions options;  ///< Default text and limits.
    };

    /// One choice as it was offered.
    struct Choice {
        std::string text;                  ///< The message.
        std::vector<std::string> choices;  ///< The buttons offered, in order.
        MessageIcon icon;                  ///< The icon shown.
        std::string caption;               ///< The title.
        int defaultChoice;                 ///< The choice Enter makes.
    };

    /// Records the message and answers the next queued result.
    MessageResult MessageBox(const std::string& text, MessageButtons buttons, MessageIcon icon,
                             const std::string& caption,
                             MessageDefaultButton defaultButton = MessageDefaultButton::First) override;
    /// Records the prompt and answers the next queued input (the default text when none is queued).
    std::optional<std::string> InputBox(const std::string& prompt, const std::string& title,
                                        const InputBoxOptions& options = {}) override;
    /// Counts the request and answers the next queued new password (cancelled when none is queued).
    std::string SetPassword() override;
    /// Records password and compares it with the next queued entry (cancelled when none is queued).
    bool EnterPassword(const std::string& password) override;

    /// Records the choice and answers the next queued one (closed without a choice when none is
    /// queued, so an unscripted run never repeats a choice for ever).
    std::optional<int> Choose(const std::string& text, const std::vector<std::string>& choices, MessageIcon icon,
                              const std::string& caption, int defaultChoice = 0) override;
    /// Records the title and answers the next queued path (cancelled when none is queued).
    std::optional<std::string> SaveFileName(const std::string& title, const std::string& suggestedPath) override;

    /// The next message box answers result.
    void QueueMessageResult(MessageResult result) { messageResults_.push_back(result); }
    /// The next input box answers answer (an empty optional cancels it).
    void QueueInput(std::optional<std::string> answer) { inputs_.push_back(std::move(answer)); }
    /// The next SetPassword returns password (empty: cancelled).
    void QueueNewPassword(std::string password) { newPasswords_.push_back(std::move(password)); }
    /// The next EnterPassword is answered as if typed were typed (an empty optional cancels it).
    void QueuePasswordEntry(std::optional<std::string> typed) { passwordEntries_.push_back(std::move(typed)); }

    /// The next Choose answers index (an empty optional: closed without a choice).
    void QueueChoice(std::optional<int> index) { choices_.push_back(index); }
    /// The next SaveFileName answers path (an empty optional cancels it).
    void QueueSaveFileName(std::optional<std::string> path) { saveFileNames_.push_back(std::move(path)); }

    /// Every message box, oldest first.
    const std::vector<Message>& Messages() const noexcept { return messages_; }
    /// The prompt of every input box, oldest first.
    const std::vector<std::string>& Prompts() const noexcept { return prompts_; }
    /// Every input box, oldest first.
    const std::vector<Input>& Inputs() const noexcept { return inputs_asked_; }
    /// How many times a new password was asked for.
    int SetPasswordCount() const noexcept { return setPasswordCount_; }
    /// The password each EnterPassword was to be checked against, oldest first.
    const std::vector<std::string>& PasswordChecks() const noexcept { return passwordChecks_; }
    /// Every choice offered, oldest first.
    const std::vector<Choice>& Choices() const noexcept { return choicesAsked_; }
    /// The suggested path of every SaveFileName, oldest first.
    const std::vector<std::string>& SaveFileNames() const noexcept { return saveFileNamesAsked_; }
    /// Forgets what was asked (the queued answers stay).
    void Clear();

private:
    std::vector<Message> messages_;
    std::vector<std::string> prompts_;
    std::vector<Input> inputs_asked_;
    std::vector<std::string> passwordChecks_;
    std::vector<Choice> choicesAsked_;
    std::vector<std::string> saveFileNamesAsked_;
    int setPasswordCount_ = 0;
    std::deque<std::optional<int>> choices_;
    std::deque<std::optional<std::string>> saveFileNames_;
    std::deque<MessageResult> messageResults_;
    std::deque<std::optional<std::string>> inputs_;
    std::deque<std::string> newPasswords_;
    std::deque<std::optional<std::string>> passwordEntries_;
};

}  // namespace meridex
