#include <gtest/gtest.h>

#include "CommsTestSupport.h"
#include <meridex/comms/XmlSchemeFile.h>
#include <meridex/frame/Error.h>

using namespace meridex;
using namespace meridex::test;

namespace {

std::string Profile(const std::string& type, const std::string& method, const std::string& port,
                    const std::string& extra = "") {
    return "<PROFILE><NAME>" + method + " " + port + "</NAME><TYPE>" + type + "</TYPE><METHOD>" + method +
           "</METHOD><COMMPORT>" + port + "</COMMPORT>" + extra + "</PROFILE>";
}
std::string Direct(const std::string& port, const std::string& extra = "") {
    return Profile("RS232", "DIRECT", port, extra);
}

struct Mapping : CommsFixture {
    using CommsFixture::CommsFixture;

    std::unique_ptr<CommsProfileManager> Map(const std::string& profiles) { return MapOf(*this, profiles); }
    XmlNode Scheme(const std::string& profiles) {
        std::string file = dir.Write("Hill.XML", "<SCHEME><NAME>Hill</NAME><COMMSPROFILES>" + profiles +
                                                     "</COMMSPROFILES></SCHEME>");
        EXPECT_TRUE(scheme.Open(file));
        return scheme.CommsProfiles();
    }
    XmlSchemeFile scheme;
};

}  // namespace

TEST(MapScheme, DirectCablesFollowThisPc) {
    Mapping f{1, 3};
    auto m = f.Map(Direct("3") + Direct("1", "<ORVABT>True</ORVABT>"));
    XmlNode list = f.Scheme(Direct("1", "<KEY>PROFILE0</KEY>") + Direct("9", "<KEY>PROFILE2</KEY>"));
    m->MapSchemeCommsProfiles(f.scheme);
    EXPECT_EQ(Fields(list, "COMMPORT"), (std::vector<std::string>{"1", "3"}));  // the map has nothing else
    EXPECT_EQ(Fields(list, "ORVABT"), (std::vector<std::string>{"True", ""}));
    // The smallest key free in the scheme once the copy is in it with its map key PROFILE1.
    EXPECT_EQ(Fields(list, "KEY"), (std::vector<std::string>{"PROFILE0", "PROFILE2"}));

    // A hidden counterpart removes the scheme's profile and is not added.
    Mapping g{1, 3};
    auto n = g.Map(Direct("1", "<HIDE>-1</HIDE>") + Direct("3", "<HIDE>False</HIDE>") +
                   "<PROFILE><NAME>Net</NAME><TYPE>IP</TYPE><METHOD>UDP</METHOD></PROFILE>");
    XmlNode other = g.Scheme(Direct("1") + "<PROFILE><NAME>Own</NAME><TYPE>IP</TYPE><METHOD>UDP</METHOD></PROFILE>");
    n->MapSchemeCommsProfiles(g.scheme);
    EXPECT_EQ(Fields(other, "NAME"), (std::vector<std::string>{"Own", "DIRECT 3"}));
}

TEST(MapScheme, SwitchSettingsOfRemovedCablesGoToAddedOnesAndTheLastOneRepeats) {
    Mapping f{2, 3, 4};
    auto m = f.Map(Direct("2", "<TELSWITCH/>") + Direct("3", "<TELSWITCH/>") + Direct("4", "<TELSWITCH/>"));
    XmlNode list = f.Scheme(Direct("7", "<TELSWITCH>A</TELSWITCH>") + Direct("8", "<TELSWITCH>B</TELSWITCH>"));
    m->MapSchemeCommsProfiles(f.scheme);
    EXPECT_EQ(Fields(list, "TELSWITCH"), (std::vector<std::string>{"A", "B", "B"}));
}

