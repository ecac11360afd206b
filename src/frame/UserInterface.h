#pragma once
#include <meridex/Export.h>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace meridex {

/// The icon of a message box.
enum class MessageIcon { None, Critical, Question, Exclamation, Information };
/// The buttons of a message box.
enum class MessageButtons { OK, OKCancel, YesNo, YesNoCancel };
/// The button a person chose in a message box.
enum class MessageResult { OK, Cancel, Yes, No };
/// Which button of a message box Enter chooses: the first, second or third, counted as the buttons
/// are named (OK then Cancel, Yes then No then Cancel).
enum class MessageDefaultButton { First, Second, Third };

/// How an input box limits what can be typed.
struct MERIDEX_EXPORT InputBoxOptions {
    /// The text the box starts with.
    std::string defaultText;
    /// The most characters that can be typed; 0 or less means no limit.
    int maxLength = 0;
    /// Only the digits 0 to 9 can be typed.
    bool numbersOnly = false;
    /// The tooltip of the text field; empty for none.
    std::string toolTip;
};

/// The one way the library speaks to a person: message boxes, a choice among named actions, an
/// input box, the two password dialogs and the question for a file to save to. The core never includes a GUI; the Qt dialogs install their own implementation
/// (`meridex::ui::InstallQtDialogs`), tests install `RecordingUserInterface` and script the answers.
/// A dialog asks through this interface and never opens a box of its own.
class MERIDEX_EXPORT UserInterface {
public:
    virtual ~UserInterface() = default;

    /// Shows text with the buttons and icon under caption (the default caption when empty); Enter
    /// chooses defaultButton.
    virtual MessageResult MessageBox(const std::string& text, MessageButtons buttons, MessageIcon icon,
                                     const std::string& caption,
                                     MessageDefaultButton defaultButton = MessageDefaultButton::First) = 0;
    /// Asks for one line of text under title; an empty optional when the person cancels.
    virtual std::optional<std::string> InputBox(const std::string& prompt, const std::string& title,
                                                const InputBoxOptions& options = {}) = 0;
    /// Asks for a new password twice until both entries agree; empty when cancelled (an empty
    /// password cannot be told from cancelling).
    virtual std::string SetPassword() = 0;
    /// Asks for a password; true exactly when the typed text equals password (case-sensitive),
    /// false when it differs or the person cancels.
    virtual bool EnterPassword(const std::string& password) = 0;
    /// Shows text under caption with one button per choice ("&" marks an access key); Enter chooses
    /// defaultChoice. The index of the choice made, or an empty optional when the box is closed
    /// without one (Escape, the close box), which leaves everything as it was.
    virtual std::optional<int> Choose(const std::string& text, const std::vector<std::string>& choices,
                                      MessageIcon icon, const std::string& caption, int defaultChoice = 0) = 0;
    /// Asks under title for the path of a file to save to, starting at suggestedPath; an empty
    /// optional when the person cancels.
    virtual std::optional<std::string> SaveFileName(const std::string& title, const std::string& suggestedPath) = 0;

    /// The interface installed for this process (by default one that writes messages to standard
    /// error and answers every question with its first button). Installing null restores that default.
    static std::shared_ptr<UserInterface> Current();
    /// Makes ui the interface of this process.
    static void Install(std::shared_ptr<UserInterface> ui);

    /// The caption used when the caller gives none.
    static const std::string& DefaultCaption();
};

}  // namespace meridex
