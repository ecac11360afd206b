#include <iomanip>
#include <iostream>
#include <memory>
#include <optional>
#include <string>

#include "Cli.h"
#include "Commands.h"
#include <meridex/frame/Text.h>
#include <meridex/settings/Settings.h>
#include <meridex/settings/V4StandardProfiles.h>

namespace meridex::cli {

namespace {

constexpr std::string_view kRoot = "V4SETTINGS";
constexpr std::string_view kKind = "settings document";

struct Arguments {
    std::string file;
    std::string second;  // KEY, PROFILE or FEATURE
    std::string value;
    std::optional<std::string> defaultValue;
    bool saveNull = false;
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

// Commands that only read need the file, of its kind.
void LoadToRead(Settings& settings, const std::string& file) {
    RequireRead(file, kRoot, kKind);
    settings.LoadSettings(file);
}

// Commands that save may start a new file, but never replace one of another kind.
void LoadToChange(Settings& settings, const std::string& file) {
    RefuseToReplace(file, kRoot, kKind);
    settings.LoadSettings(file);
}

void Save(Settings& settings) {
    if (!settings.SaveSettings(""))
        throw Failure(kWriteFailed, "could not write " + settings.SettingsFile() + "; the file is unchanged");
    NoteSaved(settings.ConflictCopy());
}

Json CurrentJson(const Settings& settings) {
    const Profile current = settings.CurrentProfile();
    return current.IsNull() ? Json(nullptr) : Json(current.Key());
}

Json ProfilesJson(const Settings& settings) {
    Json out = Json::array();
    const Profiles profiles = settings.Profiles();
    for (int i = 1; i <= profiles.Count(); ++i) {
        const Profile profile = profiles.Item(i);
        const ProfileSummary summary = Summarise(profile);
        out.push_back({{"key", profile.Key()},
                       {"features", summary.features},
                       {"available", summary.available},
                       {"current", IsCurrent(settings, profile)}});
    }
    return out;
}

void PrintProfiles(const Settings& settings) {
    const Profiles profiles = settings.Profiles();
    if (profiles.Count() == 0) std::cout << "  (no profiles)\n";
    for (int i = 1; i <= profiles.Count(); ++i) {
        const Profile profile = profiles.Item(i);
        const ProfileSummary summary = Summarise(profile);
        std::cout << (IsCurrent(settings, profile) ? "* " : "  ") << std::left << std::setw(24) << profile.Key()
                  << ' ' << summary.available << " of " << summary.features << " features available\n";
    }
}

int Show(const Arguments& args) {
    Settings settings;
    LoadToRead(settings, args.file);
    const XmlNode root = settings.Root();
    if (JsonOutput()) {
        Json keys = Json::array();
        for (XmlNode child = root.FirstChildElement(); child; child = child.NextSiblingElement())
            if (child.Name() != "PROFILES") keys.push_back({{"key", child.Name()}, {"value", child.Text()}});
        PrintJson({{"file", args.file},
                   {"keys", keys},
                   {"profiles", ProfilesJson(settings)},
                   {"currentProfile", CurrentJson(settings)}});
        return kOk;
    }
    std::cout << "Settings file: " << args.file << "\nKeys:\n";
    for (XmlNode child = root.FirstChildElement(); child; child = child.NextSiblingElement())
        if (child.Name() != "PROFILES") std::cout << "  " << child.Name() << " = " << child.Text() << '\n';
    std::cout << "Profiles:\n";
    PrintProfiles(settings);
    const Profile current = settings.CurrentProfile();
    std::cout << "Current profile: " << (current.IsNull() ? "(none)" : current.Key()) << '\n';
    return kOk;
}

int Get(const Arguments& args) {
    if (!Settings::IsKey(args.second))
        throw Failure(kUsage, "\"" + args.second + "\" is not a settings key (keys are element names)");
    Settings settings;
    LoadToRead(settings, args.file);
    const bool found = !settings.Root().SelectSingle(args.second).IsNull();
    if (!found && !args.defaultValue)
        throw Failure(kNo, "no key " + args.second + " in " + args.file + " (--default gives a value instead)");
    const std::string value = found ? settings.GetString(args.second, "") : *args.defaultValue;
    if (JsonOutput())
        PrintJson({{"file", args.file}, {"key", args.second}, {"value", value}, {"found", found}});
    else
        std::cout << value << '\n';
    return kOk;
}

int Set(const Arguments& args) {
    if (!Settings::IsKey(args.second))
        throw Failure(kUsage, "\"" + args.second + "\" is not a settings key (keys are element names)");
    Settings settings;
    LoadToChange(settings, args.file);
    settings.SetString(args.second, args.value, args.saveNull);
    Save(settings);
    const bool stored = !settings.Root().SelectSingle(args.second).IsNull();
    if (JsonOutput())
        PrintJson({{"file", args.file}, {"key", args.second}, {"value", args.value}, {"stored", stored}});
    return kOk;
}

int ListProfiles(const Arguments& args) {
    Settings settings;
    LoadToRead(settings, args.file);
    if (JsonOutput())
        PrintJson({{"file", args.file}, {"profiles", ProfilesJson(settings)}, {"currentProfile", CurrentJson(settings)}});
    else
        PrintProfiles(settings);
    return kOk;
}

Profile NamedOrCurrent(const Settings& settings, const std::string& name) {
    const Profile profile = name.empty() ? settings.CurrentProfile() : settings.Profiles().Item(name);
    if (profile.IsNull())
        throw Failure(kNo, name.empty() ? "the settings in " + settings.SettingsFile() + " have no current profile; name one"
                                        : "no profile named \"" + name + "\" in " + settings.SettingsFile());
    return profile;
}

int ListFeatures(const Arguments& args) {
    Settings settings;
    LoadToRead(settings, args.file);
    const Profile profile = NamedOrCurrent(settings, args.second);
    if (JsonOutput()) {
        Json features = Json::array();
        for (int i = 1; i <= profile.Count(); ++i) {
            const Feature feature = profile.Item(i);
            features.push_back(
                {{"key", feature.Key()}, {"available", feature.Available()}, {"description", feature.Description()}});
        }
        PrintJson({{"profile", profile.Key()}, {"current", IsCurrent(settings, profile)}, {"features", features}});
        return kOk;
    }
    std::cout << "Profile " << profile.Key() << (IsCurrent(settings, profile) ? " (current)" : "") << ":\n";
    for (int i = 1; i <= profile.Count(); ++i) {
        const Feature feature = profile.Item(i);
        std::cout << (feature.Available() ? "  [x] " : "  [ ] ") << std::left << std::setw(32) << feature.Key()
                  << ' ' << feature.Description() << '\n';
    }
    return kOk;
}

int Use(const Arguments& args) {
    Settings settings;
    LoadToChange(settings, args.file);
    const Profile profile = settings.Profiles().Item(args.second);
    if (profile.IsNull()) throw Failure(kNo, "no profile named \"" + args.second + "\" in " + args.file);
    settings.setCurrentProfile(profile);
    Save(settings);
    if (JsonOutput())
        PrintJson({{"file", args.file}, {"currentProfile", profile.Key()}});
    else
        std::cout << "Current profile: " << profile.Key() << '\n';
    return kOk;
}

bool InCatalogue(std::string_view key) {
    for (const auto& entry : V4StandardProfiles::Catalogue())
        if (Text::EqualsIgnoreCase(entry.key, key)) return true;
    return false;
}

// The host's question: is this feature available to the current profile?
int Can(const Arguments& args) {
    Settings settings;
    LoadToRead(settings, args.file);
    const Profile current = settings.CurrentProfile();
    if (current.IsNull()) throw Failure(kNo, "the settings in " + args.file + " have no current profile");
    if (!current.FeatureExists(args.second) && !InCatalogue(args.second))
        throw Failure(kUnknownFeature, "\"" + args.second + "\" is not a known feature (see meridex settings features " +
                                           args.file + ")");
    const bool available = current.FeatureAvailable(args.second);
    if (JsonOutput())
        PrintJson({{"feature", args.second}, {"profile", current.Key()}, {"available", available}});
    return available ? kOk : kNo;
}

using Handler = int (*)(const Arguments&);

CLI::App* AddCommand(CLI::App& parent, const std::string& name, const std::string& description,
                     std::initializer_list<std::string> positionals, std::size_t required, Handler handler,
                     int& exitCode, const std::shared_ptr<Arguments>& args) {
    CLI::App* command = parent.add_subcommand(name, description);
    std::string* targets[] = {&args->file, &args->second, &args->value};
    std::size_t i = 0;
    for (const std::string& positional : positionals) {
        CLI::Option* option = command->add_option(positional, *targets[i]);
        if (i++ < required) option->required();
    }
    AddJsonFlag(command);
    command->callback([handler, args, &exitCode] { exitCode = handler(*args); });
    return command;
}

}  // namespace

void AddSettingsCommand(CLI::App& app, int& exitCode) {
    CLI::App* settings = app.add_subcommand("settings", "Read and change a settings document and its user profiles");
    settings->require_subcommand(1);
    auto args = std::make_shared<Arguments>();

    AddCommand(*settings, "show", "Keys, profiles and the current profile", {"FILE"}, 1, Show, exitCode, args);
    CLI::App* get = AddCommand(*settings, "get", "Print the value of a key (exit 1 when it is missing)",
                               {"FILE", "KEY"}, 2, Get, exitCode, args);
    get->add_option("--default", args->defaultValue, "Printed (exit 0) when the key is missing");
    CLI::App* set = AddCommand(*settings, "set",
                               "Store a value and save (without --save-null, \"\" and \"0\" remove the key)",
                               {"FILE", "KEY", "VALUE"}, 3, Set, exitCode, args);
    set->add_flag("--save-null", args->saveNull, "Store the value even when it is empty or \"0\"");
    AddForceFlag(set);
    AddCommand(*settings, "profiles", "List the profiles", {"FILE"}, 1, ListProfiles, exitCode, args);
    AddCommand(*settings, "features", "List a profile's feature switches (default: the current profile)",
               {"FILE", "PROFILE"}, 1, ListFeatures, exitCode, args);
    CLI::App* use = AddCommand(*settings, "use", "Make a profile the current one and save", {"FILE", "PROFILE"}, 2,
                               Use, exitCode, args);
    AddForceFlag(use);
    AddCommand(*settings, "can",
               "Exit 0 when the current profile has the feature available, 1 when not, 5 when no one knows it",
               {"FILE", "FEATURE"}, 2, Can, exitCode, args);
}

}  // namespace meridex::cli
