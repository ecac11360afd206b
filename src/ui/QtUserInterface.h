#pragma once
#include <meridex/ui/Export.h>
#include <meridex/frame/UserInterface.h>

#include <memory>

class QMessageBox;
class QWidget;

namespace meridex::ui {

/// The user interface of a Qt application: message boxes are QMessageBoxes, the input box is
/// `frmV4InputBox`, and the password prompts are `frmSetPassword` and `frmEnterPassword`, each
/// modal over the window that is active. Installed by InstallQtDialogs().
class MERIDEX_UI_EXPORT QtUserInterface : public UserInterface {
public:
    MessageResult MessageBox(const std::string& text, MessageButtons buttons, MessageIcon icon,
                             const std::string& caption,
                             MessageDefaultButton defaultButton = MessageDefaultButton::First) override;
    /// `frmV4InputBox` with the title, the prompt and the options; cancelled gives an empty optional.
    std::optional<std::string> InputBox(const std::string& prompt, const std::string& title,
                                        const InputBoxOptions& options = {}) override;
    /// `frmSetPassword`, shown again after "Passwords don't match" until both entries agree;
    /// cancelled gives an empty text.
    std::string SetPassword() override;
    /// `frmEnterPassword`; true when the entry equals password exactly.
    bool EnterPassword(const std::string& password) override;

    /// The box MessageBox shows, over owner, not yet shown.
    static std::unique_ptr<QMessageBox> MessageBoxFor(const std::string& text, MessageButtons buttons, MessageIcon icon,
                                                      const std::string& caption, MessageDefaultButton defaultButton,
                                                      QWidget* owner = nullptr);
    /// The box Choose shows, over owner, not yet shown: one button per choice, in order.
    static std::unique_ptr<QMessageBox> ChooseBoxFor(const std::string& text, const std::vector<std::string>& choices,
                                                     MessageIcon icon, const std::string& caption, int defaultChoice,
                                                     QWidget* owner = nullptr);
    /// A QMessageBox with one button per choice, in order; closing it without a choice gives an
    /// empty optional.
    std::optional<int> Choose(const std::string& text, const std::vector<std::string>& choices, MessageIcon icon,
                              const std::string& caption, int defaultChoice = 0) override;
    /// The save-file dialog of Qt (its own, not the platform's, so it looks and behaves alike everywhere).
    std::optional<std::string> SaveFileName(const std::string& title, const std::string& suggestedPath) override;
};

}  // namespace meridex::ui
