#include <gtest/gtest.h>

#include "frame/XmlDocument.h"
#include "settings/Feature.h"
#include "settings/Profile.h"
#include "settings/Profiles.h"

namespace meridex {
namespace {

Feature MakeFeature(const std::string& key, bool available) {
    Feature feature;
    feature.setKey(key);
    feature.setAvailable(available);
    return feature;
}

TEST(Feature, FieldsAreLiveViewsOfTheElement) {
    Feature feature;
    ASSERT_FALSE(feature.IsNull());
    EXPECT_EQ(feature.XMLNode().Name(), "FEATURE");
    EXPECT_FALSE(feature.Available());

    const Feature other(feature.XMLNode());
    feature.setKey("V4_UNLOAD_DATA");
    feature.setDescription("Unload");
    feature.setAvailable(true);
    EXPECT_EQ(other.Key(), "V4_UNLOAD_DATA");
    EXPECT_EQ(other.Description(), "Unload");
    EXPECT_TRUE(other.Available());
    EXPECT_EQ(feature.XMLNode().SelectSingle("AVAILABLE").Text(), "-1");

    // Unavailable means no AVAILABLE element at all.
    other.setAvailable(false);
    EXPECT_FALSE(feature.Available());
    EXPECT_TRUE(feature.XMLNode().SelectSingle("AVAILABLE").IsNull());
    EXPECT_EQ(feature.XMLNode().Xml().find("AVAILABLE"), std::string::npos);

    // Descriptions and keys are always written, empty ones included.
    feature.setDescription("");
    EXPECT_FALSE(feature.XMLNode().SelectSingle("DESCRIPTION").IsNull());

    // AVAILABLE is read as a number: any non-zero one, not the word.
    other.setAvailable(true);
    feature.XMLNode().SelectSingle("AVAILABLE").SetText("2.5");
    EXPECT_TRUE(feature.Available());
    feature.XMLNode().SelectSingle("AVAILABLE").SetText("True");
    EXPECT_FALSE(feature.Available());
}

TEST(Feature, CloneIsIndependentAndNullIsInert) {
    const Feature original = MakeFeature("K", true);
    original.setDescription("before");
    const Feature copy = original.Clone();
    ASSERT_FALSE(copy.IsNull());
    EXPECT_TRUE(copy.XMLNode().Parent().IsNull());
    copy.setDescription("after");
    copy.setAvailable(false);
    EXPECT_EQ(original.Description(), "before");
    EXPECT_TRUE(original.Available());
    EXPECT_EQ(copy.Key(), "K");

    const Feature none{XmlNode{}};
    EXPECT_TRUE(none.IsNull());
    none.setKey("X");
    none.setAvailable(true);
    EXPECT_EQ(none.Key(), "");
    EXPECT_FALSE(none.Available());
    EXPECT_TRUE(none.Clone().IsNull());
}

TEST(Profile, ItemByPositionOrKeyIgnoringCase) {
    Profile profile;
    profile.Add(MakeFeature("V4_SELECT_SCHEME", true));
    profile.Add(MakeFeature("ÄRZTE_LIST", false));
    profile.Add(MakeFeature("V4_CONFIGURE", true));
    ASSERT_EQ(profile.Count(), 3);

    EXPECT_EQ(profile.Item(1).Key(), "V4_SELECT_SCHEME");
    EXPECT_EQ(profile.Item(3).Key(), "V4_CONFIGURE");
    EXPECT_TRUE(profile.Item(0).IsNull());
    EXPECT_TRUE(profile.Item(4).IsNull());
    EXPECT_TRUE(profile.Item(-1).IsNull());
    EXPECT_EQ(profile.Item("v4_configure").Key(), "V4_CONFIGURE");
    EXPECT_EQ(profile.Item("ärzte_list").Key(), "ÄRZTE_LIST");
    EXPECT_TRUE(profile.Item("V4_CONFIGUR").IsNull());

    EXPECT_TRUE(profile.FeatureExists("v4_select_scheme"));
    EXPECT_TRUE(profile.FeatureAvailable("v4_select_scheme"));
    EXPECT_TRUE(profile.FeatureExists("Ärzte_list"));
    EXPECT_FALSE(profile.FeatureAvailable("Ärzte_list"));
    EXPECT_FALSE(profile.FeatureExists("V4_UNLOAD_DATA"));
    EXPECT_FALSE(profile.FeatureAvailable("V4_UNLOAD_DATA"));
    // The Kelvin sign folds to "k": Unicode folding, not just ASCII.
    profile.Add(MakeFeature("K_KEY", true));
    EXPECT_TRUE(profile.FeatureAvailable("\u212A_KEY"));
}

TEST(Profile, AddWithKeyReplacesAndAddWithoutKeyAppends) {
    Profile profile;
    profile.Add(MakeFeature("k", false));
    profile.Add(MakeFeature("OTHER", false));

    const Feature replacement = MakeFeature("unused", true);
    profile.Add(replacement, "K");
    ASSERT_EQ(profile.Count(), 2);
    EXPECT_EQ(profile.Item(2).Key(), "K");
    EXPECT_TRUE(profile.FeatureAvailable("k"));
    EXPECT_EQ(profile.Item(2).XMLNode(), replacement.XMLNode());

    profile.Add(MakeFeature("OTHER", true));
    EXPECT_EQ(profile.Count(), 3);
    EXPECT_FALSE(profile.FeatureAvailable("OTHER"));  // the first one wins

    // A feature of another profile moves.
    Profile second;
    second.Add(profile.Item("K"));
    EXPECT_EQ(profile.Count(), 2);
    EXPECT_EQ(second.Count(), 1);

    profile.Remove("other");
    EXPECT_EQ(profile.Count(), 1);
    profile.Remove("missing");
    profile.Remove(7);
    EXPECT_EQ(profile.Count(), 1);
    profile.Clear();
    EXPECT_EQ(profile.Count(), 0);
}

TEST(Profile, ViewsSeeChangesMadeThroughOtherViews) {
    const XmlDocument document = XmlDocument::Parse(
        "<PROFILE><KEY>Field Crew</KEY><FEATURE><KEY>V4_UNLOAD_DATA</KEY><AVAILABLE>-1</AVAILABLE>"
        "</FEATURE><FEATURE><KEY>ED_<!-- split -->EVENTS</KEY><AVAILABLE>1</AVAILABLE></FEATURE>"
        "<NOTE>kept</NOTE></PROFILE>");
    ASSERT_FALSE(document.IsNull());
    const Profile first(document.DocumentElement());
    const Profile second(document.DocumentElement());
    const Feature unload = first.Item("V4_UNLOAD_DATA");
    EXPECT_TRUE(first.FeatureAvailable("ed_events"));  // a key in more than one text node
    EXPECT_TRUE(second.FeatureAvailable("V4_UNLOAD_DATA"));
    unload.setAvailable(false);
    EXPECT_FALSE(second.FeatureAvailable("V4_UNLOAD_DATA"));
    second.setKey("Office");
    EXPECT_EQ(first.Key(), "Office");
    first.Clear();
    EXPECT_EQ(second.Count(), 0);
    EXPECT_FALSE(document.DocumentElement().SelectSingle("NOTE").IsNull());
    // A removed feature stays usable through its view.
    EXPECT_EQ(unload.Key(), "V4_UNLOAD_DATA");
}

TEST(Profiles, CollectionOfProfiles) {
    Profiles profiles;
    EXPECT_EQ(profiles.XMLNode().Name(), "PROFILES");
    Profile admin;
    profiles.Add(admin, "ADMINISTRATOR");
    profiles.Add(Profile(), "Ärzte");
    profiles.Add(Profile(), "ärzte");  // duplicates are not refused
    ASSERT_EQ(profiles.Count(), 3);
    EXPECT_EQ(profiles.Item("administrator").XMLNode(), admin.XMLNode());
    EXPECT_EQ(profiles.Item("ÄRZTE").XMLNode(), profiles.Item(2).XMLNode());
    EXPECT_TRUE(profiles.Item(4).IsNull());

    profiles.Remove("ÄRZTE");
    EXPECT_EQ(profiles.Item(2).Key(), "ärzte");
    profiles.Clear();
    EXPECT_EQ(profiles.Count(), 0);
    EXPECT_EQ(admin.Key(), "ADMINISTRATOR");  // a removed profile stays usable
}

}  // namespace
}  // namespace meridex
