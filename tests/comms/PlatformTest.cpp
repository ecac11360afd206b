// The Linux platform code: the .ini store, ports on pseudo-terminals, started
// programs, and the companion program's part in port discovery (shell
// scripts stand in for it).
#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <set>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#include "CommsTestSupport.h"
#include <meridex/comms/PortsFile.h>
#include <meridex/comms/SystemOps.h>
#include <meridex/platform/StartedProgram.h>
#include <meridex/platform/linux/IniUserStore.h>
#include <meridex/platform/linux/LinuxSerialPortSource.h>

using namespace meridex;
using namespace meridex::test;
using Device = LinuxSerialPortSource::Device;

namespace {

// Sets an environment variable while it lives.
class ScopedEnv {
public:
    ScopedEnv(const char* name, const std::string& value) : name_(name) {
        if (const char* old = std::getenv(name)) old_ = old;
        setenv(name, value.c_str(), 1);
    }
    ~ScopedEnv() { old_ ? setenv(name_, old_->c_str(), 1) : unsetenv(name_); }

private:
    const char* name_;
    std::optional<std::string> old_;
};

// A stand-in companion: a shell script that writes ports.txt itself.
void WriteCompanion(const TempDir& dir, const std::string& body) {
    std::string path = dir.Write("app/SerialPortInfoDump", "#!/bin/sh\n" + body + "\n");
    chmod(path.c_str(), 0755);
}

}  // namespace

TEST(IniUserStore, KeepsOrderCommentsAndIgnoresCase) {
    TempDir dir;
    IniUserStore store(dir.File("meridex"));
    EXPECT_EQ(store.GetSetting("MeridexV4", "Settings", "MAX_COMM_PORT_SCOMM", "64"), "64");
    EXPECT_TRUE(store.GetAllSettings("MERIDEXV4", "CommsUsage").empty());

    std::string file = store.FileFor("MeridexV4");
    EXPECT_EQ(file, store.FileFor("MERIDEXV4"));
    dir.Write("meridex/meridexv4.ini",
              "; hand-written\r\n[CommsUsage]\r\n3 = 4\r\n1=2\r\n\r\n# more\n[Settings]\nMAX_COMM_PORT_SCOMM=8\n");
    EXPECT_EQ(store.GetSetting("MERIDEXV4", "settings", "max_comm_port_scomm", "64"), "8");
    ASSERT_TRUE(store.SaveSetting("MeridexV4", "CommsUsage", "2", "9"));
    ASSERT_TRUE(store.SaveSetting("meridexv4", "COMMSUSAGE", "3", "5"));
    ASSERT_TRUE(store.SaveSetting("MeridexV4", "CommsPref", "/schemes/Hill.XML", "3"));
    EXPECT_EQ(store.GetAllSettings("MeridexV4", "CommsUsage"),
              (std::vector<UserStore::Pair>{{"3", "5"}, {"1", "2"}, {"2", "9"}}));
    std::string text = TempDir::Read(file);
    EXPECT_NE(text.find("; hand-written"), std::string::npos);
    EXPECT_NE(text.find("# more"), std::string::npos);
    EXPECT_EQ(store.GetSetting("MERIDEXV4", "CommsPref", "/SCHEMES/hill.xml", ""), "3");

    ASSERT_TRUE(store.DeleteSetting("MeridexV4", "CommsUsage", "1"));
    EXPECT_EQ(store.GetAllSettings("MeridexV4", "CommsUsage").size(), 2u);
    // Names that cannot be stored are refused, not written half-way.
    const std::string before = TempDir::Read(file);
    EXPECT_FALSE(store.SaveSetting("MeridexV4", "CommsPref", "k", "two\nlines"));
    EXPECT_FALSE(store.SaveSetting("../escape", "S", "k", "v"));
    EXPECT_FALSE(store.SaveSetting("MeridexV4", "[odd]", "k", "v"));
    EXPECT_EQ(TempDir::Read(file), before);

    // Any key text round-trips, scheme paths with "=" included; plain
    // hand-written lines read as before.
    const std::vector<std::string> keys{"/schemes/a=b.xml", " padded ", ";semi", "#hash", "[br]", "\"q\"=x\\",
                                        "two\nlines", std::string("nul\0in", 6), "C:\\Schemes\\Hill.xml"};
    for (std::size_t i = 0; i < keys.size(); ++i)
        ASSERT_TRUE(store.SaveSetting("MeridexV4", "CommsPref", keys[i], std::to_string(i))) << keys[i];
    for (std::size_t i = 0; i < keys.size(); ++i)
        EXPECT_EQ(store.GetSetting("MeridexV4", "CommsPref", keys[i], ""), std::to_string(i)) << keys[i];
    EXPECT_NE(TempDir::Read(file).find("\nC:\\Schemes\\Hill.xml=8"), std::string::npos);
    dir.Write("meridex/meridexv4.ini", "[CommsPref]\n/by hand/Site.xml = 4\n\"/quoted\\\"=x.xml\" = 5\n");
    EXPECT_EQ(store.GetAllSettings("MeridexV4", "CommsPref"),
              (std::vector<UserStore::Pair>{{"/by hand/Site.xml", "4"}, {"/quoted\"=x.xml", "5"}}));

    // Where the store lives by default.
    ScopedEnv config("XDG_CONFIG_HOME", dir.Path());
    EXPECT_EQ(IniUserStore::DefaultFolder(), dir.Path() + "/meridex");
}

