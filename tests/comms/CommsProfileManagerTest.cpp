// Tests of the communications map: its profiles, its file, keeping its direct
// profiles in step with this PC's ports, adapting schemes to this PC, and
// importing a folder of schemes into the address book.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "CommsTestSupport.h"
#include "FailingDiskSteps.h"
#include <meridex/addressbook/AddressBook.h>
#include <meridex/comms/ImportCommsProfiles.h>
#include <meridex/comms/SystemOps.h>
#include <meridex/comms/XmlSchemeFile.h>
#include <meridex/frame/Error.h>
#include <meridex/frame/FileOps.h>

using namespace meridex;
using namespace meridex::test;

TEST(CommsProfileManager, NewProfilesHaveTheirDefaultsInOrder) {
    CommsFixture f;
    auto m = f.Manager();
    // Every child in order, as "NAME:text|...", KEY without its text (keys are tested below).
    const auto described = [](const XmlNode& profile) {
        std::string text;
        for (const std::string& name : ChildNames(profile))
            text += name + (name == "KEY" ? "" : ":" + Field(profile, name)) + "|";
        return text;
    };
    const std::vector<std::pair<XmlNode, std::string>> rows{
        {m->AddRS232Direct("3"), "NAME:Direct to COM3|TYPE:RS232|METHOD:DIRECT|BAUDRATE:9600|COMMPORT:3|"
                                 "FORCEPROMPT:[RTS]|ICON:DIRECT|KEY|"},
        {m->AddRS232Direct(""), "NAME:Direct to COM|TYPE:RS232|METHOD:DIRECT|BAUDRATE:9600|"
                                "FORCEPROMPT:[RTS]|ICON:DIRECT|KEY|"},
        {m->AddRS232PhoneModem("2"), "NAME:Phone modem on COM2|TYPE:RS232|METHOD:PHONEMODEM|BAUDRATE:9600|"
                                     "COMMPORT:2|RESET:ATZ|SETTINGS:ATE0|FORCEPROMPT:K|ICON:PHONEMODEM|KEY|"},
        {m->AddUDPConnection(), "NAME:Network (UDP)|TYPE:IP|METHOD:UDP|FORCEPROMPT:[CR/LF]|ICON:IP|"
                                "ADDRESS:127.0.0.1|PORT:9000|TIMEOUT:10|PROMPTTIMEOUT:10|SENDBLOCKSIZE:256|KEY|"},
        {m->AddTCPConnection(), "NAME:Network (TCP/IP)|TYPE:IP|METHOD:TCP|FORCEPROMPT:K|ICON:IP|ADDRESS:127.0.0.1|"
                                "PORT:9000|TIMEOUT:5|SENDBLOCKSIZE:256|KEY|"},
        {m->AddGPRSProxyConnection(), "NAME:GPRS Proxy (Harvest Modem)|TYPE:IP|METHOD:GPRSPROXY|"
                                      "FORCEPROMPT:[CR/LF]|ICON:IP|PROXYPORT:9002|TIMEOUT:10|PROMPTTIMEOUT:10|"
                                      "SENDBLOCKSIZE:256|"
                                      "KEY|ADDRESS:127.0.0.1|MAXTESTMODECHANNELGAP:128|"}};
    for (const auto& [profile, expected] : rows) EXPECT_EQ(described(profile), expected);
    // Adding through the map never leaves a change mark in it.
    EXPECT_TRUE(m->ApplicationProfiles().SelectSingle("CHANGED").IsNull());
}

