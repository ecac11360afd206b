#include <gtest/gtest.h>

#include <memory>
#include <tuple>

#include "SimulatorProcess.h"
#include "TempDir.h"
#include <meridex/comms/CommsProfileManager.h>
#include <meridex/comms/ProfileXml.h>
#include <meridex/firmware/FirmwareImage.h>
#include <meridex/firmware/LinkLogger.h>
#include <meridex/firmware/LoggerLinks.h>
#include <meridex/platform/linux/IniUserStore.h>
#include <meridex/platform/linux/LinuxSerialPortSource.h>

namespace meridex {
namespace {

using namespace std::chrono_literals;
using test::SimulatorProcess;
using test::TempDir;

// Records the steps it sees; asks to cancel once a number of bytes is written.
class Recorder : public UpgradeEvents {
public:
    void Progress(UpgradeStep step, std::uint64_t done, std::uint64_t) override {
        if (steps.empty() || steps.back() != step) steps.push_back(step);
        if (step == UpgradeStep::Write) written = done;
    }
    bool CancelRequested() override { return cancelAfter > 0 && written >= cancelAfter; }

    std::vector<UpgradeStep> steps;
    std::uint64_t written = 0;
    std::uint64_t cancelAfter = 0;
};

LinkLogger::Options Quick() {
    LinkLogger::Options o;
    o.replyTimeout = 2s;
    o.restartTimeout = 3s;
    return o;
}

class Upgrade : public ::testing::Test {
protected:
    // A simulated WL400 at version 1.0.0 with 256-byte blocks; the image has 40 blocks.
    std::vector<std::string> Args(const std::string& link, std::vector<std::string> more = {},
                                  const std::string& flash = "flash.bin") const {
        std::vector<std::string> args = {"--flash", dir.File(flash), "--model", "WL400", "--serial", "7001",
                                         "--version", "1.0.0", "--block-size", "256"};
        if (link == "pty") args.insert(args.end(), {"--pty", "--link", dir.File("ttyLogger")});
        else args.insert(args.end(), {"--" + link, "0"});
        args.insert(args.end(), more.begin(), more.end());
        return args;
    }
    // The simulator's logger over TCP, or over UDP.
    std::unique_ptr<LinkLogger> Tcp(const SimulatorProcess& sim, LinkLogger::Options options = Quick(),
                                    bool udp = false) {
        std::string error;
        auto logger = udp ? LoggerLinks::OpenUdp("127.0.0.1", sim.Port(), error, options)
                          : LoggerLinks::OpenTcp("127.0.0.1", sim.Port(), error, options);
        EXPECT_TRUE(logger) << error;
        return logger;
    }
    // The pseudo-terminal reached as this PC's COM201, through a direct profile of the map.
    std::unique_ptr<LinkLogger> Com201(LinkLogger::Options options = Quick()) {
        auto store = std::make_shared<IniUserStore>(dir.File("config"));
        store->SaveSetting("MeridexV4", "SerialPorts", "COM201", dir.File("ttyLogger"));
        auto ports = std::make_shared<LinuxSerialPortSource>(store);
        CommsProfileManager map(ports, store);
        XmlNode profile = map.AddRS232Direct("201");
        ProfileXml::SetChild(profile, "BAUDRATE", "115200");
        std::string error;
        auto logger = LoggerLinks::OpenProfile(profile, *ports, error, options);
        EXPECT_TRUE(logger) << error;
        return logger;
    }
    static LoggerIdentity Who(Logger& logger) {
        UpgradeResult r = logger.Identify();
        EXPECT_TRUE(r.Ok()) << r.message;
        return r.identity;
    }

