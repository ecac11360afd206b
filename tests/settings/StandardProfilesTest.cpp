#include <gtest/gtest.h>

#include <set>
#include <string>

#include <meridex/settings/V4StandardProfiles.h>

namespace meridex {
namespace {

std::set<std::string> AvailableKeys(const Profile& profile) {
    std::set<std::string> keys;
    for (int i = 1; i <= profile.Count(); ++i) {
        if (profile.Item(i).Available()) keys.insert(profile.Item(i).Key());
    }
    return keys;
}

TEST(V4StandardProfiles, AdministratorIsTheCatalogue) {
    const Profile admin = V4StandardProfiles::GetDefaultAdministratorProfile();
    EXPECT_EQ(admin.Key(), "ADMINISTRATOR");
    ASSERT_EQ(admin.Count(), 44);
    EXPECT_EQ(AvailableKeys(admin).size(), 44u);
    EXPECT_EQ(admin.Item(44).Key(), "ED_SHOW_ADVANCED_PROFILE_BUTTON");
    // The texts users have always seen, odd ones included.
    EXPECT_EQ(admin.Item("V4_VELOCITY_TRACE").Description(),
              admin.Item("V4_COMMS_WINDOW").Description());
    EXPECT_EQ(admin.Item("V4_UPGRADE_FIRMWARE").Description(),
              "Show \"Upgrade Firwmare\" button / menu option");
    EXPECT_EQ(admin.Item("V4_MODEM_SETUP").Description(), "Show \"Modem Setup\" button /menu option");

    // Children in the order the stored documents have them.
    const XmlNode first = admin.Item(1).XMLNode().FirstChildElement();
    EXPECT_EQ(first.Name(), "AVAILABLE");
    EXPECT_EQ(first.NextSiblingElement().Name(), "DESCRIPTION");
    EXPECT_EQ(first.NextSiblingElement().NextSiblingElement().Name(), "KEY");
}

TEST(V4StandardProfiles, DefaultAndLockdownSwitchOffTheirColumns) {
    const Profile standard = V4StandardProfiles::GetDefaultProfile();
    const Profile lockdown = V4StandardProfiles::GetDefaultLockdownProfile();
    EXPECT_EQ(standard.Key(), "DEFAULT");
    EXPECT_EQ(lockdown.Key(), "LOCKDOWN");
    EXPECT_EQ(standard.Count(), 44);
    EXPECT_EQ(AvailableKeys(standard).size(), 36u);
    EXPECT_TRUE(standard.FeatureAvailable("ED_EVENTS"));
    EXPECT_EQ(standard.Item(26).Key(), "ED_LIBRARY_BAR");  // order unchanged

    const std::set<std::string> lockdownOn{
        "V4_SELECT_SCHEME", "V4_PROGRAM_LOGGER", "V4_INIT_NMM",     "V4_UNLOAD_DATA",
        "V4_VIEW_DATA",     "V4_TEST_MODE",      "V4_CONNECTION",   "V4_SDI_TEST",
        "V4_VELOCITY_TRACE", "V4_CORRECT_TIME",  "ED_SETTINGS",     "ED_INSTRUMENTS",
        "ED_LOGBUFFERS"};
    EXPECT_EQ(lockdown.Count(), 44);
    EXPECT_EQ(AvailableKeys(lockdown), lockdownOn);

    // Each call builds a new profile.
    standard.Item("V4_UNLOAD_DATA").setAvailable(false);
    EXPECT_TRUE(V4StandardProfiles::GetDefaultProfile().FeatureAvailable("V4_UNLOAD_DATA"));
}

}  // namespace
}  // namespace meridex
