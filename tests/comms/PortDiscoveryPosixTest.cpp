// The companion program's part in port discovery, with shell scripts standing
// in for it.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <sys/stat.h>
#include <sys/wait.h>

#include "CommsTestSupport.h"
#include <meridex/comms/PortsFile.h>

using namespace meridex;
using namespace meridex::test;

namespace {

// A stand-in companion: a shell script that writes ports.txt itself.
void WriteCompanion(const TempDir& dir, const std::string& body) {
    std::string path = dir.Write("app/SerialPortInfoDump", "#!/bin/sh\n" + body + "\n");
    chmod(path.c_str(), 0755);
}

}  // namespace

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
    const char* saved = std::getenv("XDG_RUNTIME_DIR");
    const std::string previous = saved ? saved : "";
    setenv("XDG_RUNTIME_DIR", dir.File("run").c_str(), 1);
    // /proc takes no new files, whoever asks.
    const std::string folder = PortsFile::Folder("/proc");
    saved ? setenv("XDG_RUNTIME_DIR", previous.c_str(), 1) : unsetenv("XDG_RUNTIME_DIR");
    EXPECT_EQ(folder, dir.File("run/meridex"));
    EXPECT_TRUE(std::filesystem::is_directory(folder));
}
