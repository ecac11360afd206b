#pragma once
#include <meridex/Export.h>
#include <meridex/frame/UserInterface.h>

namespace meridex {

/// The interface in force until a real one is installed: messages go to
/// standard error, a message box answers its first button and an input box
/// is cancelled, so nothing ever waits for a person who is not there.
class MERIDEX_EXPORT StderrUserInterface : public UserInterface {
public:
    /// Writes the message to standard error and answers the first button.
    MessageResult MessageBox(const std::string& text, MessageButtons buttons, MessageIcon icon,
                             const std::string& caption) override;
    /// Writes the prompt to standard error and answers cancelled.
    std::optional<std::string> InputBox(const std::string& prompt, const std::string& title,
                                        const std::string& defaultText) override;
};

}  // namespace meridex
