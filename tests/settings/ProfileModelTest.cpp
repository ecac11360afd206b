// Tests of features, profiles and the standard profiles built in.
#include <gtest/gtest.h>

#include <set>
#include <string>

#include <meridex/frame/XmlDocument.h>
#include <meridex/settings/Profiles.h>
#include <meridex/settings/V4StandardProfiles.h>

using namespace meridex;

namespace {

Feature MakeFeature(const std::string& key, bool available) {
    Feature feature;
    feature.setKey(key);
    feature.setAvailable(available);
    return feature;
}

std::set<std::string> AvailableKeys(const Profile& profile) {
    std::set<std::string> keys;
    for (int i = 1; i <= profile.Count(); ++i) {
        if (profile.Item(i).Available()) keys.insert(profile.Item(i).Key());
    }
    return keys;
}

}  // namespace

TEST(Feature, FieldsAreLiveViewsAndCloneIsIndependent) {
    Feature feature;
    const Feature other(feature.XMLNode());
    feature.setDescription("Unload");
    feature.setAvailable(true);
    EXPECT_EQ(other.Description(), "Unload");
    EXPECT_EQ(feature.XMLNode().SelectSingle("AVAILABLE").Text(), "-1");

    // Unavailable means no AVAILABLE element at all.
    other.setAvailable(false);
    EXPECT_TRUE(feature.XMLNode().SelectSingle("AVAILABLE").IsNull());
    feature.setDescription("");  // always written, an empty text included
    EXPECT_FALSE(feature.XMLNode().SelectSingle("DESCRIPTION").IsNull());

    // AVAILABLE is read as a number, not as a word.
    other.setAvailable(true);
    feature.XMLNode().SelectSingle("AVAILABLE").setText("2.5");
    EXPECT_TRUE(feature.Available());
    feature.XMLNode().SelectSingle("AVAILABLE").setText("True");
    EXPECT_FALSE(feature.Available());

    feature.setDescription("before");
    const Feature copy = feature.Clone();
    EXPECT_TRUE(copy.XMLNode().Parent().IsNull());
    copy.setDescription("after");
    EXPECT_EQ(feature.Description(), "before");

    const Feature none{XmlNode{}};
    none.setKey("X");
    EXPECT_EQ(none.Key(), "");
    EXPECT_TRUE(none.Clone().IsNull());
}

TEST(Profile, ItemAddRemoveAndClear) {
    Profile profile;
    profile.Add(MakeFeature("k", false));
    profile.Add(MakeFeature("ÄRZTE_LIST", false));
    EXPECT_TRUE(profile.Item(0).IsNull());
    EXPECT_TRUE(profile.Item(3).IsNull());
    EXPECT_EQ(profile.Item("ärzte_list").XMLNode(), profile.Item(2).XMLNode());
    EXPECT_TRUE(profile.FeatureExists("Ärzte_list"));
    EXPECT_FALSE(profile.FeatureAvailable("Ärzte_list"));
    EXPECT_FALSE(profile.FeatureExists("V4_UNLOAD_DATA"));

    // With a key the new feature replaces the old one and goes to the end.
    const Feature replacement = MakeFeature("unused", true);
    profile.Add(replacement, "K");
    ASSERT_EQ(profile.Count(), 2);
    EXPECT_EQ(profile.Item(2).XMLNode(), replacement.XMLNode());
    EXPECT_TRUE(profile.FeatureAvailable("k"));

    // Without a key duplicates are kept; the first one wins.
    profile.Add(MakeFeature("ärzte_list", true));
    EXPECT_EQ(profile.Count(), 3);
    EXPECT_FALSE(profile.FeatureAvailable("ÄRZTE_LIST"));

    Profile second;
    second.Add(profile.Item("K"));  // a feature of another profile moves
    EXPECT_EQ(profile.Count(), 2);
    profile.Remove("ärzte_list");
    profile.Remove(7);
    EXPECT_EQ(profile.Count(), 1);
    profile.Clear();
    EXPECT_EQ(profile.Count(), 0);
}

