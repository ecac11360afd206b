// The Windows platform code against a registry seeded as a field PC's is
// (tests/windows/seed.reg, imported by scripts/test-windows): the serial
// device map with a Bluetooth modem link, and the legacy host's settings.
// These stand in for the Linux tests on pseudo-terminals.
#include <gtest/gtest.h>
#include <windows.h>

#include <algorithm>
#include <filesystem>

#include "CommsTestSupport.h"
#include <meridex/comms/SystemOps.h>
#include <meridex/frame/Utf8.h>
#include <meridex/platform/Platform.h>
#include <meridex/platform/StartedProgram.h>
#include <meridex/platform/windows/RegistryUserStore.h>
#include <meridex/platform/windows/WindowsSerialPortSource.h>

using namespace meridex;
using namespace meridex::test;
using Entry = WindowsSerialPortSource::MapEntry;

namespace {

// Why the seeded registry is not there, or null when it is.
const char* WhyNotSeeded() {
    for (const Entry& entry : WindowsSerialPortSource::ReadDeviceMap())
        if (entry.data == L"COM142") return nullptr;
    return "the serial device map is not seeded: scripts/test-windows imports tests/windows/seed.reg";
}

// The direct profile of the map on a port, or none.
XmlNode FindDirect(CommsProfileManager& map, const std::string& port) {
    for (const XmlNode& profile : map.ApplicationProfiles().SelectAll("PROFILE"))
        if (Field(profile, "METHOD") == "DIRECT" && Field(profile, "COMMPORT") == port) return profile;
    return XmlNode();
}

}  // namespace

TEST(WindowsPorts, PortNumbersAndBluetoothNamesOfTheDeviceMap) {
    for (const auto& [name, number] : {std::pair{L"COM5", 5}, {L"COM142", 142}, {L"COMx", 0}, {L"COM", 0}})
        EXPECT_EQ(WindowsSerialPortSource::PortNumber(name), number);
    const std::vector<Entry> map{{L"\\Device\\Serial0", L"COM3"},   {L"\\Device\\BthModem2", L"COM3"},
                                 {L"\\Device\\VCP0", L"COM12"},     {L"\\Device\\Odd", L"COMx"},
                                 {L"\\Device\\BthModem0", L"COM7"}, {L"\\Device\\Zero", L"COM0"}};
    const std::vector<SerialPort> ports = WindowsSerialPortSource::PortsOf(map, {{12, "USB Serial Port (COM12)"}});
    // One entry per number, ascending, as "number" and "b" for a Bluetooth link (a number with any
    // BthModem name); the device manager's name wins.
    std::string described;
    for (const SerialPort& port : ports) described += std::to_string(port.number) + (port.bluetooth ? "b " : " ");
    EXPECT_EQ(described, "3b 7b 12 ");
    ASSERT_EQ(ports.size(), 3u);
    EXPECT_EQ(ports[0].device + "|" + ports[1].description + "|" + ports[2].description,
              "COM3|BthModem0|USB Serial Port (COM12)");
}

TEST(WindowsPorts, TheSeededMapGivesABluetoothModemPresentWithoutAQuery) {
    if (const char* why = WhyNotSeeded()) GTEST_SKIP() << why;
    auto source = Platform::DefaultSerialPortSource(Platform::DefaultUserStore());
    EXPECT_TRUE(SystemOps::IsBluetoothModemPort(*source, 142));
    EXPECT_FALSE(SystemOps::IsBluetoothModemPort(*source, 143));
    EXPECT_FALSE(SystemOps::IsBluetoothModemPort(*source, 1));
    // COM142 has no driver: only the Bluetooth rule makes it present.
    EXPECT_FALSE(WindowsSerialPortSource::QueryDefaultConfiguration(L"COM142"));
    EXPECT_TRUE(SystemOps::IsCommPortPresent(*source, 142));
    // Mapped, but its configuration cannot be read, twice over: absent.
    EXPECT_FALSE(SystemOps::IsCommPortPresent(*source, 143));
    EXPECT_FALSE(SystemOps::IsCommPortPresent(*source, 150));  // not mapped at all
    const std::vector<std::int16_t> present = SystemOps::GetPresentCommPorts(*source, 150);
    EXPECT_NE(std::find(present.begin(), present.end(), 142), present.end());
    EXPECT_EQ(std::find(present.begin(), present.end(), 143), present.end());
    EXPECT_TRUE(SystemOps::GetPresentCommPorts(*source, 0).empty());
}

