#pragma once
#include <meridex/Export.h>
#include <meridex/frame/UserInterface.h>

namespace meridex {

/// The interface in force until a real one is installed: messages go to standard error, a message
/// box answers its first button and every prompt is cancelled, so nothing ever waits for a person
/// who is not there.
class MERIDEX_EXPORT StderrUserInterface : public UserInterface {
public:
    /// Writes the message to standard error and answers the first button.
    MessageResult MessageBox(const std::string& text, MessageButtons buttons, MessageIcon icon,
                             const std::string& caption,
                             MessageDefaultButton defaultButton = MessageDefaultButton::First) override;
    /// Writes the prompt to standard error and answers cancelled.
    std::optional<std::string> InputBox(const std::string& prompt, const std::string& title,
                                        const InputBoxOptions& options = {}) override;
    /// Writes a note to standard error and answers cancelled (empty).
    std::string SetPassword() override;
    /// Writes a note to standard error and answers cancelled (false).
    bool EnterPassword(const std::string& password) override;
    /// Writes the text to standard error and answers closed without a choice.
    std::optional<int> Choose(const std::string& text, const std::vector<std::string>& choices, MessageIcon icon,
                              const std::string& caption, int defaultChoice = 0) override;
    /// Writes a note to standard error and answers cancelled.
    std::optional<std::string> SaveFileName(const std::string& title, const std::string& suggestedPath) override;
};

}  // namespace meridex
