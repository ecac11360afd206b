#pragma once
#include <meridex/Export.h>
#include <memory>
#include <optional>
#include <string>

namespace meridex {

/// The icon of a message box.
enum class MessageIcon { None, Critical, Question, Exclamation, Information };
/// The buttons a message box offers, in order (the first is the default answer).
enum class MessageButtons { OK, OKCancel, YesNo, YesNoCancel };
/// The button a person chose.
enum class MessageResult { OK, Cancel, Yes, No };

/// The one way the core speaks to a person: a message box and an input box.
/// The core never includes a GUI; the Qt dialogs install their own
/// implementation, tests install a recording one.
class MERIDEX_EXPORT UserInterface {
public:
    virtual ~UserInterface() = default;

    /// Shows text under caption with the buttons and icon given; answers the
    /// button chosen.
    virtual MessageResult MessageBox(const std::string& text, MessageButtons buttons,
                                     MessageIcon icon, const std::string& caption) = 0;
    /// Asks for a line of text, offering defaultText; an empty optional when
    /// the person cancels.
    virtual std::optional<std::string> InputBox(const std::string& prompt,
                                                const std::string& title,
                                                const std::string& defaultText) = 0;

    /// The interface installed for this process (by default one that writes
    /// messages to standard error and answers every question with its first
    /// button). Installing null restores that default.
    static std::shared_ptr<UserInterface> Current();
    /// Installs ui for this process (null restores the default); see Current.
    static void Install(std::shared_ptr<UserInterface> ui);

    /// The caption used when the caller gives none.
    static const std::string& DefaultCaption();
};

}  // namespace meridex
