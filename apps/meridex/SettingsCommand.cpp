#include <iomanip>
#include <iostream>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "Commands.h"
#include "Json.h"
#include <meridex/frame/FileOps.h>
#include <meridex/settings/Settings.h>

namespace meridex::cli {

namespace {

// Exit codes of the settings commands.
constexpr int kOk = 0;
constexpr int kNo = 1;     // not available, not found, not saved
constexpr int kUsage = 2;  // wrong arguments, or a settings file that cannot be read for "can"

struct Arguments {
    std::string file;
    std::string second;  // KEY, PROFILE or FEATURE
    std::string value;
    std::optional<std::string> defaultValue;
    bool saveNull = false;
    bool json = false;
};

struct ProfileSummary {
    int features = 0;
    int available = 0;
};

ProfileSummary Summarise(const Profile& profile) {
    ProfileSummary summary;
    for (XmlNode element = profile.XMLNode().FirstChildElement("FEATURE"); element;
         element = element.NextSiblingElement("FEATURE")) {
        ++summary.features;
        if (Feature(element).Available()) ++summary.available;
    }
    return summary;
}

bool IsCurrent(const Settings& settings, const Profile& profile) {
    return !settings.CurrentProfile().IsNull() && settings.CurrentProfile().XMLNode() == profile.XMLNode();
}

// Loads the file; tells the user on stderr when it could not be read.
bool Load(Settings& settings, const std::string& file) {
    if (settings.LoadSettings(file)) return true;
    if (FileOps::FileExists(file)) {
        std::cerr << "meridex: " << file
                  << " is not a readable settings document; using empty settings (a save first"
                     " keeps the old file beside it, named .unreadable)\n";
    } else {
        std::cerr << "meridex: " << file << " does not exist; using empty settings\n";
    }
    return false;
}

bool Save(Settings& settings) {
    if (settings.SaveSettings("")) return true;
    std::cerr << "meridex: could not write " << settings.SettingsFile() << "; the file is unchanged\n";
    return false;
}

std::string ProfilesJson(const Settings& settings) {
    std::string out = "[";
    const Profiles profiles = settings.Profiles();
    for (int i = 1; i <= profiles.Count(); ++i) {
        const Profile profile = profiles.Item(i);
        const ProfileSummary summary = Summarise(profile);
        out += (i > 1 ? ", " : "");
        out += "{\"key\": " + JsonString(profile.Key()) +
               ", \"features\": " + std::to_string(summary.features) +
               ", \"available\": " + std::to_string(summary.available) +
               ", \"current\": " + (IsCurrent(settings, profile) ? "true" : "false") + "}";
    }
    return out + "]";
}

std::string CurrentJson(const Settings& settings) {
    const Profile current = settings.CurrentProfile();
    return current.IsNull() ? "null" : JsonString(current.Key());
}

void PrintProfiles(const Settings& settings) {
    const Profiles profiles = settings.Profiles();
    if (profiles.Count() == 0) std::cout << "  (no profiles)\n";
    for (int i = 1; i <= profiles.Count(); ++i) {
        const Profile profile = profiles.Item(i);
        const ProfileSummary summary = Summarise(profile);
        std::cout << (IsCurrent(settings, profile) ? "* " : "  ") << std::left << std::setw(24)
                  << profile.Key() << ' ' << summary.available << " of " << summary.features
                  << " features available\n";
    }
}

int Show(const Arguments& args) {
    Settings settings;
    const bool read = Load(settings, args.file);
    const XmlNode root = settings.Root();
    if (args.json) {
        std::string keys = "[";
        bool first = true;
        for (XmlNode child = root.FirstChildElement(); child; child = child.NextSiblingElement()) {
            if (child.Name() == "PROFILES") continue;
            keys += std::string(first ? "" : ", ") + "{\"key\": " + JsonString(child.Name()) +
                    ", \"value\": " + JsonString(child.Text()) + "}";
            first = false;
        }
        std::cout << "{\"file\": " << JsonString(args.file) << ", \"read\": " << (read ? "true" : "false")
                  << ", \"keys\": " << keys << "], \"profiles\": " << ProfilesJson(settings)
                  << ", \"current_profile\": " << CurrentJson(settings) << "}\n";
        return kOk;
    }
    std::cout << "Settings file: " << args.file << "\nKeys:\n";
    for (XmlNode child = root.FirstChildElement(); child; child = child.NextSiblingElement()) {
        if (child.Name() != "PROFILES") std::cout << "  " << child.Name() << " = " << child.Text() << '\n';
    }
    std::cout << "Profiles:\n";
    PrintProfiles(settings);
    const Profile current = settings.CurrentProfile();
    std::cout << "Current profile: " << (current.IsNull() ? "(none)" : current.Key()) << '\n';
    return kOk;
}

int Get(const Arguments& args) {
    Settings settings;
    Load(settings, args.file);
    std::cout << settings.GetString(args.second, args.defaultValue.value_or("")) << '\n';
    return kOk;
}

int Set(const Arguments& args) {
    if (!Settings::IsKey(args.second)) {
        std::cerr << "meridex: \"" << args.second << "\" is not a settings key (keys are element names)\n";
        return kUsage;
    }
    Settings settings;
    Load(settings, args.file);
    settings.SetString(args.second, args.value, args.saveNull);
    return Save(settings) ? kOk : kNo;
}

int ListProfiles(const Arguments& args) {
    Settings settings;
    Load(settings, args.file);
    if (args.json) {
        std::cout << "{\"profiles\": " << ProfilesJson(settings)
                  << ", \"current_profile\": " << CurrentJson(settings) << "}\n";
    } else {
        PrintProfiles(settings);
    }
    return kOk;
}

int ListFeatures(const Arguments& args) {
    Settings settings;
    Load(settings, args.file);
    const Profile profile =
        args.second.empty() ? settings.CurrentProfile() : settings.Profiles().Item(args.second);
    if (profile.IsNull()) {
        if (args.second.empty()) {
            std::cerr << "meridex: the settings have no current profile; name one\n";
        } else {
            std::cerr << "meridex: no profile named \"" << args.second << "\"\n";
        }
        return kNo;
    }
    if (args.json) {
        std::string out = "{\"profile\": " + JsonString(profile.Key()) +
                          ", \"current\": " + (IsCurrent(settings, profile) ? "true" : "false") +
                          ", \"features\": [";
        for (int i = 1; i <= profile.Count(); ++i) {
            const Feature feature = profile.Item(i);
            out += std::string(i > 1 ? ", " : "") + "{\"key\": " + JsonString(feature.Key()) +
                   ", \"available\": " + (feature.Available() ? "true" : "false") +
                   ", \"description\": " + JsonString(feature.Description()) + "}";
        }
        std::cout << out << "]}\n";
        return kOk;
    }
    std::cout << "Profile " << profile.Key() << (IsCurrent(settings, profile) ? " (current)" : "") << ":\n";
    for (int i = 1; i <= profile.Count(); ++i) {
        const Feature feature = profile.Item(i);
        std::cout << (feature.Available() ? "  [x] " : "  [ ] ") << std::left << std::setw(32)
                  << feature.Key() << ' ' << feature.Description() << '\n';
    }
    return kOk;
}

int Use(const Arguments& args) {
    Settings settings;
    Load(settings, args.file);
    const Profile profile = settings.Profiles().Item(args.second);
    if (profile.IsNull()) {
        std::cerr << "meridex: no profile named \"" << args.second << "\"\n";
        return kNo;
    }
    settings.setCurrentProfile(profile);
    if (!Save(settings)) return kNo;
    std::cout << "Current profile: " << profile.Key() << '\n';
    return kOk;
}

// The host's question: is this feature available to the current profile?
int Can(const Arguments& args) {
    Settings settings;
    if (!Load(settings, args.file)) return kUsage;
    return settings.CurrentProfile().FeatureAvailable(args.second) ? kOk : kNo;
}

using Handler = int (*)(const Arguments&);

// Arguments are checked here rather than by the parser, so a usage error
// always exits 2 (scripts tell it apart from "no").
CLI::App* AddCommand(CLI::App& parent, const std::string& name, const std::string& description,
                     std::initializer_list<std::string> positionals, Handler handler, int& exitCode,
                     const std::shared_ptr<Arguments>& args, std::size_t required) {
    CLI::App* command = parent.add_subcommand(name, description);
    command->allow_extras();
    std::string* targets[] = {&args->file, &args->second, &args->value};
    std::vector<CLI::Option*> options;
    for (const std::string& positional : positionals) {
        options.push_back(command->add_option(positional, *targets[options.size()]));
    }
    command->callback([command, handler, args, options, required, &exitCode] {
        std::size_t given = 0;
        while (given < options.size() && options[given]->count() > 0) ++given;
        if (!command->remaining().empty() || given < required) {
            std::cerr << "meridex settings " << command->get_name() << ": wrong arguments\n"
                      << command->help();
            exitCode = kUsage;
            return;
        }
        exitCode = handler(*args);
    });
    return command;
}

}  // namespace

void AddSettingsCommand(CLI::App& app, int& exitCode) {
    CLI::App* settings = app.add_subcommand(
        "settings", "Read and change a settings document and its user profiles");
    settings->require_subcommand(1);
    auto args = std::make_shared<Arguments>();

    CLI::App* show = AddCommand(*settings, "show", "Keys, profiles and the current profile", {"FILE"},
                                Show, exitCode, args, 1);
    show->add_flag("--json", args->json, "JSON output");

    CLI::App* get = AddCommand(*settings, "get", "Print the value of a key", {"FILE", "KEY"}, Get,
                               exitCode, args, 2);
    get->add_option("--default", args->defaultValue, "Printed when the key is missing");

    CLI::App* set = AddCommand(*settings, "set",
                               "Store a value and save (without --save-null, \"\" and \"0\" remove the key)",
                               {"FILE", "KEY", "VALUE"}, Set, exitCode, args, 3);
    set->add_flag("--save-null", args->saveNull, "Store the value even when it is empty or \"0\"");

    CLI::App* profiles = AddCommand(*settings, "profiles", "List the profiles", {"FILE"}, ListProfiles,
                                    exitCode, args, 1);
    profiles->add_flag("--json", args->json, "JSON output");

    CLI::App* features = AddCommand(*settings, "features",
                                    "List a profile's feature switches (default: the current profile)",
                                    {"FILE", "PROFILE"}, ListFeatures, exitCode, args, 1);
    features->add_flag("--json", args->json, "JSON output");

    AddCommand(*settings, "use", "Make a profile the current one and save", {"FILE", "PROFILE"}, Use,
               exitCode, args, 2);
    AddCommand(*settings, "can",
               "Exit 0 when the current profile has the feature available, 1 when not, 2 on errors",
               {"FILE", "FEATURE"}, Can, exitCode, args, 2);
}

}  // namespace meridex::cli