TEST(CommsProfileManager, DefaultMapHasOneDirectProfilePerPresentPortThenTheNetworkLinks) {
    CommsFixture f{1, 3};
    f.ports->Add(2, false);
    auto m = f.Manager();
    EXPECT_EQ(Described(m->ApplicationProfiles(), {"NAME", "KEY"}),
              "Direct to COM1,PROFILE0|Direct to COM3,PROFILE1|Network (UDP),PROFILE2|Network (TCP/IP),PROFILE3|"
              "GPRS Proxy (Harvest Modem),PROFILE4|");
    // One listing for the whole map, however high the bound.
    EXPECT_EQ(f.ports->listings, 1);

    // The bound is read ignoring case; what is no number gives no ports.
    for (const auto& [bound, count] : {std::pair{"2", 4}, {"none", 3}, {"99999", 5}}) {
        f.store->SaveSetting("meridexv4", "SETTINGS", "max_comm_port_scomm", bound);
        EXPECT_EQ(f.Manager()->ApplicationProfileCount(), count) << bound;
    }
}

TEST(CommsProfileManager, KeysAreRenumberedOnLoadAndNewOnesTakeTheSmallestFreeNumber) {
    CommsFixture f;
    auto m = MapOf(f, "<PROFILE><KEY>PROFILE0</KEY><NAME>a</NAME></PROFILE>"
                      "<PROFILE><KEY>PROFILE7</KEY><NAME>b</NAME></PROFILE><PROFILE><NAME>c</NAME></PROFILE>");
    m->AddUDPConnection();
    m->AddTCPConnection();
    EXPECT_EQ(Described(m->ApplicationProfiles(), {"NAME", "KEY"}),
              "a,PROFILE1|b,PROFILE2|c,PROFILE3|Network (UDP),PROFILE0|Network (TCP/IP),PROFILE4|");

    EXPECT_EQ(Field(m->ApplicationProfile(2), "NAME"), "b");
    EXPECT_EQ(Field(m->ApplicationProfile("profile1"), "NAME"), "a");
    EXPECT_TRUE(m->ApplicationProfile(0).IsNull());
    EXPECT_TRUE(m->ApplicationProfile(99).IsNull());
    EXPECT_TRUE(m->ApplicationProfile("PROFILE9").IsNull());

    // A profile from elsewhere gets a key free in this map.
    CommsFixture other;
    XmlNode foreign = other.Manager()->AddRS232PhoneModem("1");
    m->AddApplicationProfile(foreign);
    EXPECT_EQ(Field(foreign, "KEY"), "PROFILE5");
    EXPECT_EQ(m->ApplicationProfileCount(), 6);
    m->RemoveApplicationProfile(m->ApplicationProfile("PROFILE2"));
    EXPECT_EQ(Fields(m->ApplicationProfiles(), "NAME")[1], "c");
}

TEST(CommsProfileManager, BadMapFilesGiveTheDefaultMapAndAreKeptBeforeTheyAreReplaced) {
    CommsFixture f{4};
    for (const std::string& contents : {std::string("<COMMSPROFILES><PROFILE>"), std::string("<V4SETTINGS/>"),
                                        std::string("\xff\xfe garbage")}) {
        std::string file = f.dir.Write("bad/CommsProfiles.xml", contents);
        {
            auto m = f.Manager();
            EXPECT_FALSE(m->LoadXMLMapFile(file));
            EXPECT_EQ(m->MapFile(), file);
            EXPECT_EQ(Fields(m->ApplicationProfiles(), "COMMPORT").front(), "4");
        }  // the manager saves on its way out
        EXPECT_EQ(TempDir::Read(file + ".unreadable"), contents);
        EXPECT_TRUE(XmlDocument::Load(file).DocumentElement().Name() == "COMMSPROFILES");
        std::filesystem::remove(file + ".unreadable");
    }

    // A missing file: default map, nothing to keep, saved by an explicit save.
    auto m = f.Manager();
    std::string missing = f.dir.File("CommsProfiles.xml");
    EXPECT_FALSE(m->LoadXMLMapFile(missing));
    std::string error;
    ASSERT_TRUE(m->SaveXMLMapFile({}, &error)) << error;
    EXPECT_FALSE(std::filesystem::exists(missing + ".unreadable"));
    auto again = f.Manager();
    EXPECT_TRUE(again->LoadXMLMapFile(missing));
    EXPECT_EQ(again->ApplicationProfileCount(), 4);

    // An unwritable target, or a disk that fails at a write, flush or rename,
    // fails without throwing and leaves the file as it was.
    EXPECT_FALSE(m->SaveXMLMapFile("/proc/no/such/CommsProfiles.xml", &error));
    EXPECT_FALSE(error.empty());
    const std::string before = TempDir::Read(missing);
    m->AddUDPConnection();
    for (int step = 0; step < 3; ++step) {
        test::FailingDiskSteps disk;
        (step == 0 ? disk.failWrite : step == 1 ? disk.failSync : disk.failRename) = 1;
        EXPECT_FALSE(m->SaveXMLMapFile(missing, &error));
        EXPECT_NE(error.find("Input/output error"), std::string::npos) << error;
        EXPECT_EQ(TempDir::Read(missing), before);
    }
    m->setMapFile("");
}

