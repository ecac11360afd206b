#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <sys/stat.h>
#include <sys/wait.h>

#include "CommsTestSupport.h"
#include <meridex/comms/PortsFile.h>
#include <meridex/comms/SystemOps.h>

using namespace meridex;
using namespace meridex::test;

namespace {

// A map of exactly the given profiles.
std::unique_ptr<CommsProfileManager> MapOf(CommsFixture& f, const std::string& profiles) {
    std::string file = f.dir.Write("CommsProfiles.xml", "<COMMSPROFILES>" + profiles + "</COMMSPROFILES>");
    auto m = f.Manager();
    EXPECT_TRUE(m->LoadXMLMapFile(file));
    m->setMapFile("");
    return m;
}

std::string Direct(const std::string& port, const std::string& name = "") {
    return "<PROFILE><NAME>" + (name.empty() ? "Direct to COM" + port : name) +
           "</NAME><TYPE>RS232</TYPE><METHOD>DIRECT</METHOD><COMMPORT>" + port + "</COMMPORT></PROFILE>";
}

// A stand-in companion: a shell script that writes ports.txt itself.
void WriteCompanion(const TempDir& dir, const std::string& body) {
    std::string path = dir.Write("app/SerialPortInfoDump", "#!/bin/sh\n" + body + "\n");
    chmod(path.c_str(), 0755);
}

}  // namespace

TEST(PortDiscovery, CleanRemovesGonePortsAndAddsNewOnes) {
    CommsFixture f{1, 3};
    auto m = MapOf(f, Direct("1", "Bench cable") + Direct("5") + Direct("") + Direct("3x") + Direct("99999") +
                          "<PROFILE><TYPE>RS232</TYPE><METHOD>PHONEMODEM</METHOD><COMMPORT>7</COMMPORT></PROFILE>");
    m->CleanRS232Direct();
    // Gone: port 5, and the profiles whose port reads as no port at all ("3x"
    // is not a number, so port 3 is still new). The modem on an absent port is not a direct profile and stays.
    EXPECT_EQ(Fields(m->ApplicationProfiles(), "NAME"),
              (std::vector<std::string>{"Bench cable", "", "Direct to COM3"}));
    EXPECT_EQ(Fields(m->ApplicationProfiles(), "KEY"), (std::vector<std::string>{"PROFILE1", "PROFILE6", "PROFILE0"}));

    // "03" is port 3 when comparing numbers: nothing more is added.
    CommsFixture g{3};
    auto n = MapOf(g, Direct("03"));
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

    EXPECT_EQ(SystemOps::ProgressPercent(0.125), 13);
    EXPECT_EQ(SystemOps::ProgressPercent(0.994), 99);
    EXPECT_EQ(SystemOps::ProgressPercent(1.0), 100);
    EXPECT_EQ(SystemOps::ProgressPercent(-1), 0);
    EXPECT_EQ(SystemOps::ProgressPercent(7), 100);
}

TEST(PortDiscovery, DescriptionsNameTheFirstProfileOnEachPortExactly) {
    CommsFixture f;
    auto m = MapOf(f, "<PROFILE><NAME>Modem</NAME><TYPE>RS232</TYPE><METHOD>PHONEMODEM</METHOD>"
                      "<COMMPORT>2</COMMPORT></PROFILE>" +
                          Direct("2") + Direct("03") + Direct("4") + "<PROFILE><COMMPORT>5</COMMPORT></PROFILE>");
    f.dir.Write("app/ports.txt", "stale list: must be removed before the companion runs");
    WriteCompanion(f.dir, "cat > \"$1/ports.tmp\" <<'END'\n"
                          "  COM2|USB modem  \r\n"
                          "COM3|Prolific adapter\n"
                          "COM4\n"
                          "\n"
                          "COM4|Keyspan|extra\n"
                          "COM5|Second|x|y\n"
                          "END\n"
                          "mv \"$1/ports.tmp\" \"$1/ports.txt\"");
    m->GetCommPortDescriptions(f.dir.File("app"));
    EXPECT_EQ(Fields(m->ApplicationProfiles(), "NAME"),
              (std::vector<std::string>{"USB modem", "Direct to COM2", "Direct to COM03", "Keyspan", "Second"}));
    // The companion was reaped: this process has no child left.
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1);
}

TEST(PortDiscovery, ACompanionThatIsMissingOrNeverWritesChangesNothing) {
    CommsFixture f;
    auto m = MapOf(f, Direct("1"));
    f.dir.Write("app/ports.txt", "COM1|stale\n");
    m->GetCommPortDescriptions(f.dir.File("app"));  // no companion there
    EXPECT_FALSE(std::filesystem::exists(f.dir.File("app/ports.txt")));
    m->GetCommPortDescriptions("");
    m->GetCommPortDescriptions(f.dir.File("nowhere"));
    EXPECT_EQ(Field(m->ApplicationProfile(1), "NAME"), "Direct to COM1");

    WriteCompanion(f.dir, "sleep 30");
    f.dir.Write("app/ports.txt", "COM1|stale\n");
    m->GetCommPortDescriptions(f.dir.File("app"));
    EXPECT_EQ(Field(m->ApplicationProfile(1), "NAME"), "Direct to COM1");
    // Given up on at the deadline, ended and reaped.
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1);
}

TEST(PortDiscovery, ThePortListGoesToAPerUserFolderWhenTheProgramsFolderIsReadOnly) {
    TempDir dir;
    EXPECT_EQ(PortsFile::Folder(dir.Path()), dir.Path());
    const char* saved = std::getenv("XDG_RUNTIME_DIR");
    const std::string previous = saved ? saved : "";
    setenv("XDG_RUNTIME_DIR", dir.File("run").c_str(), 1);
    // /proc takes no new files, whoever asks.
    const std::string folder = PortsFile::Folder("/proc");
    saved ? setenv("XDG_RUNTIME_DIR", previous.c_str(), 1) : unsetenv("XDG_RUNTIME_DIR");
    EXPECT_EQ(folder, dir.File("run/meridex"));
    EXPECT_TRUE(std::filesystem::is_directory(folder));
}
