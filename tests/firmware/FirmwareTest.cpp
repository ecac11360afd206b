#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <tuple>

#include "SimulatorProcess.h"
#include "TempDir.h"
#include <meridex/comms/CommsProfileManager.h>
#include <meridex/comms/ProfileXml.h>
#include <meridex/firmware/Crc.h>
#include <meridex/firmware/FirmwareFolder.h>
#include <meridex/firmware/FirmwareImage.h>
#include <meridex/firmware/FirmwareVersion.h>
#include <meridex/firmware/LinkFrame.h>
#include <meridex/firmware/LinkLogger.h>
#include <meridex/firmware/LoggerLinks.h>
#include <meridex/platform/linux/IniUserStore.h>
#include <meridex/platform/linux/LinuxSerialPortSource.h>

namespace meridex {
namespace {

using namespace std::chrono_literals;
using test::SimulatorProcess;
using test::TempDir;

std::string Payload(std::size_t size, int seed = 1) {
    std::string bytes(size, '\0');
    for (std::size_t i = 0; i < size; ++i) bytes[i] = static_cast<char>((i * 31 + seed * 7) & 0xFF);
    return bytes;
}

std::string WriteImage(const TempDir& dir, const std::string& name, std::vector<std::string> models,
                       const std::string& version, const std::string& date = "2026-01-01") {
    return dir.Write(name, FirmwareImage::Make(std::move(models), version, date, Payload(3000)).Serialize());
}

TEST(Crc, KnownCheckValues) {
    EXPECT_EQ(Crc::Crc32("123456789"), 0xCBF43926u);
    EXPECT_EQ(Crc::Crc16("123456789"), 0x29B1);
    EXPECT_EQ(Crc::Crc32("56789", Crc::Crc32("1234")), 0xCBF43926u);
}

TEST(FirmwareVersion, ComparesNumericPartsAsNumbers) {
    EXPECT_GT(FirmwareVersion::Compare("2.10", "2.9"), 0);
    EXPECT_LT(FirmwareVersion::Compare("1.9.9", "2.0"), 0);
    EXPECT_EQ(FirmwareVersion::Compare("2.1", "2.1.0"), 0);
    EXPECT_EQ(FirmwareVersion::Compare("2.01", "2.1"), 0);
    EXPECT_GT(FirmwareVersion::Compare("2.1.b", "2.1.A"), 0);
}

TEST(FirmwareImage, AWrittenFileReadsBackWithEverything) {
    TempDir dir;
    FirmwareImage made = FirmwareImage::Make({"WL400", "WL410"}, "2.4.1", "2026-03-02", Payload(5000),
                                             "Rain gauge fix\nsecond line");
    std::string path = dir.Write("wl400-2.4.1.mxfw", made.Serialize());
    FirmwareImage::ReadError error;
    FirmwareImage read = FirmwareImage::Read(path, &error);
    ASSERT_FALSE(read.IsNull()) << error.description;
    EXPECT_EQ(error.number, 0);
    std::string models;
    for (const std::string& model : read.Models()) models += model + " ";
    EXPECT_EQ(read.Path() + " " + models + read.Version() + " " + read.Date() + " " + read.Description(),
              path + " WL400 WL410 2.4.1 2026-03-02 Rain gauge fix second line");
    EXPECT_EQ(read.Payload(), Payload(5000));
    EXPECT_EQ(read.PayloadCrc(), Crc::Crc32(Payload(5000)));
    EXPECT_TRUE(read.FitsModel("wl410"));
    EXPECT_FALSE(read.FitsModel("WL4"));
    EXPECT_FALSE(read.FitsModel(""));
}

TEST(FirmwareImage, DamagedAndForeignFilesAreRefusedWithTheirReason) {
    TempDir dir;
    const std::string good = FirmwareImage::Make({"WL400"}, "2.0", "", Payload(2000)).Serialize();
    FirmwareImage::ReadError error;

    EXPECT_TRUE(FirmwareImage::Read(dir.File("missing.mxfw"), &error).IsNull());
    EXPECT_EQ(error.number, 53);
    EXPECT_EQ(error.description, "File not found");

    struct Case {
        std::string name, bytes, reason;
    };
    std::string flipped = good;
    flipped[flipped.size() / 2] ^= 0x01;
    std::string header = good;
    header[header.find("VERSION=2.0") + 8] = '3';  // a forged header: the file's own CRC catches it
    std::vector<Case> cases = {
        {"flipped.mxfw", flipped, "checksum does not match"},
        {"short.mxfw", good.substr(0, good.size() - 100), "checksum does not match"},
        {"header.mxfw", header, "checksum does not match"},
        {"text.mxfw", "MODELS=WL400\nVERSION=1\n", "not a firmware file"},
        {"empty.mxfw", "", "not a firmware file"},
        {"cut.mxfw", good.substr(0, 16), "cut short"},
    };
    for (const Case& c : cases) {
        EXPECT_TRUE(FirmwareImage::Read(dir.Write(c.name, c.bytes), &error).IsNull()) << c.name;
        EXPECT_EQ(error.number, FirmwareImage::kInvalidFileFormat) << c.name;
        EXPECT_NE(error.description.find(c.reason), std::string::npos) << c.name << ": " << error.description;
    }
}

TEST(FirmwareFolder, OffersOnlyTheModelsFilesNewestFirstWithTheRunningOneMarked) {
    TempDir dir;
    WriteImage(dir, "a-1.2.mxfw", {"WL400"}, "1.2");
    WriteImage(dir, "b-1.10.MXFW", {"WL400", "WL410"}, "1.10");
    WriteImage(dir, "c-1.9.mxfw", {"WL410", "wl400"}, "1.9", "2026-05-01");
    WriteImage(dir, "d-1.9.mxfw", {"WL400"}, "1.9", "2026-04-01");
    WriteImage(dir, "rg.mxfw", {"RG200"}, "9.0");
    WriteImage(dir, "sub/e-5.0.mxfw", {"WL400"}, "5.0");  // sub-folders are not searched
    WriteImage(dir, "notes.txt", {"WL400"}, "8.0");      // nor other extensions
    dir.Write("broken.mxfw", "MXFW garbage");

    FirmwareFolder folder(dir.Path());
    ASSERT_TRUE(folder.Exists());
    EXPECT_EQ(folder.Images().size(), 5u);
    ASSERT_EQ(folder.Refused().size(), 1u);
    EXPECT_EQ(std::filesystem::path(folder.Refused()[0].path).filename(), "broken.mxfw");

    std::vector<FirmwareFolder::Offer> offers = folder.OffersFor("WL400", "1.9");
    // Each file, and whether it is newer (+), the same (=) or older (-) than the running version.
    std::string offered;
    for (const auto& offer : offers) {
        const char* sign = offer.comparison > 0 ? "+" : offer.comparison < 0 ? "-" : "=";
        offered += std::filesystem::path(offer.image.Path()).filename().string() + sign + " ";
    }
    EXPECT_EQ(offered, "b-1.10.MXFW+ c-1.9.mxfw= d-1.9.mxfw= a-1.2.mxfw- ");
    EXPECT_TRUE(offers[1].Running());

    EXPECT_TRUE(folder.OffersFor("XX1", "1.0").empty());
    // A logger without runnable firmware: everything is an upgrade.
    for (const auto& offer : folder.OffersFor("WL400", "")) EXPECT_GT(offer.comparison, 0);

    FirmwareFolder single(dir.File("rg.mxfw"));
    ASSERT_EQ(single.Images().size(), 1u);
    EXPECT_EQ(single.OffersFor("rg200", "9.0").size(), 1u);
    EXPECT_FALSE(FirmwareFolder(dir.File("nowhere")).Exists());
}

TEST(LinkFrame, ReaderFindsFramesAcrossSplitsGarbageAndDamage) {
    using LinkFrame::Reader;
    std::string first = LinkFrame::Encode(LinkFrame::WriteBlock, std::string("\x00\x00\x00\x00payload\xA5\x5A", 13));
    std::string second = LinkFrame::Encode(LinkFrame::Identify, "");
    std::string damaged = LinkFrame::Encode(LinkFrame::Verify, "abc");
    damaged[6] ^= 0x40;

    Reader reader;
    LinkFrame::Frame frame;
    std::string stream = "noise\xA5" + first + damaged + second;
    // Byte by byte: no frame is handed out before it is whole.
    std::vector<std::pair<Reader::Result, std::uint8_t>> seen;
    for (char c : stream) {
        reader.Append(std::string_view(&c, 1));
        for (Reader::Result r; (r = reader.Next(frame)) != Reader::Result::None;)
            seen.emplace_back(r, r == Reader::Result::FrameReady ? frame.type : 0);
    }
    ASSERT_EQ(seen.size(), 3u);
    EXPECT_EQ(seen[0], std::make_pair(Reader::Result::FrameReady, std::uint8_t(LinkFrame::WriteBlock)));
    EXPECT_EQ(seen[1].first, Reader::Result::BadFrame);
    EXPECT_EQ(seen[2], std::make_pair(Reader::Result::FrameReady, std::uint8_t(LinkFrame::Identify)));
    EXPECT_EQ(reader.Buffered(), 0u);

    // A length beyond the limit is a bad frame, not a wait for bytes that never come.
    reader.Append(std::string("\xA5\x5A\x01\xFF\xFF", 5));
    EXPECT_EQ(reader.Next(frame), Reader::Result::BadFrame);
    EXPECT_EQ(LinkFrame::GetU32(std::string("\x78\x56\x34\x12", 4), 0), 0x12345678u);
}

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
    // What a logger says it is: "MODEL SERIAL vVERSION", and " in its loader" when it waits there.
    static std::string Id(const LoggerIdentity& who) {
        const std::string where = who.inLoader ? " in its loader" : "";
        return who.model + " " + who.serialNumber + " v" + who.firmwareVersion + where;
    }
    static std::string Who(Logger& logger) {
        UpgradeResult r = logger.Identify();
        EXPECT_TRUE(r.Ok()) << r.message;
        return Id(r.identity);
    }