TEST(WindowsUserStore, TheLegacyHostsSettingsAreReadWhereItKeptThem) {
    if (const char* why = WhyNotSeeded()) GTEST_SKIP() << why;
    auto store = Platform::DefaultUserStore();
    EXPECT_EQ(store->GetSetting("MeridexV4", "Settings", "MAX_COMM_PORT_SCOMM", "64"), "150");
    EXPECT_EQ(store->GetSetting("MERIDEXV4", "CommsPref", "river station 4", ""), "142");
    EXPECT_EQ(store->GetAllSettings("MERIDEXV4", "CommsUsage"),
              (std::vector<UserStore::Pair>{{"1", "3"}, {"142", "7"}, {"143", "0"}}));
    EXPECT_EQ(store->GetSetting("MERIDEXV4", "CommsPref", "no such scheme", "none"), "none");

    // The map made from this PC's ports is bound by the stored maximum and
    // keeps the Bluetooth modem.
    TempDir dir;
    CommsProfileManager map;
    map.LoadXMLMapFile(dir.File("CommsProfiles.xml"));  // none yet: built from the ports
    EXPECT_EQ(Field(FindDirect(map, "142"), "COMMPORT"), "142");
    EXPECT_TRUE(FindDirect(map, "143").IsNull());
}

TEST(WindowsUserStore, ValuesRoundTripIgnoringCaseInAScratchKey) {
    const std::wstring root = L"Software\\Meridex tests\\round trip " + std::to_wstring(GetCurrentProcessId());
    {
        RegistryUserStore store(root);
        EXPECT_EQ(store.GetSetting("MeridexV4", "Settings", "MAX_COMM_PORT_SCOMM", "64"), "64");
        EXPECT_TRUE(store.GetAllSettings("MeridexV4", "CommsUsage").empty());
        ASSERT_TRUE(store.SaveSetting("MeridexV4", "CommsUsage", "3", "4"));
        ASSERT_TRUE(store.SaveSetting("MERIDEXV4", "commsusage", "1", "2"));
        ASSERT_TRUE(store.SaveSetting("MeridexV4", "CommsUsage", "3", "5"));  // replaced in place
        // The registry's enumeration order is the stored order (write order on
        // Windows, by name under Wine): the pairs are compared as a set.
        std::vector<UserStore::Pair> all = store.GetAllSettings("meridexv4", "COMMSUSAGE");
        std::sort(all.begin(), all.end());
        EXPECT_EQ(all, (std::vector<UserStore::Pair>{{"1", "2"}, {"3", "5"}}));
        const std::string scheme = "C:\\Schemes\\Ünïcödé Hill.xml";
        ASSERT_TRUE(store.SaveSetting("MeridexV4", "CommsPref", scheme, "Mëter"));
        EXPECT_EQ(store.GetSetting("MeridexV4", "CommsPref", "c:\\schemes\\ünïcödé hill.XML", ""), "Mëter");
        EXPECT_TRUE(store.DeleteSetting("MeridexV4", "CommsUsage", "1"));
        EXPECT_TRUE(store.DeleteSetting("MeridexV4", "CommsUsage", "never there"));
        EXPECT_TRUE(store.DeleteSetting("No such app", "S", "k"));
        EXPECT_EQ(store.GetAllSettings("MeridexV4", "CommsUsage"), (std::vector<UserStore::Pair>{{"3", "5"}}));
        // A name that would reach another key is refused.
        EXPECT_FALSE(store.SaveSetting("..\\..\\Elsewhere", "S", "k", "v"));
        EXPECT_FALSE(store.SaveSetting("MeridexV4", "", "k", "v"));
    }
    RegDeleteTreeW(HKEY_CURRENT_USER, root.c_str());
}

TEST(WindowsPlatform, TheCompanionStartsHiddenAndNamesTheMapsPortsFromTheRegistry) {
    if (const char* why = WhyNotSeeded()) GTEST_SKIP() << why;
    CommsFixture f;
    std::filesystem::create_directories(utf8::ToPath(f.dir.File("app")));
    std::filesystem::copy_file(utf8::ToPath(MERIDEX_COMPANION_DIR "/SerialPortInfoDump.exe"),
                               utf8::ToPath(f.dir.File("app/SerialPortInfoDump.exe")));
    CommsProfileManager map;  // this PC's ports
    std::string file = f.dir.Write("CommsProfiles.xml", "<COMMSPROFILES>" + DirectProfile("142") +
                                                             DirectProfile("143") + "</COMMSPROFILES>");
    ASSERT_TRUE(map.LoadXMLMapFile(file));
    map.GetCommPortDescriptions(f.dir.Path() + "\\app");
    EXPECT_EQ(Field(FindDirect(map, "142"), "NAME"), "BthModem0");
    EXPECT_EQ(Field(FindDirect(map, "143"), "NAME"), "Direct to COM143");  // not present: not listed
    EXPECT_TRUE(std::filesystem::exists(utf8::ToPath(f.dir.File("app/ports.txt"))));

    StartedProgram missing = StartedProgram::Start(f.dir.File("app/none.exe"), {});
    EXPECT_FALSE(missing.Started());
}

TEST(WindowsPlatform, TheWindowsFolderEndsInABackSlash) {
    const std::string folder = Platform::GetWindowsFolder();
    ASSERT_GE(folder.size(), 4u);
    EXPECT_EQ(folder.substr(1, 2), ":\\");
    EXPECT_EQ(folder.back(), '\\');
    EXPECT_TRUE(std::filesystem::is_directory(utf8::ToPath(folder)));
    EXPECT_EQ(Platform::CompanionProgramName(), "SerialPortInfoDump.exe");
}