TEST(MapScheme, PhoneModemsAreReplacedByThisPcsModemsCarryingTheNumber) {
    Mapping f{1};
    auto m = f.Map(Profile("RS232", "PHONEMODEM", "1", "<TELSWITCH/><PHONENUMBER/>") +
                   Profile("RS232", "PHONEMODEM", "2", "<TELSWITCH/><PHONENUMBER/>"));
    XmlNode list = f.Scheme(Profile("RS232", "PHONEMODEM", "1") +  // same port and name: kept
                            Profile("RS232", "PHONEMODEM", "5", "<TELSWITCH>9</TELSWITCH><PHONENUMBER>0123|4</PHONENUMBER>"));
    m->MapSchemeCommsProfiles(f.scheme);
    EXPECT_EQ(Fields(list, "COMMPORT"), (std::vector<std::string>{"1", "2"}));
    EXPECT_EQ(Fields(list, "TELSWITCH"), (std::vector<std::string>{"", "9"}));
    EXPECT_EQ(Fields(list, "PHONENUMBER"), (std::vector<std::string>{"", "0123"}));  // the second "|" part only
}

TEST(MapScheme, NetworkLinksAreAddedOnceAndProxiesTakeTheMapsLogin) {
    Mapping f{};
    auto m = f.Map(Profile("IP", "UDP", "") + Profile("IP", "TCP", "") +
                   Profile("IP", "GPRSPROXY", "", "<USERNAME>me</USERNAME><PROXYPORT>9002</PROXYPORT>"));
    XmlNode list = f.Scheme(Profile("IP", "UDP", "", "<ADDRESS>10.0.0.9</ADDRESS>") +
                            Profile("IP", "GPRSPROXY", "", "<USERNAME>old</USERNAME><PASSWORD>pw</PASSWORD>"));
    m->MapSchemeCommsProfiles(f.scheme);
    EXPECT_EQ(Fields(list, "METHOD"), (std::vector<std::string>{"UDP", "GPRSPROXY", "TCP"}));
    EXPECT_EQ(Fields(list, "ADDRESS")[0], "10.0.0.9");
    XmlNode proxy = list.SelectAll("PROFILE")[1];
    EXPECT_EQ(Field(proxy, "USERNAME"), "me");
    EXPECT_EQ(Field(proxy, "PASSWORD"), "");
    EXPECT_FALSE(ProfileXml::HasChild(proxy, "PROXYPORT"));  // only fields the scheme has are written
}

TEST(MapScheme, TheDefaultIsRepairedOrChosenFromPreferencesUsageOrTheMap) {
    // The default cable is gone: the first remaining cable takes the mark.
    Mapping f{3};
    auto m = f.Map(Direct("3"));
    XmlNode list = f.Scheme(Direct("9", "<DEFAULT>-1</DEFAULT>") + Direct("3"));
    m->MapSchemeCommsProfiles(f.scheme);
    EXPECT_EQ(CommsProfileManager::GetDefaultProfile(list), list.SelectAll("PROFILE")[0]);
    EXPECT_EQ(Field(CommsProfileManager::GetDefaultProfile(list), "COMMPORT"), "3");

    // A default that survives keeps the only mark.
    XmlNode kept = f.Scheme(Direct("3", "<DEFAULT>-1</DEFAULT>") + Direct("9"));
    m->MapSchemeCommsProfiles(f.scheme);
    EXPECT_EQ(Fields(kept, "DEFAULT"), (std::vector<std::string>{"-1"}));

    // No default: CommsPref for this scheme names the port.
    Mapping g{1, 2};
    auto n = g.Map(Direct("1") + Direct("2"));
    XmlNode pref = g.Scheme(Direct("1", "<DEFAULT>0</DEFAULT>") + Direct("2", "<DEFAULT>0</DEFAULT>"));
    g.store->SaveSetting("MERIDEXV4", "CommsPref", g.scheme.SchemeText(), "2");
    n->MapSchemeCommsProfiles(g.scheme);
    EXPECT_EQ(Field(CommsProfileManager::GetDefaultProfile(pref), "COMMPORT"), "2");

    // Without a preference, the last port in CommsUsage with a count above 0.
    g.store->DeleteSetting("MeridexV4", "COMMSPREF", g.scheme.SchemeText());
    // (Written in name order, which is also the order the registry gives back under Wine.)
    g.store->SaveSetting("MERIDEXV4", "CommsUsage", "1", "5");
    g.store->SaveSetting("MERIDEXV4", "CommsUsage", "2", "1");
    g.store->SaveSetting("MERIDEXV4", "CommsUsage", "7", "0");
    XmlNode usage = g.Scheme(Direct("1", "<DEFAULT>0</DEFAULT>") + Direct("2", "<DEFAULT>0</DEFAULT>"));
    n->MapSchemeCommsProfiles(g.scheme);
    EXPECT_EQ(Field(CommsProfileManager::GetDefaultProfile(usage), "COMMPORT"), "2");

    // Nothing known: the mark goes to the map's own first cable, if it has DEFAULT.
    Mapping h{1};
    auto o = h.Map(Direct("1", "<DEFAULT>0</DEFAULT>"));
    XmlNode none = h.Scheme("");
    o->MapSchemeCommsProfiles(h.scheme);
    EXPECT_TRUE(CommsProfileManager::GetDefaultProfile(none).IsNull());
    EXPECT_EQ(Field(o->ApplicationProfile(1), "DEFAULT"), "-1");
    EXPECT_EQ(Fields(none, "COMMPORT"), (std::vector<std::string>{"1"}));  // a scheme without profiles gains the map's
}

