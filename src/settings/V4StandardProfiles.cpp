#include <meridex/settings/V4StandardProfiles.h>

#include <array>

namespace meridex {

namespace {

using Entry = V4StandardProfiles::CatalogueEntry;

// Descriptions are the users' texts, odd spellings included: V4_VELOCITY_TRACE
// shares the comms window's text, "Firwmare" and "/menu option" are as shipped.
constexpr std::array<Entry, 44> kCatalogue{{
    {"V4_SELECT_SCHEME", "Show \"Select\" button and menu option"},
    {"V4_PROGRAM_LOGGER", "Show \"Program\" button and menu option"},
    {"V4_INIT_NMM", "Show \"Initialise / Configure NMM\" button and menu option"},
    {"V4_UNLOAD_DATA", "Show \"Unload\" button / menu option"},
    {"V4_VIEW_DATA", "Show \"View Data\" button / menu option"},
    {"V4_TEST_MODE", "Show \"Test Mode\" button / menu option"},
    {"V4_CONNECTION", "Show \"Connection\" button / menu option"},
    {"V4_SCHEME_EDITOR", "Show \"Scheme Editor\" button / menu option"},
    {"V4_ALLOW_DELETE", "Allow user to delete schemes from the \"Select Scheme\" dialog"},
    {"V4_COMMS_WINDOW", "Show \"Comms Window\" button / menu option"},
    {"V4_UPGRADE_FIRMWARE", "Show \"Upgrade Firwmare\" button / menu option"},
    {"V4_SDI_TEST", "Show \"SDI-12 Test\" button / menu option"},
    {"V4_VELOCITY_TRACE", "Show \"Comms Window\" button / menu option"},
    {"V4_MODEM_SETUP", "Show \"Modem Setup\" button /menu option"},
    {"V4_EDIT_SHORTCUTS", "Show \"New Shortcuts\" button"},
    {"V4_ENABLE_SHORTCUTS", "Enable protected shortcut buttons"},
    {"V4_CONFIGURE", "Show \"Configure V4\" menu option"},
    {"V4_COMMS_MAP", "Show \"Communications Map\" menu option"},
    {"V4_CORRECT_TIME", "Allow \"Correct Time\" Test Mode menu option"},
    {"V4_TESTMODE_PUT", "Allow \"Put\" menu option"},
    {"V4_EDIT_TESTMODE_CHANNELS", "Allow \"Edit Channels\" Test Mode menu option"},
    {"V4_STOP_LOGGING", "Allow \"Stop Logging\" Test Mode menu option"},
    {"V4_SET_TESTMODE_CHANNEL", "Allow \"Set Channel\" by double click on Test Mode channel"},
    {"V4_ENABLE_TESTMODE_BUTTONS", "Enable / disabled locked Test Mode buttons"},
    {"V4_ENABLE_DIAGNOSTICS_BUTTON",
     "Enable / disable the \"Diagnostics\" button in the communications window"},
    {"ED_LIBRARY_BAR", "Show Scheme Editor \"Library\" bar"},
    {"ED_CODE_EDITOR_BAR", "Show Scheme Editor \"Code\" bar"},
    {"ED_XML_BAR", "Show Scheme Editor \"XML\" bar"},
    {"ED_OPEN_SCHEME", "Show Scheme Editor \"Open\" button and menu options"},
    {"ED_SAVE_SCHEME", "Show Scheme Editor \"Save\" button and menu options"},
    {"ED_NEW_SCHEME", "Show Scheme Editor \"New\" button and menu options"},
    {"ED_DELETE_SCHEME", "Show Scheme Editor \"Delete\" button and menu options"},
    {"ED_SAVE_SCHEME_AS", "Show Scheme Editor \"Save as\" menu option"},
    {"ED_REBUILD_SCHEME", "Show Scheme Editor \"Rebuild scheme\" menu option"},
    {"ED_PORT_SCHEME", "Show Scheme Editor \"Port scheme\" menu option"},
    {"ED_SETTINGS", "Show Scheme Editor \"Settings\" button and menu option"},
    {"ED_INSTRUMENTS", "Show Scheme Editor \"Instruments\" button and menu option"},
    {"ED_LOGBUFFERS", "Show Scheme Editor \"Log Buffer\" button and menu option"},
    {"ED_EVENTS", "Show Scheme Editor \"Events\" button and menu option"},
    {"ED_INSTRUMENT_EDITOR", "Show Scheme Editor Library \"Instruments\" button"},
    {"ED_SYSTEM_EDITOR", "Show Scheme Editor Library \"Systems\" button"},
    {"ED_LOGGER_EDITOR", "Show Scheme Editor Library \"Loggers\" button and menu option"},
    {"ED_SHOW_COMPILER_OUTPUT", "Show the compiler output window on Scheme Save"},
    {"ED_SHOW_ADVANCED_PROFILE_BUTTON", "Show the \"Advanced\" button in the Settings window"},
}};

// The switches applied to the administrator profile, in the order the
// profiles have always been built.
constexpr std::array<std::pair<std::string_view, bool>, 9> kDefaultSwitches{{
    {"ED_LIBRARY_BAR", false},
    {"ED_CODE_EDITOR_BAR", false},
    {"ED_XML_BAR", false},
    {"ED_EVENTS", true},
    {"ED_INSTRUMENT_EDITOR", false},
    {"ED_SYSTEM_EDITOR", false},
    {"ED_LOGGER_EDITOR", false},
    {"ED_SHOW_COMPILER_OUTPUT", false},
    {"ED_SHOW_ADVANCED_PROFILE_BUTTON", false},
}};

constexpr std::array<std::string_view, 31> kLockdownOff{
    "V4_SCHEME_EDITOR",        "V4_ALLOW_DELETE",
    "V4_COMMS_WINDOW",         "V4_UPGRADE_FIRMWARE",
    "V4_EDIT_SHORTCUTS",       "V4_ENABLE_SHORTCUTS",
    "V4_CONFIGURE",            "V4_COMMS_MAP",
    "V4_MODEM_SETUP",          "V4_ENABLE_DIAGNOSTICS_BUTTON",
    "V4_TESTMODE_PUT",         "V4_EDIT_TESTMODE_CHANNELS",
    "V4_STOP_LOGGING",         "V4_SET_TESTMODE_CHANNEL",
    "V4_ENABLE_TESTMODE_BUTTONS", "ED_OPEN_SCHEME",
    "ED_DELETE_SCHEME",        "ED_NEW_SCHEME",
    "ED_REBUILD_SCHEME",       "ED_PORT_SCHEME",
    "ED_SAVE_SCHEME",          "ED_SAVE_SCHEME_AS",
    "ED_LIBRARY_BAR",          "ED_CODE_EDITOR_BAR",
    "ED_XML_BAR",              "ED_EVENTS",
    "ED_INSTRUMENT_EDITOR",    "ED_SYSTEM_EDITOR",
    "ED_LOGGER_EDITOR",        "ED_SHOW_COMPILER_OUTPUT",
    "ED_SHOW_ADVANCED_PROFILE_BUTTON",
};

// Children end up in the order AVAILABLE, DESCRIPTION, KEY, as the stored
// documents have them.
void AddFeature(const Profile& profile, std::string_view key, bool available,
                std::string_view description) {
    Feature feature;
    feature.setAvailable(available);
    feature.setDescription(description);
    feature.setKey(key);
    profile.Add(feature);
}

}  // namespace

std::span<const V4StandardProfiles::CatalogueEntry> V4StandardProfiles::Catalogue() noexcept {
    return kCatalogue;
}

Profile V4StandardProfiles::GetDefaultAdministratorProfile() {
    Profile profile;
    profile.setKey("ADMINISTRATOR");
    for (const Entry& entry : kCatalogue) AddFeature(profile, entry.key, true, entry.description);
    return profile;
}

Profile V4StandardProfiles::GetDefaultProfile() {
    Profile profile = GetDefaultAdministratorProfile();
    profile.setKey("DEFAULT");
    for (const auto& [key, available] : kDefaultSwitches) profile.Item(key).setAvailable(available);
    return profile;
}

Profile V4StandardProfiles::GetDefaultLockdownProfile() {
    Profile profile = GetDefaultAdministratorProfile();
    profile.setKey("LOCKDOWN");
    for (std::string_view key : kLockdownOff) profile.Item(key).setAvailable(false);
    return profile;
}

}  // namespace meridex