TEST(LinuxPorts, NumbersAreStableAcrossPlugging) {
    TempDir dir;
    IniUserStore store(dir.File("meridex"));
    std::vector<Device> devices{
        {"/dev/ttyS0", "/dev/ttyS0", "ttyS0", false, 0},
        {"/dev/ttyS3", "/dev/ttyS3", "ttyS3", false, 3},
        {"/dev/ttyUSB0", "/dev/serial/by-id/usb-FTDI_B", "FT232R", false, -1},
        {"/dev/ttyACM0", "/dev/serial/by-id/usb-Modem_A", "Modem", false, -1},
        {"/dev/rfcomm0", "/dev/rfcomm0", "Bluetooth link rfcomm0", true, -1}};
    // Each port as "number device|".
    auto numbered = [](const std::vector<SerialPort>& ports) {
        std::string text;
        for (const SerialPort& port : ports) text += std::to_string(port.number) + " " + port.device + "|";
        return text;
    };
    const std::string first = "1 /dev/ttyS0|2 /dev/rfcomm0|3 /dev/serial/by-id/usb-FTDI_B|4 /dev/ttyS3|"
                              "5 /dev/serial/by-id/usb-Modem_A|";
    EXPECT_EQ(numbered(LinuxSerialPortSource::NumberPorts(devices, store)), first);
    // Unplug the FTDI adapter and the modem, plug in another adapter: the old
    // numbers stay reserved (listed, not present), the new one takes 6.
    std::vector<Device> later{devices[0], devices[1], devices[4],
                              {"/dev/ttyUSB0", "/dev/serial/by-id/usb-Prolific_C", "PL2303", false, -1}};
    EXPECT_EQ(numbered(LinuxSerialPortSource::NumberPorts(later, store)),
              first + "6 /dev/serial/by-id/usb-Prolific_C|");
    auto again = LinuxSerialPortSource::NumberPorts(devices, store);
    EXPECT_EQ(again[2].description, "FT232R");
    EXPECT_TRUE(again[1].bluetooth);

    // A pin by hand wins over a UART's own number; the UART moves to a free
    // one. A device keeps the first number listed for it.
    store.SaveSetting("MeridexV4", "SerialPorts", "com1", "/dev/serial/by-id/usb-Modem_A");
    store.SaveSetting("MeridexV4", "SerialPorts", "COM9", "/dev/serial/by-id/usb-Modem_A");
    store.DeleteSetting("MeridexV4", "SerialPorts", "COM5");
    store.SaveSetting("MeridexV4", "SerialPorts", "COM99999", "/dev/ignored");
    store.SaveSetting("MeridexV4", "SerialPorts", "COMx", "/dev/ignored");
    // The UART moved aside never takes another UART's number (COM4 is
    // /dev/ttyS3's, listed or not), and keeps the one it gets.
    const std::set<int> uarts{0, 1, 2, 3};
    const std::string expected = "1 /dev/serial/by-id/usb-Modem_A|2 /dev/rfcomm0|3 /dev/serial/by-id/usb-FTDI_B|"
                                 "5 /dev/ttyS0|6 /dev/serial/by-id/usb-Prolific_C|";
    EXPECT_EQ(numbered(LinuxSerialPortSource::NumberPorts({devices[0], devices[3]}, store, uarts)), expected);
    EXPECT_EQ(numbered(LinuxSerialPortSource::NumberPorts({devices[0], devices[3]}, store, uarts)), expected);
    // A new adapter skips every UART's number too.
    std::vector<Device> adapter{{"/dev/ttyUSB9", "/dev/ttyUSB9", "CP2102", false, -1}};
    EXPECT_EQ(numbered({LinuxSerialPortSource::NumberPorts(adapter, store, {0, 1, 2, 3, 4, 5, 6}).back()}),
              "8 /dev/ttyUSB9|");
}

