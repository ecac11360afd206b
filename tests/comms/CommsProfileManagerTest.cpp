// Tests of the communications map: its profiles, its file and keeping its
// direct profiles in step with this PC's ports.
#include <gtest/gtest.h>

#include <filesystem>

#include "CommsTestSupport.h"
#include "FailingDiskSteps.h"
#include <meridex/comms/SystemOps.h>
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
    EXPECT_EQ(Fields(m->ApplicationProfiles(), "NAME"),
              (std::vector<std::string>{"Direct to COM1", "Direct to COM3", "Network (UDP)", "Network (TCP/IP)",
                                        "GPRS Proxy (Harvest Modem)"}));
    EXPECT_EQ(Fields(m->ApplicationProfiles(), "KEY"),
              (std::vector<std::string>{"PROFILE0", "PROFILE1", "PROFILE2", "PROFILE3", "PROFILE4"}));
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
    EXPECT_EQ(Fields(m->ApplicationProfiles(), "KEY"),
              (std::vector<std::string>{"PROFILE1", "PROFILE2", "PROFILE3"}));
    EXPECT_EQ(Field(m->AddUDPConnection(), "KEY"), "PROFILE0");
    EXPECT_EQ(Field(m->AddTCPConnection(), "KEY"), "PROFILE4");

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
    EXPECT_EQ(Fields(m->ApplicationProfiles(), "NAME"),
              (std::vector<std::string>{"Bench cable", "", "Direct to COM3"}));
    EXPECT_EQ(Fields(m->ApplicationProfiles(), "KEY"), (std::vector<std::string>{"PROFILE1", "PROFILE6", "PROFILE0"}));

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