TEST(MapScheme, AListHeldDirectlyIsMappedAsItsSchemeWouldBe) {
    // The same profiles once in a scheme file and once under a site of some
    // other document, each with a preferred port stored under its own text.
    Mapping f{1, 2};
    auto m = f.Map(Direct("1") + Direct("2") + "<PROFILE><NAME>Net</NAME><TYPE>IP</TYPE><METHOD>UDP</METHOD></PROFILE>");
    const std::string profiles = Direct("1", "<DEFAULT>0</DEFAULT>") + Direct("9", "<TELSWITCH>S1</TELSWITCH>") +
                                 Direct("2", "<DEFAULT>0</DEFAULT>");
    XmlNode fromScheme = f.Scheme(profiles);
    f.store->SaveSetting("MERIDEXV4", "CommsPref", f.scheme.SchemeText(), "2");
    f.store->SaveSetting("MERIDEXV4", "CommsPref", "\\North\\Hill", "2");
    XmlDocument book = XmlDocument::Parse("<SITE><NAME>Hill</NAME><COMMSPROFILES>" + profiles + "</COMMSPROFILES></SITE>");
    XmlNode held = book.DocumentElement().SelectSingle("COMMSPROFILES");

    m->MapSchemeCommsProfiles(f.scheme);
    m->MapSchemeCommsProfiles(held, "\\North\\Hill");
    EXPECT_EQ(held.Xml(), fromScheme.Xml());
    EXPECT_EQ(Field(CommsProfileManager::GetDefaultProfile(held), "COMMPORT"), "2");
    EXPECT_EQ(Fields(held, "METHOD"), (std::vector<std::string>{"DIRECT", "DIRECT", "UDP"}));

    // The text is what picks the preference: under another text there is none
    // (and no usage), so no profile of the list is made the default.
    XmlDocument other = XmlDocument::Parse("<SITE><COMMSPROFILES>" + profiles + "</COMMSPROFILES></SITE>");
    XmlNode unnamed = other.DocumentElement().SelectSingle("COMMSPROFILES");
    m->MapSchemeCommsProfiles(unnamed, "\\South\\Weir");
    EXPECT_TRUE(CommsProfileManager::GetDefaultProfile(unnamed).IsNull());
    EXPECT_EQ(Fields(unnamed, "COMMPORT"), (std::vector<std::string>{"1", "2", ""}));

    // No list: nothing to do, and nothing happens.
    m->MapSchemeCommsProfiles(XmlNode(), "\\North\\Hill");
    EXPECT_EQ(m->ApplicationProfileCount(), 3);
}