TEST(Profile, ViewsOfAParsedElementStayInStep) {
    const XmlDocument document = XmlDocument::Parse(
        "<PROFILE><KEY>Field Crew</KEY><FEATURE><KEY>V4_UNLOAD_DATA</KEY><AVAILABLE>-1</AVAILABLE>"
        "</FEATURE><FEATURE><KEY>ED_<!-- split -->EVENTS</KEY><AVAILABLE>1</AVAILABLE></FEATURE>"
        "<NOTE>kept</NOTE></PROFILE>");
    const Profile first(document.DocumentElement());
    const Profile second(document.DocumentElement());
    const Feature unload = first.Item("V4_UNLOAD_DATA");
    EXPECT_TRUE(first.FeatureAvailable("ed_events"));  // a key in more than one text node
    unload.setAvailable(false);
    EXPECT_FALSE(second.FeatureAvailable("V4_UNLOAD_DATA"));
    first.Clear();
    EXPECT_EQ(second.Count(), 0);
    EXPECT_FALSE(document.DocumentElement().SelectSingle("NOTE").IsNull());
    EXPECT_EQ(unload.Key(), "V4_UNLOAD_DATA");  // a removed feature stays usable
}

TEST(Profiles, CollectionOfProfiles) {
    Profiles profiles;
    Profile admin;
    profiles.Add(admin, "ADMINISTRATOR");
    profiles.Add(Profile(), "Ärzte");
    profiles.Add(Profile(), "ärzte");  // duplicates are not refused
    ASSERT_EQ(profiles.Count(), 3);
    EXPECT_EQ(profiles.Item("administrator").XMLNode(), admin.XMLNode());
    EXPECT_TRUE(profiles.Item(0).IsNull());
    EXPECT_TRUE(profiles.Item(4).IsNull());

    profiles.Remove("ÄRZTE");
    EXPECT_EQ(profiles.Item(2).Key(), "ärzte");
    profiles.Clear();
    EXPECT_EQ(profiles.Count(), 0);
}

TEST(V4StandardProfiles, AllListTheCatalogueInOrderAndSwitchOffTheirColumns) {
    const Profile admin = V4StandardProfiles::GetDefaultAdministratorProfile();
    const Profile standard = V4StandardProfiles::GetDefaultProfile();
    const Profile lockdown = V4StandardProfiles::GetDefaultLockdownProfile();
    const std::set<std::string> lockdownOn{
        "V4_SELECT_SCHEME", "V4_PROGRAM_LOGGER", "V4_INIT_NMM",     "V4_UNLOAD_DATA",
        "V4_VIEW_DATA",     "V4_TEST_MODE",      "V4_CONNECTION",   "V4_SDI_TEST",
        "V4_VELOCITY_TRACE", "V4_CORRECT_TIME",  "ED_SETTINGS",     "ED_INSTRUMENTS",
        "ED_LOGBUFFERS"};
    EXPECT_EQ(AvailableKeys(lockdown), lockdownOn);
    EXPECT_EQ(AvailableKeys(standard).size(), 36u);
    EXPECT_TRUE(standard.FeatureAvailable("ED_EVENTS"));
    for (const auto& [profile, key] :
         {std::pair{admin, "ADMINISTRATOR"}, {standard, "DEFAULT"}, {lockdown, "LOCKDOWN"}}) {
        EXPECT_EQ(profile.Key(), key);
        ASSERT_EQ(profile.Count(), 44) << key;
        EXPECT_EQ(profile.Item(26).Key(), "ED_LIBRARY_BAR") << key;  // one order for all
        EXPECT_EQ(profile.Item(44).Key(), "ED_SHOW_ADVANCED_PROFILE_BUTTON") << key;
    }
    EXPECT_EQ(AvailableKeys(admin).size(), 44u);
    // The texts users have always seen, odd ones included.
    EXPECT_EQ(admin.Item("V4_VELOCITY_TRACE").Description(), admin.Item("V4_COMMS_WINDOW").Description());
    EXPECT_EQ(admin.Item("V4_UPGRADE_FIRMWARE").Description(), "Show \"Upgrade Firwmare\" button / menu option");
    EXPECT_EQ(admin.Item("V4_MODEM_SETUP").Description(), "Show \"Modem Setup\" button /menu option");

    // Children in the order the stored documents have them.
    const XmlNode first = admin.Item(1).XMLNode().FirstChildElement();
    const XmlNode second = first.NextSiblingElement();
    EXPECT_EQ(first.Name() + " " + second.Name() + " " + second.NextSiblingElement().Name(),
              "AVAILABLE DESCRIPTION KEY");

    // Each call builds a new profile.
    standard.Item("V4_UNLOAD_DATA").setAvailable(false);
    EXPECT_TRUE(V4StandardProfiles::GetDefaultProfile().FeatureAvailable("V4_UNLOAD_DATA"));
}
