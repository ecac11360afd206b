#include "Bind.h"

#include <meridex/frame/UserInterface.h>

namespace meridex::python {
namespace {

// A user interface written in Python: MessageBox, InputBox, SetPassword and EnterPassword; Choose and
// SaveFileName when it has them, else they answer as a box closed without an answer.
class PyUserInterface : public UserInterface {
public:
    MessageResult MessageBox(const std::string& text, MessageButtons buttons, MessageIcon icon,
                             const std::string& caption, MessageDefaultButton defaultButton) override {
        PYBIND11_OVERRIDE_PURE(MessageResult, UserInterface, MessageBox, text, buttons, icon, caption, defaultButton);
    }
    std::optional<std::string> InputBox(const std::string& prompt, const std::string& title,
                                        const InputBoxOptions& options) override {
        PYBIND11_OVERRIDE_PURE(std::optional<std::string>, UserInterface, InputBox, prompt, title, options);
    }
    std::string SetPassword() override { PYBIND11_OVERRIDE_PURE(std::string, UserInterface, SetPassword); }
    bool EnterPassword(const std::string& password) override {
        PYBIND11_OVERRIDE_PURE(bool, UserInterface, EnterPassword, password);
    }
    std::optional<int> Choose(const std::string& text, const std::vector<std::string>& choices, MessageIcon icon,
                              const std::string& caption, int defaultChoice) override {
        py::gil_scoped_acquire gil;
        if (py::function own = py::get_override(static_cast<const UserInterface*>(this), "Choose"))
            return own(text, choices, icon, caption, defaultChoice).cast<std::optional<int>>();
        return std::nullopt;
    }
    std::optional<std::string> SaveFileName(const std::string& title, const std::string& suggestedPath) override {
        py::gil_scoped_acquire gil;
        if (py::function own = py::get_override(static_cast<const UserInterface*>(this), "SaveFileName"))
            return own(title, suggestedPath).cast<std::optional<std::string>>();
        return std::nullopt;
    }
};

}  // namespace

void BindUserInterface(py::module_& m) {
    py::enum_<MessageIcon>(m, "MessageIcon", "The icon of a message box")
        .value("None_", MessageIcon::None, "No icon")
        .value("Critical", MessageIcon::Critical, "A failure")
        .value("Question", MessageIcon::Question, "A question")
        .value("Exclamation", MessageIcon::Exclamation, "A warning")
        .value("Information", MessageIcon::Information, "Information");
    py::enum_<MessageButtons>(m, "MessageButtons", "The buttons of a message box")
        .value("OK", MessageButtons::OK, "OK")
        .value("OKCancel", MessageButtons::OKCancel, "OK and Cancel")
        .value("YesNo", MessageButtons::YesNo, "Yes and No")
        .value("YesNoCancel", MessageButtons::YesNoCancel, "Yes, No and Cancel");
    py::enum_<MessageResult>(m, "MessageResult", "The button a person chose in a message box")
        .value("OK", MessageResult::OK, "OK")
        .value("Cancel", MessageResult::Cancel, "Cancel")
        .value("Yes", MessageResult::Yes, "Yes")
        .value("No", MessageResult::No, "No");
    py::enum_<MessageDefaultButton>(m, "MessageDefaultButton", "Which button of a message box Enter chooses")
        .value("First", MessageDefaultButton::First, "The first button named")
        .value("Second", MessageDefaultButton::Second, "The second button named")
        .value("Third", MessageDefaultButton::Third, "The third button named");

    py::class_<InputBoxOptions>(m, "InputBoxOptions", "How an input box limits what can be typed")
        .def_readonly("defaultText", &InputBoxOptions::defaultText, "The text the box starts with")
        .def_readonly("maxLength", &InputBoxOptions::maxLength, "The most characters (0 or less: no limit)")
        .def_readonly("numbersOnly", &InputBoxOptions::numbersOnly, "True when only the digits can be typed")
        .def_readonly("toolTip", &InputBoxOptions::toolTip, "The text field's tooltip");

    py::class_<UserInterface, PyUserInterface, std::shared_ptr<UserInterface>>(
        m, "UserInterface",
        "The one way the library speaks to a person. Subclass it with MessageBox, InputBox, SetPassword and "
        "EnterPassword and Install it; by default messages go to standard error and every question is answered "
        "with its first button.")
        .def(py::init<>(), "An interface whose prompts a subclass answers")
        .def("MessageBox", &UserInterface::MessageBox, py::arg("text"), py::arg("buttons"), py::arg("icon"),
             py::arg("caption"), py::arg("default_button"), "Shows text with buttons; the button chosen")
        .def("InputBox", &UserInterface::InputBox, py::arg("prompt"), py::arg("title"), py::arg("options"),
             "Asks for one line of text; None when the person cancels")
        .def("SetPassword", &UserInterface::SetPassword, "Asks for a new password; \"\" when cancelled")
        .def("EnterPassword", &UserInterface::EnterPassword, py::arg("password"),
             "Asks for a password; True exactly when the typed text equals password")
        .def("Choose", &UserInterface::Choose, py::arg("text"), py::arg("choices"), py::arg("icon"), py::arg("caption"),
             py::arg("default_choice") = 0,
             "Offers one button per choice; the index chosen, or None when the box is closed without one "
             "(a subclass without Choose answers None)")
        .def("SaveFileName", &UserInterface::SaveFileName, py::arg("title"), py::arg("suggested_path"),
             "Asks for a file to save to; None when the person cancels (a subclass without it answers None)")
        .def_static(
            "Install",
            [m](std::optional<std::shared_ptr<UserInterface>> ui) {
                // The Python object is kept with the module while the library holds it.
                std::shared_ptr<UserInterface> installed = ui ? *ui : nullptr;
                m.attr("_installed_user_interface") = installed ? py::cast(installed) : py::none();
                UserInterface::Install(std::move(installed));
            },
            py::arg("ui"), "Makes ui the interface of this process; None restores the default")
        .def_static("DefaultCaption", &UserInterface::DefaultCaption, "The caption used when the caller gives none");

    // The library lets go of a Python interface while Python still runs.
    m.attr("_installed_user_interface") = py::none();
    py::module_::import("atexit").attr("register")(py::cpp_function([] { UserInterface::Install(nullptr); }));
}

}  // namespace meridex::python