    TempDir dir;
    FirmwareImage image = FirmwareImage::Make({"WL400", "WL410"}, "2.0.0", "2026-06-01", std::string(40 * 256 - 17, 'x'));
};

TEST_F(Upgrade, OverTcpTheReportedVersionChangesAndEveryStepIsReported) {
    SimulatorProcess sim(Args("tcp"));
    ASSERT_TRUE(sim.Ready());
    auto logger = Tcp(sim);
    ASSERT_TRUE(logger);
    EXPECT_EQ(Who(*logger), "WL400 7001 v1.0.0");

    Recorder events;
    UpgradeResult r = logger->LoadFirmware(image, &events);
    ASSERT_TRUE(r.Ok()) << r.message;
    EXPECT_EQ(Id(r.identity), "WL400 7001 v2.0.0");
    EXPECT_EQ(events.steps, (std::vector<UpgradeStep>{UpgradeStep::Identify, UpgradeStep::EnterLoader,
                                                      UpgradeStep::Erase, UpgradeStep::Write, UpgradeStep::Verify,
                                                      UpgradeStep::Start, UpgradeStep::Confirm}));
    EXPECT_EQ(events.written, image.Size());

    // The new version is what the logger keeps: a restarted logger reports it.
    sim.Stop();
    SimulatorProcess again(Args("tcp"));
    ASSERT_TRUE(again.Ready());
    EXPECT_EQ(Who(*Tcp(again)), "WL400 7001 v2.0.0");
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
    EXPECT_EQ(Who(*logger), "WL400 7001 v in its loader");  // erased: nothing it could run

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
        EXPECT_EQ(Who(*logger), r.Ok() ? "WL400 7001 v2.0.0" : "WL400 7001 v1.0.0 in its loader");
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
    EXPECT_EQ(Who(*logger), "WL400 7001 v1.0.0");
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
    EXPECT_EQ(Who(*logger), "WL400 7001 v in its loader");

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