TEST(MapScheme, ExactAndBestMatches) {
    Mapping f{1};
    auto m = f.Map(Direct("1") + Direct("4") +
                   Profile("RS232", "PHONEMODEM", "1", "<PHONENUMBER>old</PHONENUMBER>"));
    auto document = XmlDocument::Parse(
        "<L>" + Direct("01") + Direct("99999") + Profile("RS232", "PHONEMODEM", "1", "<PHONENUMBER>555</PHONENUMBER><TELSWITCH>1</TELSWITCH>") +
        Profile("RS232", "PHONEMODEM", "8", "<PHONENUMBER>777</PHONENUMBER>") + Profile("IP", "UDP", "") +
        Profile("IP", "GPRSPROXY", "") + Profile("X25", "PAD", "") + "</L>");
    auto p = document.DocumentElement().SelectAll("PROFILE");
    XmlNode exact = m->GetExactMatch(p[0]);
    EXPECT_EQ(Field(exact, "NAME"), "DIRECT 1");
    EXPECT_FALSE(exact == m->ApplicationProfile(1));  // a copy, never the map's node
    EXPECT_TRUE(m->GetExactMatch(p[1]).IsNull());
    EXPECT_TRUE(m->GetExactMatch(p[2]).IsNull());
    EXPECT_EQ(Field(m->GetExactMatch(p[4]), "METHOD"), "UDP");
    EXPECT_TRUE(m->GetExactMatch(p[6]).IsNull());
    EXPECT_THROW(m->GetExactMatch(p[5]), Error);

    EXPECT_EQ(Field(m->GetBestMatch(p[0]), "COMMPORT"), "01");   // present: itself
    EXPECT_EQ(Field(m->GetBestMatch(p[1]), "COMMPORT"), "1");    // absent: the map's first cable
    XmlNode best = m->GetBestMatch(p[4]);
    EXPECT_FALSE(best == p[4]);
    EXPECT_EQ(Field(best, "METHOD"), "UDP");
    EXPECT_TRUE(m->GetBestMatch(p[5]).IsNull());  // no proxy in the map: none, quietly

    // Modem on an absent port: only the copy carries the number.
    EXPECT_EQ(Field(m->GetBestMatch(p[3]), "PHONENUMBER"), "777");
    EXPECT_EQ(Field(m->ApplicationProfile(3), "PHONENUMBER"), "old");
    // On a present port the map's own modem keeps it.
    EXPECT_EQ(Field(m->GetBestMatch(p[2]), "PHONENUMBER"), "555");
    EXPECT_EQ(Field(m->ApplicationProfile(3), "PHONENUMBER"), "555");
    EXPECT_FALSE(ProfileXml::HasChild(m->ApplicationProfile(3), "TELSWITCH"));  // only what it has

    m->RemoveApplicationProfile(m->ApplicationProfile(3));
    EXPECT_TRUE(m->GetBestMatch(p[2]).IsNull());
    try {
        m->GetBestMatch(p[3]);
        ADD_FAILURE() << "a modem on an absent port with no modem in the map must fail";
    } catch (const Error& e) {
        EXPECT_NE(e.Description().find("phone modem"), std::string::npos);
    }
}

TEST(XmlSchemeFile, OpensOnlySchemesAndSavesThemBack) {
    TempDir dir;
    XmlSchemeFile scheme;
    EXPECT_FALSE(scheme.Open(dir.File("missing.XML")));
    EXPECT_FALSE(scheme.Open(dir.Write("wrong.XML", "<COMMSPROFILES/>")));
    EXPECT_TRUE(scheme.CommsProfiles().IsNull());
    EXPECT_FALSE(scheme.Save());

    std::string file = dir.Write("Bare.XML", "<SCHEME><NAME>Bare</NAME></SCHEME>");
    ASSERT_TRUE(scheme.Open(file));
    EXPECT_EQ(scheme.SchemeText(), file);
    EXPECT_EQ(scheme.Name(), "Bare");
    EXPECT_EQ(scheme.CommsProfiles().CountChildElements("PROFILE"), 0u);
    EXPECT_FALSE(scheme.Open(dir.Write("bad.XML", "<SCHEME>")));
    EXPECT_EQ(scheme.SchemeText(), "");  // a failed open leaves none open

    ASSERT_TRUE(scheme.Open(file));
    CommsFixture f{2};
    f.Manager()->MapSchemeCommsProfiles(scheme);
    ASSERT_TRUE(scheme.Save());
    XmlSchemeFile again;
    ASSERT_TRUE(again.Open(file));
    EXPECT_EQ(Fields(again.CommsProfiles(), "COMMPORT"), (std::vector<std::string>{"2", "", "", ""}));
}
