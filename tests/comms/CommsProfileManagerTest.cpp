#include <gtest/gtest.h>

#include <filesystem>

#include "CommsTestSupport.h"
#include "FailingDiskSteps.h"
#include <meridex/frame/FileOps.h>

using namespace meridex;
using namespace meridex::test;

TEST(CommsProfileManager, NewProfilesHaveTheirDefaultsInOrder) {
    CommsFixture f;
    auto m = f.Manager();
    XmlNode direct = m->AddRS232Direct("3");
    EXPECT_EQ(ChildNames(direct), (std::vector<std::string>{"NAME", "TYPE", "METHOD", "BAUDRATE", "COMMPORT",
                                                            "FORCEPROMPT", "ICON", "KEY"}));
    EXPECT_EQ(Field(direct, "NAME"), "Direct to COM3");
    EXPECT_EQ(Field(direct, "FORCEPROMPT"), "[RTS]");

    XmlNode bare = m->AddRS232Direct("");
    EXPECT_EQ(Field(bare, "NAME"), "Direct to COM");
    EXPECT_FALSE(ProfileXml::HasChild(bare, "COMMPORT"));

    XmlNode modem = m->AddRS232PhoneModem("2");
    EXPECT_EQ(ChildNames(modem), (std::vector<std::string>{"NAME", "TYPE", "METHOD", "BAUDRATE", "COMMPORT", "RESET",
                                                           "SETTINGS", "FORCEPROMPT", "ICON", "KEY"}));
    EXPECT_EQ(Field(modem, "NAME"), "Phone modem on COM2");
    EXPECT_EQ(Field(modem, "RESET") + Field(modem, "SETTINGS") + Field(modem, "FORCEPROMPT"), "ATZATE0K");

    XmlNode udp = m->AddUDPConnection();
    EXPECT_EQ(ChildNames(udp), (std::vector<std::string>{"NAME", "TYPE", "METHOD", "FORCEPROMPT", "ICON", "ADDRESS",
                                                         "PORT", "TIMEOUT", "PROMPTTIMEOUT", "SENDBLOCKSIZE", "KEY"}));
    XmlNode tcp = m->AddTCPConnection();
    EXPECT_FALSE(ProfileXml::HasChild(tcp, "PROMPTTIMEOUT"));
    EXPECT_EQ(Field(tcp, "TIMEOUT"), "5");
    EXPECT_EQ(Field(tcp, "FORCEPROMPT"), "K");
    XmlNode gprs = m->AddGPRSProxyConnection();
    EXPECT_EQ(ChildNames(gprs),
              (std::vector<std::string>{"NAME", "TYPE", "METHOD", "FORCEPROMPT", "ICON", "PROXYPORT", "TIMEOUT",
                                        "PROMPTTIMEOUT", "SENDBLOCKSIZE", "KEY", "ADDRESS", "MAXTESTMODECHANNELGAP"}));
    EXPECT_FALSE(ProfileXml::HasChild(gprs, "PORT"));
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

    f.store->SaveSetting("meridexv4", "SETTINGS", "max_comm_port_scomm", "2");
    EXPECT_EQ(Fields(f.Manager()->ApplicationProfiles(), "COMMPORT"),
              (std::vector<std::string>{"1", "", "", ""}));
    f.store->SaveSetting("MeridexV4", "Settings", "MAX_COMM_PORT_SCOMM", "none");
    EXPECT_EQ(f.Manager()->ApplicationProfileCount(), 3);
    f.store->SaveSetting("MeridexV4", "Settings", "MAX_COMM_PORT_SCOMM", "99999");
    EXPECT_EQ(f.Manager()->ApplicationProfileCount(), 5);
}

TEST(CommsProfileManager, KeysAreRenumberedOnLoadAndNewOnesTakeTheSmallestFreeNumber) {
    CommsFixture f;
    std::string file = f.dir.Write("CommsProfiles.xml",
                                   "<COMMSPROFILES><PROFILE><KEY>PROFILE0</KEY><NAME>a</NAME></PROFILE>"
                                   "<PROFILE><KEY>PROFILE7</KEY><NAME>b</NAME></PROFILE>"
                                   "<PROFILE><NAME>c</NAME></PROFILE></COMMSPROFILES>");
    auto m = f.Manager();
    ASSERT_TRUE(m->LoadXMLMapFile(file));
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