TEST(CommsProfileManager, ListIgnoresCaseWhileTheSingleLookupDoesNot) {
    auto document = XmlDocument::Parse(
        "<L><PROFILE><TYPE>rs232</TYPE><METHOD>Direct</METHOD><DEFAULT>0</DEFAULT></PROFILE>"
        "<PROFILE><TYPE>RS232</TYPE><METHOD>DIRECT</METHOD><DEFAULT>2x</DEFAULT></PROFILE>"
        "<PROFILE><TYPE>IP</TYPE><METHOD>UDP</METHOD><DEFAULT>-1</DEFAULT></PROFILE></L>");
    XmlNode list = document.DocumentElement();
    auto profiles = list.SelectAll("PROFILE");
    EXPECT_EQ(CommsProfileManager::GetDeviceProfileList(list, "RS232", "DIRECT").size(), 2u);
    EXPECT_EQ(CommsProfileManager::GetDeviceProfile(list, "RS232", "DIRECT"), profiles[1]);
    EXPECT_TRUE(CommsProfileManager::GetDeviceProfile(list, "Rs232", "DIRECT").IsNull());
    EXPECT_TRUE(CommsProfileManager::GetDeviceProfileList(list, "IP", "TCP").empty());
    EXPECT_EQ(CommsProfileManager::GetDefaultProfile(list), profiles[2]);
    profiles[2].SelectSingle("DEFAULT").setText("0");
    EXPECT_TRUE(CommsProfileManager::GetDefaultProfile(list).IsNull());
}

TEST(PortDiscovery, CleanRemovesGonePortsAndAddsNewOnes) {
    CommsFixture f{1, 3};
    auto m = MapOf(f, DirectProfile("1", "Bench cable") + DirectProfile("5") + DirectProfile("") +
                          DirectProfile("3x") + DirectProfile("99999") +
                          "<PROFILE><TYPE>RS232</TYPE><METHOD>PHONEMODEM</METHOD><COMMPORT>7</COMMPORT></PROFILE>");
    m->CleanRS232Direct();
    // Gone: port 5, and the profiles whose port reads as no port at all ("3x"
    // is not a number, so port 3 is still new). The modem on an absent port is not a direct profile and stays.
    EXPECT_EQ(Described(m->ApplicationProfiles(), {"NAME", "KEY"}),
              "Bench cable,PROFILE1|-,PROFILE6|Direct to COM3,PROFILE0|");

    // "03" is port 3 when comparing numbers: nothing more is added.
    CommsFixture g{3};
    auto n = MapOf(g, DirectProfile("03"));
    n->CleanRS232Direct();
    EXPECT_EQ(Fields(n->ApplicationProfiles(), "COMMPORT"), (std::vector<std::string>{"03"}));

    // Ports above MAX_COMM_PORT_SCOMM are never added.
    CommsFixture h{2, 4, 5, 9};
    h.store->SaveSetting("MeridexV4", "Settings", "MAX_COMM_PORT_SCOMM", "4");
    auto o = MapOf(h, "");
    o->CleanRS232Direct();
    EXPECT_EQ(Fields(o->ApplicationProfiles(), "COMMPORT"), (std::vector<std::string>{"2", "4"}));
}