    TempDir dir;
    FirmwareImage image = FirmwareImage::Make({"WL400", "WL410"}, "2.0.0", "2026-06-01", std::string(40 * 256 - 17, 'x'));
};

TEST_F(Upgrade, OverTcpTheReportedVersionChangesAndEveryStepIsReported) {
    SimulatorProcess sim(Args("tcp"));
    ASSERT_TRUE(sim.Ready());
    auto logger = Tcp(sim);
    ASSERT_TRUE(logger);
    LoggerIdentity before = Who(*logger);
    EXPECT_EQ(before.model, "WL400");
    EXPECT_EQ(before.serialNumber, "7001");
    EXPECT_EQ(before.firmwareVersion, "1.0.0");
    EXPECT_FALSE(before.inLoader);

    Recorder events;
    UpgradeResult r = logger->LoadFirmware(image, &events);
    ASSERT_TRUE(r.Ok()) << r.message;
    EXPECT_EQ(r.identity.firmwareVersion, "2.0.0");
    EXPECT_FALSE(r.identity.inLoader);
    EXPECT_EQ(events.steps, (std::vector<UpgradeStep>{UpgradeStep::Identify, UpgradeStep::EnterLoader,
                                                      UpgradeStep::Erase, UpgradeStep::Write, UpgradeStep::Verify,
                                                      UpgradeStep::Start, UpgradeStep::Confirm}));
    EXPECT_EQ(events.written, image.Size());

    // The new version is what the logger keeps: a restarted logger reports it.
    sim.Stop();
    SimulatorProcess again(Args("tcp"));
    ASSERT_TRUE(again.Ready());
    EXPECT_EQ(Who(*Tcp(again)).firmwareVersion, "2.0.0");
}

TEST_F(Upgrade, OverAPseudoTerminalALinkDroppedAtABlockLeavesTheLoaderAndASecondAttemptCompletes) {
    {
        SimulatorProcess sim(Args("pty", {"--drop-after-block", "7"}));
        ASSERT_TRUE(sim.Ready());
        auto logger = Com201();
        ASSERT_TRUE(logger);
        EXPECT_NE(logger->Description().find("COM201"), std::string::npos);
        UpgradeResult r = logger->LoadFirmware(image, nullptr);
        EXPECT_EQ(r.status, UpgradeStatus::LinkLost) << r.message;
        EXPECT_NE(r.message.find("block 7 of 40"), std::string::npos) << r.message;
        EXPECT_NE(r.message.find("loader"), std::string::npos) << r.message;
        EXPECT_EQ(sim.WaitForExit(), 3);
    }
    SimulatorProcess sim(Args("pty"));
    ASSERT_TRUE(sim.Ready());
    auto logger = Com201();
    ASSERT_TRUE(logger);
    LoggerIdentity stranded = Who(*logger);
    EXPECT_TRUE(stranded.inLoader);
    EXPECT_EQ(stranded.firmwareVersion, "");  // erased: nothing it could run
    EXPECT_EQ(stranded.model, "WL400");

    Recorder events;
    UpgradeResult r = logger->LoadFirmware(image, &events);
    ASSERT_TRUE(r.Ok()) << r.message;
    EXPECT_EQ(r.identity.firmwareVersion, "2.0.0");
    EXPECT_EQ(events.steps[1], UpgradeStep::Erase);  // already in its loader
}

// A block damaged on the way is sent again; over UDP the upgrade completes too; a logger that refuses
// to erase keeps its old firmware, whole, and stays reachable in its loader.
TEST_F(Upgrade, ALinkOrLoggerThatMisbehavesEndsAsItShould) {
    const std::vector<std::tuple<std::string, std::vector<std::string>, UpgradeStatus, std::string>> rows = {
        {"tcp", {"--corrupt-block", "5"}, UpgradeStatus::Ok, ""},
        {"udp", {}, UpgradeStatus::Ok, ""},
        {"tcp", {"--refuse-erase"}, UpgradeStatus::LoggerRefused, "refused to erase"}};
    int n = 0;
    for (const auto& [link, flags, status, said] : rows) {
        SimulatorProcess sim(Args(link, flags, "flash" + std::to_string(++n)));
        ASSERT_TRUE(sim.Ready());
        auto logger = Tcp(sim, Quick(), link == "udp");
        ASSERT_TRUE(logger);
        UpgradeResult r = logger->LoadFirmware(image, nullptr);
        EXPECT_EQ(r.status, status) << r.message;
        EXPECT_NE(r.message.find(said), std::string::npos) << r.message;
        LoggerIdentity who = Who(*logger);
        EXPECT_EQ(who.firmwareVersion, r.Ok() ? "2.0.0" : "1.0.0");
        EXPECT_EQ(who.inLoader, !r.Ok());
    }
}

TEST_F(Upgrade, DamagedOrForeignImagesAreRefusedWithNothingWritten) {
    SimulatorProcess sim(Args("tcp"));
    ASSERT_TRUE(sim.Ready());
    auto logger = Tcp(sim);
    const std::string flashBefore = TempDir::Read(dir.File("flash.bin"));

    UpgradeResult damaged = logger->LoadFirmware(FirmwareImage(), nullptr);
    EXPECT_EQ(damaged.status, UpgradeStatus::ImageRefused);
    EXPECT_NE(damaged.message.find("damaged"), std::string::npos);

    FirmwareImage rain = FirmwareImage::Make({"RG200"}, "9.0", "", std::string(1000, 'r'));
    Recorder events;
    UpgradeResult foreign = logger->LoadFirmware(rain, &events);
    EXPECT_EQ(foreign.status, UpgradeStatus::ImageRefused);
    EXPECT_NE(foreign.message.find("RG200"), std::string::npos) << foreign.message;
    EXPECT_EQ(events.steps, std::vector<UpgradeStep>{UpgradeStep::Identify});

    EXPECT_EQ(TempDir::Read(dir.File("flash.bin")), flashBefore);
    LoggerIdentity after = Who(*logger);
    EXPECT_FALSE(after.inLoader);
    EXPECT_EQ(after.firmwareVersion, "1.0.0");
}

TEST_F(Upgrade, CancellingMidWayLeavesTheLoaderAndSaysSo) {
    SimulatorProcess sim(Args("tcp"));
    ASSERT_TRUE(sim.Ready());
    auto logger = Tcp(sim);
    Recorder events;
    events.cancelAfter = 10 * 256;
    UpgradeResult r = logger->LoadFirmware(image, &events);
    EXPECT_EQ(r.status, UpgradeStatus::Cancelled);
    EXPECT_NE(r.message.find("block 11 of 40"), std::string::npos) << r.message;
    EXPECT_NE(r.message.find("waiting in its loader"), std::string::npos) << r.message;
    EXPECT_TRUE(Who(*logger).inLoader);

    // Cancelled before anything changed, the logger keeps running.
    SimulatorProcess fresh(Args("tcp", {}, "fresh.bin"));
    ASSERT_TRUE(fresh.Ready());
    Recorder early;
    early.cancelAfter = 1;
    early.written = 1;
    UpgradeResult none = Tcp(fresh)->LoadFirmware(image, &early);
    EXPECT_EQ(none.status, UpgradeStatus::Cancelled);
    EXPECT_NE(none.message.find("nothing was changed"), std::string::npos) << none.message;
    EXPECT_FALSE(none.identity.inLoader);

    EXPECT_TRUE(logger->LoadFirmware(image, nullptr).Ok());
}

TEST_F(Upgrade, ALoggerThatNeverAnswersTimesOutWithAClearMessage) {
    SimulatorProcess sim(Args("tcp", {"--reply-delay", "5000"}));
    ASSERT_TRUE(sim.Ready());
    LinkLogger::Options options;
    options.replyTimeout = 150ms;
    options.maxAttempts = 2;
    UpgradeResult r = Tcp(sim, options)->LoadFirmware(image, nullptr);
    EXPECT_EQ(r.status, UpgradeStatus::NoAnswer);
    EXPECT_EQ(r.message, "The logger did not answer while identifying it (TCP 127.0.0.1:" + std::to_string(sim.Port()) + ").");

    // Slow but within the time-out is fine.
    SimulatorProcess slow(Args("tcp", {"--reply-delay", "20"}, "slow.bin"));
    ASSERT_TRUE(slow.Ready());
    options.replyTimeout = 1s;
    EXPECT_TRUE(Tcp(slow, options)->Identify().Ok());

    // Nobody listening: the link does not open.
    sim.Stop();
    std::string error;
    EXPECT_FALSE(LoggerLinks::OpenTcp("127.0.0.1", sim.Port(), error, options));
    EXPECT_NE(error.find("TCP 127.0.0.1:"), std::string::npos) << error;
}

TEST(LoggerLinks, ProfilesThatCannotCarryAnUpgradeAreRefusedWithTheReason) {
    TempDir dir;
    auto store = std::make_shared<IniUserStore>(dir.File("config"));
    auto ports = std::make_shared<LinuxSerialPortSource>(store);
    CommsProfileManager map(ports, store);
    XmlNode tcp = map.AddTCPConnection();
    ProfileXml::SetChild(tcp, "PORT", "70000");
    const std::vector<std::pair<XmlNode, std::string>> refused = {
        {map.AddGPRSProxyConnection(), "GPRSPROXY"}, {map.AddRS232Direct(""), "names no serial port"},
        {map.AddRS232Direct("250"), "COM250 is not a serial port of this PC"}, {tcp, "port between 1 and 65535"}};
    std::string error;
    for (const auto& [profile, reason] : refused) {
        EXPECT_FALSE(LoggerLinks::OpenProfile(profile, *ports, error));
        EXPECT_NE(error.find(reason), std::string::npos) << error;
    }

    std::string host;
    std::uint16_t port = 0;
    EXPECT_TRUE(LoggerLinks::SplitHostPort("[::1]:9000", host, port));
    EXPECT_EQ(host, "::1");
    EXPECT_EQ(port, 9000);
    EXPECT_FALSE(LoggerLinks::SplitHostPort("127.0.0.1", host, port));
    EXPECT_FALSE(LoggerLinks::SplitHostPort("127.0.0.1:0", host, port));
}

}  // namespace
}  // namespace meridex