TEST(LinuxPorts, APortTheUserMayNotOpenIsPresent) {
    // /dev/null is a character device; the probe is told it may not open it,
    // as a user outside the dialout group is told for a real port.
    // (ENXIO: listed, but no device behind the node.)
    for (int refusal : {EACCES, EPERM, EBUSY, ENXIO}) {
        const bool present = LinuxSerialPortSource::ProbeDevice("/dev/null", [refusal](const std::string&, int) {
            errno = refusal;
            return -1;
        });
        EXPECT_EQ(present, refusal != ENXIO) << refusal;
    }
    EXPECT_FALSE(LinuxSerialPortSource::ProbeDevice("/dev/null"));  // opens, but is no terminal
}

namespace {

// A pair of linked pseudo-terminals made by socat, with $dir/ttyA and
// $dir/ttyB leading to them; ended with the object.
struct SocatPair {
    explicit SocatPair(const TempDir& dir) : a(dir.File("ttyA")), b(dir.File("ttyB")) {
        if (std::filesystem::exists("/usr/bin/socat"))
            program = StartedProgram::Start("/usr/bin/socat", {"pty,raw,echo=0,link=" + a, "pty,raw,echo=0,link=" + b});
        for (int i = 0; i < 500 && program.Started() && !Ready(); ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    bool Ready() const { return std::filesystem::exists(a) && std::filesystem::exists(b); }
    std::string a, b;
    StartedProgram program;
};

}  // namespace

TEST(LinuxPorts, APinnedPseudoTerminalIsAPresentPortUntilItGoes) {
    TempDir dir;
    SocatPair socat(dir);
    if (!socat.Ready()) GTEST_SKIP() << "socat is not available";
    auto store = std::make_shared<IniUserStore>(dir.File("meridex"));
    store->SaveSetting("MeridexV4", "SerialPorts", "COM201", socat.a);
    store->SaveSetting("MeridexV4", "SerialPorts", "COM202", dir.Write("plain.txt", "not a device"));
    store->SaveSetting("MeridexV4", "SerialPorts", "COM203", "/dev/null");  // a device, but no terminal
    auto source = std::make_shared<LinuxSerialPortSource>(store);
    EXPECT_TRUE(SystemOps::IsCommPortPresent(*source, 201));
    EXPECT_FALSE(SystemOps::IsCommPortPresent(*source, 202));
    EXPECT_FALSE(SystemOps::IsCommPortPresent(*source, 203));
    EXPECT_FALSE(SystemOps::IsBluetoothModemPort(*source, 201));

    // The map gets a cable for it once the bound reaches it, named by the
    // companion after its device.
    auto find201 = [](const CommsProfileManager& m) {
        for (const XmlNode& p : m.ApplicationProfiles().SelectAll("PROFILE"))
            if (Field(p, "COMMPORT") == "201") return p;
        return XmlNode();
    };
    CommsProfileManager m(source, store);
    EXPECT_TRUE(find201(m).IsNull());  // above the default bound of 64
    store->SaveSetting("MeridexV4", "Settings", "MAX_COMM_PORT_SCOMM", "256");
    m.CleanRS232Direct();
    ASSERT_FALSE(find201(m).IsNull());
    EXPECT_EQ(Field(find201(m), "NAME"), "Direct to COM201");
#ifdef MERIDEX_COMPANION_DIR
    {  // The real companion finds the same store through XDG_CONFIG_HOME.
        ScopedEnv config("XDG_CONFIG_HOME", dir.Path());
        std::filesystem::create_directories(dir.File("app"));
        std::filesystem::create_symlink(MERIDEX_COMPANION_DIR "/SerialPortInfoDump",
                                        dir.File("app/SerialPortInfoDump"));
        m.GetCommPortDescriptions(dir.File("app"));
    }
    EXPECT_EQ(Field(find201(m), "NAME"), "ttyA");
    EXPECT_NE(TempDir::Read(dir.File("app/ports.txt")).find("COM201|ttyA\n"), std::string::npos);
#endif

    socat.program.End(std::chrono::milliseconds(0));
    EXPECT_FALSE(SystemOps::IsCommPortPresent(*source, 201));
    m.CleanRS232Direct();
    EXPECT_TRUE(find201(m).IsNull());
}

TEST(LinuxPorts, StartedProgramsAreAlwaysReaped) {
    StartedProgram quick = StartedProgram::Start("/bin/true", {});
    ASSERT_TRUE(quick.Started());
    quick.End(std::chrono::seconds(5));
    StartedProgram slow = StartedProgram::Start("/bin/sleep", {"30"});
    ASSERT_TRUE(slow.Started());
    EXPECT_FALSE(slow.HasEnded());
    slow.End(std::chrono::milliseconds(20));
    EXPECT_FALSE(StartedProgram::Start("/no/such/program", {}).Started());
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1);
}

TEST(LinuxPortsAsUser, APortClosedToThisUserIsPresent) {
    if (geteuid() == 0) GTEST_SKIP() << "needs an unprivileged user; the unprivileged test entry runs it";
    const std::string port = "/dev/ttyS0";
    if (access(port.c_str(), F_OK) != 0 || access(port.c_str(), R_OK) == 0)
        GTEST_SKIP() << port << " is missing or open to this user";
    EXPECT_TRUE(LinuxSerialPortSource::ProbeDevice(port));
}

TEST(PortDiscovery, DescriptionsNameTheFirstProfileOnEachPortExactly) {
    CommsFixture f;
    auto m = MapOf(f, "<PROFILE><NAME>Modem</NAME><TYPE>RS232</TYPE><METHOD>PHONEMODEM</METHOD>"
                      "<COMMPORT>2</COMMPORT></PROFILE>" +
                          DirectProfile("2") + DirectProfile("03") + DirectProfile("4") + "<PROFILE><COMMPORT>5</COMMPORT></PROFILE>");
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
    auto m = MapOf(f, DirectProfile("1"));
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
    ScopedEnv runtime("XDG_RUNTIME_DIR", dir.File("run"));
    const std::string folder = PortsFile::Folder("/proc");  // /proc takes no new files, whoever asks
    EXPECT_EQ(folder, dir.File("run/meridex"));
    EXPECT_TRUE(std::filesystem::is_directory(folder));
}