TEST(PortDiscovery, PresenceRulesAndProgressPercent) {
    FakePorts ports{2};
    ports.Add(6, false, true);  // Bluetooth: present without a probe
    ports.Add(8, false);
    EXPECT_TRUE(SystemOps::IsBluetoothModemPort(ports, 6));
    EXPECT_FALSE(SystemOps::IsBluetoothModemPort(ports, 2));
    EXPECT_TRUE(SystemOps::IsCommPortPresent(ports, 6));
    EXPECT_FALSE(SystemOps::IsCommPortPresent(ports, 8));
    EXPECT_FALSE(SystemOps::IsCommPortPresent(ports, 3));  // not mapped at all
    ports.probes = 0;
    EXPECT_EQ(SystemOps::GetPresentCommPorts(ports, 32767), (std::vector<std::int16_t>{2, 6}));
    EXPECT_EQ(ports.probes, 2);  // 2 and 8; never the unmapped numbers
    EXPECT_TRUE(SystemOps::GetPresentCommPorts(ports, 0).empty());
    EXPECT_EQ(SystemOps::GetPresentCommPorts(ports, 5), (std::vector<std::int16_t>{2}));

    for (const auto& [fraction, percent] :
         {std::pair{0.125, 13}, {0.994, 99}, {1.0, 100}, {-1.0, 0}, {7.0, 100}})
        EXPECT_EQ(SystemOps::ProgressPercent(fraction), percent) << fraction;
}

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

// Each row: this PC's ports, the map, the scheme's profiles, and the fields of the scheme's
// profiles after the mapping.
TEST(MapScheme, TheSchemesProfilesFollowThisPcsMap) {
    struct Row {
        const char* what;
        std::vector<int> ports;
        std::string map, scheme;
        std::vector<std::string> fields;
        std::string expected;
    };
    const std::vector<Row> rows{
        // The map's direct cables only; the copy takes the smallest key free once the map's PROFILE1 is in.
        {"direct cables", {1, 3}, Direct("3") + Direct("1", "<ORVABT>True</ORVABT>"),
         Direct("1", "<KEY>PROFILE0</KEY>") + Direct("9", "<KEY>PROFILE2</KEY>"), {"COMMPORT", "ORVABT", "KEY"},
         "1,True,PROFILE0|3,-,PROFILE2|"},
        {"a hidden counterpart removes the scheme's profile and is not added", {1, 3},
         Direct("1", "<HIDE>-1</HIDE>") + Direct("3", "<HIDE>False</HIDE>") +
             "<PROFILE><NAME>Net</NAME><TYPE>IP</TYPE><METHOD>UDP</METHOD></PROFILE>",
         Direct("1") + "<PROFILE><NAME>Own</NAME><TYPE>IP</TYPE><METHOD>UDP</METHOD></PROFILE>", {"NAME"},
         "Own|DIRECT 3|"},
        {"switch settings of removed cables go to added ones, the last one repeating", {2, 3, 4},
         Direct("2", "<TELSWITCH/>") + Direct("3", "<TELSWITCH/>") + Direct("4", "<TELSWITCH/>"),
         Direct("7", "<TELSWITCH>A</TELSWITCH>") + Direct("8", "<TELSWITCH>B</TELSWITCH>"),
         {"COMMPORT", "TELSWITCH"}, "2,A|3,B|4,B|"},
        // Same port and name: kept. Otherwise this PC's modem, with the second "|" part of the number.
        {"phone modems", {1},
         Profile("RS232", "PHONEMODEM", "1", "<TELSWITCH/><PHONENUMBER/>") +
             Profile("RS232", "PHONEMODEM", "2", "<TELSWITCH/><PHONENUMBER/>"),
         Profile("RS232", "PHONEMODEM", "1") +
             Profile("RS232", "PHONEMODEM", "5", "<TELSWITCH>9</TELSWITCH><PHONENUMBER>0123|4</PHONENUMBER>"),
         {"COMMPORT", "TELSWITCH", "PHONENUMBER"}, "1,-,-|2,9,0123|"},
        // Only fields the scheme has are written.
        {"network links are added once and proxies take the map's login", {},
         Profile("IP", "UDP", "") + Profile("IP", "TCP", "") +
             Profile("IP", "GPRSPROXY", "", "<USERNAME>me</USERNAME><PROXYPORT>9002</PROXYPORT>"),
         Profile("IP", "UDP", "", "<ADDRESS>10.0.0.9</ADDRESS>") +
             Profile("IP", "GPRSPROXY", "", "<USERNAME>old</USERNAME><PASSWORD>pw</PASSWORD>"),
         {"METHOD", "ADDRESS", "USERNAME", "PASSWORD", "PROXYPORT"},
         "UDP,10.0.0.9,-,-,-|GPRSPROXY,-,me,,-|TCP,-,-,-,-|"},
        {"the default cable is gone: the first remaining cable takes the mark", {3}, Direct("3"),
         Direct("9", "<DEFAULT>-1</DEFAULT>") + Direct("3"), {"COMMPORT", "DEFAULT"}, "3,-1|"},
        {"a default that survives keeps the only mark", {3}, Direct("3"),
         Direct("3", "<DEFAULT>-1</DEFAULT>") + Direct("9"), {"COMMPORT", "DEFAULT"}, "3,-1|"}};
    for (const Row& row : rows) {
        Mapping f;
        for (int port : row.ports) f.ports->Add(port);
        auto m = f.Map(row.map);
        XmlNode list = f.Scheme(row.scheme);
        m->MapSchemeCommsProfiles(f.scheme);
        EXPECT_EQ(Described(list, row.fields), row.expected) << row.what;
    }
}

