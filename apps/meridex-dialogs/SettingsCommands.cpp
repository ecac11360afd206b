// The settings dialogs: the profile editor on a settings file, and the three small prompts.
#include <cstdio>
#include <cstdlib>

#include <meridex/settings/Settings.h>
#include <meridex/ui/settings/V4Dialogs.h>

#include "DialogCommand.h"

namespace meridex::dialogs {
namespace {

const CommandRegistration profiles({
    "profiles", "SETTINGS.xml", "edit the user profiles; saved when the editor closes", 1, 1,
    [](const std::vector<std::string>& arguments) {
        Settings settings;
        if (!settings.LoadSettings(arguments[0]))
            std::fprintf(stderr, "%s could not be read: starting with no profiles\n", arguments[0].c_str());
        settings.ShowProfileEditor();
        return 0;
    }});

const CommandRegistration input({
    "input", "PROMPT [CAPTION [MAXLENGTH [--numbers]]]", "ask for one line; prints it, exit 1 when cancelled or empty", 1,
    4, [](const std::vector<std::string>& arguments) {
        const std::string caption = arguments.size() > 1 ? arguments[1] : "";
        const int maxLength = arguments.size() > 2 ? std::atoi(arguments[2].c_str()) : 0;
        const bool numbers = arguments.size() > 3 && arguments[3] == "--numbers";
        const std::string answer =
            ui::V4Dialogs().InputBox(arguments[0], caption, static_cast<std::int16_t>(maxLength), numbers);
        if (answer.empty()) return 1;
        std::printf("%s\n", answer.c_str());
        return 0;
    }});

const CommandRegistration setPassword({
    "set-password", "", "ask for a new password twice; prints it, exit 1 when cancelled", 0, 0,
    [](const std::vector<std::string>&) {
        const std::string password = ui::V4Dialogs().SetPassword();
        if (password.empty()) return 1;
        std::printf("%s\n", password.c_str());
        return 0;
    }});

const CommandRegistration enterPassword({
    "enter-password", "PASSWORD", "ask for a password; exit 0 when it matches, 1 otherwise", 1, 1,
    [](const std::vector<std::string>& arguments) { return ui::V4Dialogs().EnterPassword(arguments[0]) ? 0 : 1; }});

}  // namespace
}  // namespace meridex::dialogs