TEST(MapScheme, WithoutADefaultOneIsChosenFromPreferencesUsageOrTheMap) {
    // CommsPref for this scheme names the port.
    Mapping g{1, 2};
    auto n = g.Map(Direct("1") + Direct("2"));
    const std::string undecided = Direct("1", "<DEFAULT>0</DEFAULT>") + Direct("2", "<DEFAULT>0</DEFAULT>");
    XmlNode pref = g.Scheme(undecided);
    g.store->SaveSetting("MERIDEXV4", "CommsPref", g.scheme.SchemeText(), "2");
    n->MapSchemeCommsProfiles(g.scheme);
    EXPECT_EQ(Described(pref, {"COMMPORT", "DEFAULT"}), "1,0|2,-1|");

    // Without a preference, the last port in CommsUsage with a count above 0.
    g.store->DeleteSetting("MeridexV4", "COMMSPREF", g.scheme.SchemeText());
    // (Written in name order, which is also the order the registry gives back under Wine.)
    g.store->SaveSetting("MERIDEXV4", "CommsUsage", "1", "5");
    g.store->SaveSetting("MERIDEXV4", "CommsUsage", "2", "1");
    g.store->SaveSetting("MERIDEXV4", "CommsUsage", "7", "0");
    XmlNode usage = g.Scheme(undecided);
    n->MapSchemeCommsProfiles(g.scheme);
    EXPECT_EQ(Described(usage, {"COMMPORT", "DEFAULT"}), "1,0|2,-1|");

    // Nothing known: the mark goes to the map's own first cable, if it has DEFAULT; a scheme
    // without profiles gains the map's.
    Mapping h{1};
    auto o = h.Map(Direct("1", "<DEFAULT>0</DEFAULT>"));
    XmlNode none = h.Scheme("");
    o->MapSchemeCommsProfiles(h.scheme);
    EXPECT_EQ(Described(none, {"COMMPORT", "DEFAULT"}), "1,0|");
    EXPECT_EQ(Field(o->ApplicationProfile(1), "DEFAULT"), "-1");
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
    EXPECT_EQ(Described(held, {"COMMPORT", "METHOD", "DEFAULT"}), "1,DIRECT,0|2,DIRECT,-1|-,UDP,-|");

    // The text is what picks the preference: under another text there is none
    // (and no usage), so no profile of the list is made the default.
    XmlDocument other = XmlDocument::Parse("<SITE><COMMSPROFILES>" + profiles + "</COMMSPROFILES></SITE>");
    XmlNode unnamed = other.DocumentElement().SelectSingle("COMMSPROFILES");
    m->MapSchemeCommsProfiles(unnamed, "\\South\\Weir");
    EXPECT_EQ(Described(unnamed, {"COMMPORT", "DEFAULT"}), "1,0|2,0|-,-|");

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
    EXPECT_FALSE(m->GetExactMatch(p[0]) == m->ApplicationProfile(1));  // a copy, never the map's node
    std::string exact;  // the name of each one's exact match, "-" for none
    for (int i : {0, 1, 2, 4, 6})
        exact += m->GetExactMatch(p[i]).IsNull() ? "-|" : Field(m->GetExactMatch(p[i]), "NAME") + "|";
    EXPECT_EQ(exact, "DIRECT 1|-|-|UDP |-|");
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

// Importing a tree of schemes as sites.
namespace {

std::string Named(const std::string& type, const std::string& method, const std::string& name) {
    std::string xml = "<PROFILE><TYPE>" + type + "</TYPE><METHOD>" + method + "</METHOD>";
    if (!name.empty()) xml += "<NAME>" + name + "</NAME>";
    return xml + "</PROFILE>";
}

std::string SchemeXml(const std::vector<std::string>& profiles) {
    std::string xml = "<SCHEME><NAME>x</NAME><COMMSPROFILES>";
    for (const auto& p : profiles) xml += p;
    return xml + "</COMMSPROFILES></SCHEME>";
}

struct Recorder : ImportEvents {
    std::vector<std::string> messages;
    std::vector<int> progress;
    int completes = 0;
    int cancelAfter = -1;
    void Message(const std::string& msg) override { messages.push_back(msg); }
    void Progress(std::int16_t percent) override { progress.push_back(percent); }
    void Complete() override { ++completes; }
    bool CancelRequested() override { return cancelAfter >= 0 && static_cast<int>(progress.size()) >= cancelAfter; }
};

class ImportTest : public ::testing::Test {
protected:
    void SetUp() override {
        root = dir.Path() + "/schemes";
        dir.Write("schemes/top.xml", SchemeXml({Named("RS232", "DIRECT", "Cable")}));
        dir.Write("schemes/North/Hill/a.XML",
                  SchemeXml({Named("RS232", "PHONEMODEM", "Modem"), Named("RS232", "DIRECT", "Cable"),
                          Named("IP", "TCP", ""), Named("USB", "X", "Other")}));
        dir.Write("schemes/North/b.xml", SchemeXml({Named("IP", "UDP", "Net")}));
        dir.Write("schemes/North/broken.xml", "<SCHEME><COMMS");
        dir.Write("schemes/North/notes.txt", "not a scheme");
        // A link back up the tree is not followed; a dangling one is no file.
        // (Where links cannot be made, as on Windows without the privilege, there are none to skip.)
        std::error_code ec;
        std::filesystem::create_directory_symlink(root, root + "/North/loop", ec);
        std::filesystem::create_symlink(root + "/gone.xml", root + "/North/dangling.xml", ec);
        book.LoadAddressBook(dir.File("book.xml"));
    }
    TempDir dir;
    std::string root;
    AddressBook book;
    Recorder events;
};

TEST_F(ImportTest, SchemesBecomeSitesInGroupsMirroringFolders) {
    ImportCommsProfiles import(&events);
    import.ImportSchemes(root, book.Sites());

    // Found paths keep the root as given and join with the system's own separator ("\" on
    // Windows); where that is "/", a "\" in the root separates folders too.
    const char sep = static_cast<char>(std::filesystem::path::preferred_separator);
    std::string base = root;
    if (sep == '/') std::replace(base.begin(), base.end(), '\\', '/');
    const auto at = [&](std::initializer_list<const char*> parts) {
        std::string path = base;
        for (const char* part : parts) path += sep + std::string(part);
        return path;
    };
    const std::vector<std::string> found{at({"top.xml"}), at({"North", "b.xml"}), at({"North", "broken.xml"}),
                                         at({"North", "Hill", "a.XML"})};
    EXPECT_EQ(import.SchemeList(), found);
    std::vector<std::string> expected;
    for (const auto& path : found) expected.push_back("Scheme Found: " + path);
    for (const auto& path : {found[0], found[1], found[3]}) expected.push_back("Processing Scheme: " + path);
    EXPECT_EQ(events.messages, expected);
    EXPECT_EQ(events.progress, (std::vector<int>{25, 50, 75, 100}));
    EXPECT_EQ(events.completes, 1);

    // The direct-only scheme made no group; the file name is the last level.
    EXPECT_EQ(book.Sites().SiteCount(), 0);
    EXPECT_TRUE(book.FindGroup("\\top.xml").IsNull());
    const SiteGroup hill = book.FindGroup("\\North\\Hill\\a.XML");
    ASSERT_FALSE(hill.IsNull());
    ASSERT_EQ(hill.SiteCount(), 2);
    EXPECT_EQ(hill.Site(1).Name(), found[3] + " (Modem");
    EXPECT_EQ(hill.Site(2).Name(), found[3] + " (Unknown Device)");
    EXPECT_EQ(hill.Site(2).Parameter("METHOD").Text(), "TCP");
    EXPECT_EQ(book.FindGroup("\\North\\b.xml").Site(1).Name(), found[1] + " (Net");
    EXPECT_EQ(import.SitesAdded(), 3u);

    // A second run with a trailing separator finds the same files and reuses the groups.
    ImportCommsProfiles again;
    again.ImportSchemes(root + "/", book.Sites());
    EXPECT_EQ(again.SchemeList(), found);
    EXPECT_EQ(book.Sites().GroupCount(), 1);
    EXPECT_EQ(hill.SiteCount(), 4);
    EXPECT_EQ(hill.Site(3).Key(), hill.Site(1).Key() + "_1");
}

TEST_F(ImportTest, CancelMissingFoldersAndEmptyTrees) {
    events.cancelAfter = 1;
    ImportCommsProfiles import(&events);
    import.ImportSchemes(root, book.Sites());
    EXPECT_TRUE(import.Cancelled());
    EXPECT_EQ(events.progress, std::vector<int>{25});
    EXPECT_EQ(events.completes, 1);

    Recorder quiet;
    ImportCommsProfiles nothing(&quiet);
    nothing.ImportSchemes(dir.File("missing"), book.Sites());
    nothing.ImportSchemes(dir.File("schemes/North/notes.txt"), book.Sites());
    nothing.ImportSchemes("", book.Sites());
    EXPECT_TRUE(quiet.messages.empty());
    EXPECT_TRUE(quiet.progress.empty());
    EXPECT_EQ(quiet.completes, 3);
}

// A scheme reader whose texts use backslashes, as on Windows.
struct BackslashScheme : Scheme {
    std::string root;
    XmlDocument document;
    bool Open(const std::string&) override {
        document = XmlDocument::Parse(SchemeXml({Named("IP", "GPRSPROXY", "Proxy")}));
        return true;
    }
    std::string SchemeText() const override { return root + "\\North\\Hill\\"; }
    XmlNode CommsProfiles() const override { return document.DocumentElement().SelectSingle("COMMSPROFILES"); }
};

TEST_F(ImportTest, SchemeTextsWithBackslashes) {
    BackslashScheme scheme;
    scheme.root = root;
    ImportCommsProfiles import;
    import.ImportSchemes(root, book.Sites(), scheme);
    const SiteGroup hill = book.FindGroup("\\North\\Hill");
    ASSERT_FALSE(hill.IsNull());
    EXPECT_EQ(hill.SiteCount(), 4) << "one site for each of the four files found";
}

}  // namespace
