#include <csignal>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "Cli.h"
#include "Commands.h"
#include "ProgressBar.h"
#include <meridex/comms/CommsProfileManager.h>
#include <meridex/firmware/FirmwareFolder.h>
#include <meridex/firmware/FirmwareImage.h>
#include <meridex/firmware/FirmwareVersion.h>
#include <meridex/firmware/LoggerLinks.h>
#include <meridex/frame/FileOps.h>
#include <meridex/frame/Index.h>
#include <meridex/platform/Platform.h>

namespace meridex::cli {

namespace {

int ExitCodeOf(UpgradeStatus status) {
    switch (status) {
    case UpgradeStatus::Ok: return kOk;
    case UpgradeStatus::Cancelled: return kNo;
    case UpgradeStatus::ImageRefused: return kBadInput;
    case UpgradeStatus::NoLink: return kNoLink;
    case UpgradeStatus::NoAnswer: return kNoAnswer;
    case UpgradeStatus::LinkLost: return kLinkLost;
    case UpgradeStatus::LoggerRefused: return kLoggerRefused;
    case UpgradeStatus::TransferFailed:
    case UpgradeStatus::VerifyFailed:
    case UpgradeStatus::StartFailed: return kUpgradeFailed;
    }
    return kUpgradeFailed;
}

void FailUnlessOk(const UpgradeResult& result) {
    if (!result.Ok()) throw Failure(ExitCodeOf(result.status), result.message);
}

struct Target {
    std::string map, profile, port, tcp, udp;
    unsigned baud = 9600;
    int timeoutMs = 0;
};

void AddTargetOptions(CLI::App& command, Target& t) {
    auto* group = command.add_option_group("logger", "where the logger is (one of)");
    group->add_option("--profile", t.profile, "A device profile of --map, by key or number");
    group->add_option("--port", t.port, "A serial port of this PC, COMn");
    group->add_option("--tcp", t.tcp, "HOST:PORT over TCP");
    group->add_option("--udp", t.udp, "HOST:PORT over UDP");
    group->require_option(1);
    command.add_option("--map", t.map, "The communications map holding --profile");
    command.add_option("--baud", t.baud, "Speed of --port in bit/s")->capture_default_str();
    command.add_option("--timeout", t.timeoutMs,
                       "Reply time-out in milliseconds (default 2000; a profile's TIMEOUT, in seconds, wins)");
}

std::unique_ptr<LinkLogger> Open(const Target& t) {
    LinkLogger::Options options;
    if (t.timeoutMs > 0) options.replyTimeout = std::chrono::milliseconds(t.timeoutMs);
    std::string error;
    std::unique_ptr<LinkLogger> logger;
    if (!t.tcp.empty() || !t.udp.empty()) {
        const std::string& where = t.tcp.empty() ? t.udp : t.tcp;
        std::string host;
        std::uint16_t port = 0;
        if (!LoggerLinks::SplitHostPort(where, host, port)) throw Failure(kUsage, "\"" + where + "\" is not HOST:PORT");
        logger = t.tcp.empty() ? LoggerLinks::OpenUdp(host, port, error, options)
                               : LoggerLinks::OpenTcp(host, port, error, options);
    } else {
        auto store = Platform::DefaultUserStore();
        auto ports = Platform::DefaultSerialPortSource(store);
        if (!t.port.empty()) {
            const bool named = t.port.size() > 3 && (t.port.compare(0, 3, "COM") == 0 || t.port.compare(0, 3, "com") == 0);
            const std::string digits = named ? t.port.substr(3) : t.port;
            if (digits.empty() || digits.size() > 5 || digits.find_first_not_of("0123456789") != std::string::npos)
                throw Failure(kUsage, "\"" + t.port + "\" is not a serial port name such as COM3");
            logger = LoggerLinks::OpenPort(std::stoi(digits), t.baud, *ports, error, options);
        } else {
            if (t.map.empty()) throw Failure(kUsage, "--profile needs --map");
            RequireRead(t.map, "COMMSPROFILES", "communications map");
            CommsProfileManager manager(ports, store);
            const bool loaded = manager.LoadXMLMapFile(t.map);
            manager.setMapFile("");  // read only: nothing is saved on the way out
            if (!loaded) throw Failure(kBadInput, t.map + " is not a readable communications map");
            XmlNode profile = manager.ApplicationProfile(Index(t.profile));
            if (profile.IsNull() && t.profile.size() < 10 &&
                t.profile.find_first_not_of("0123456789") == std::string::npos && !t.profile.empty())
                profile = manager.ApplicationProfile(Index(static_cast<std::int32_t>(std::stol(t.profile))));
            if (profile.IsNull()) throw Failure(kNo, "the map has no profile \"" + t.profile + "\"");
            logger = LoggerLinks::OpenProfile(profile, *ports, error, options);
        }
    }
    if (!logger) throw Failure(kNoLink, error);
    return logger;
}

std::string Describe(const LoggerIdentity& id) {
    if (!id.inLoader) return id.model + " " + id.serialNumber + ", running firmware " + id.firmwareVersion;
    return id.model + " " + id.serialNumber + ", waiting in its loader" +
           (id.firmwareVersion.empty() ? " (no firmware)" : " (firmware " + id.firmwareVersion + ")");
}

Json IdentityJson(const LoggerIdentity& id) {
    return Json{{"model", id.model},           {"serial", id.serialNumber}, {"version", id.firmwareVersion},
                {"inLoader", id.inLoader},     {"loaderVersion", id.loaderVersion}};
}

Json FileJson(const FirmwareImage& image) {
    return Json{{"file", image.Path()}, {"version", image.Version()}, {"date", image.Date()},
                {"size", image.Size()}, {"models", image.Models()}};
}

volatile std::sig_atomic_t gInterrupted = 0;

class BarEvents : public UpgradeEvents {
public:
    void Progress(UpgradeStep step, std::uint64_t done, std::uint64_t total) override {
        bar.Update(UpgradePercent(step, done, total), UpgradeStepText(step, done, total));
    }
    bool CancelRequested() override { return gInterrupted != 0; }
    ProgressBar bar;
};

void List(const std::string& path, const std::string& model, const std::string& running) {
    if (!running.empty() && model.empty()) throw Failure(kUsage, "--running needs --model");
    FirmwareFolder folder(path);
    if (!folder.Exists()) throw Failure(kBadInput, path + ": File not found");
    std::vector<FirmwareFolder::Offer> offers;
    if (model.empty())
        for (const FirmwareImage& image : folder.Images()) offers.push_back({image, 1});
    else
        offers = folder.OffersFor(model, running);
    if (JsonOutput()) {
        Json files = Json::array();
        for (const auto& offer : offers) {
            Json file = FileJson(offer.image);
            if (!running.empty()) file["running"] = offer.Running();
            files.push_back(std::move(file));
        }
        Json refused = Json::array();
        for (const auto& refusal : folder.Refused())
            refused.push_back(Json{{"file", refusal.path}, {"error", refusal.error.number},
                                   {"reason", refusal.error.description}});
        PrintJson(Json{{"folder", path}, {"model", model}, {"files", files}, {"refused", refused}});
        return;
    }
    if (offers.empty()) std::cout << "(no firmware files" << (model.empty() ? "" : " for " + model) << ")\n";
    for (const auto& offer : offers) {
        const FirmwareImage& im = offer.image;
        std::string models;
        for (const std::string& m : im.Models()) models += (models.empty() ? "" : ",") + m;
        char line[160];
        std::snprintf(line, sizeof line, "%s %-10s %-10s %9llu  %-16s ", !running.empty() && offer.Running() ? "*" : " ",
                      im.Version().c_str(), im.Date().c_str(), static_cast<unsigned long long>(im.Size()),
                      models.c_str());
        std::cout << line << im.Path() << "\n";
    }
    for (const auto& refusal : folder.Refused()) Note("refused: " + refusal.error.description);
}

void Identify(const Target& target) {
    auto logger = Open(target);
    const UpgradeResult r = logger->Identify();
    FailUnlessOk(r);
    if (JsonOutput()) {
        Json out = IdentityJson(r.identity);
        out["link"] = logger->Description();
        PrintJson(out);
    } else {
        std::cout << logger->Description() << ": " << Describe(r.identity) << "\n";
    }
}

void Upgrade(const Target& target, const std::string& file, bool yes) {
    FirmwareImage::ReadError readError;
    const FirmwareImage image = FirmwareImage::Read(file, &readError);
    if (image.IsNull())
        throw Failure(kBadInput, (readError.number == 53 ? file + ": " : std::string()) + readError.description +
                                     " (error " + std::to_string(readError.number) + "); nothing was sent");
    auto logger = Open(target);
    const UpgradeResult who = logger->Identify();
    FailUnlessOk(who);
    const LoggerIdentity before = who.identity;
    if (!JsonOutput()) std::cout << logger->Description() << ": " << Describe(before) << "\n";
    if (!image.FitsModel(before.model))
        throw Failure(kBadInput, file + " is not for a " + before.model + "; nothing was sent");
    if (!yes) {
        const int c = before.firmwareVersion.empty() ? 1 : FirmwareVersion::Compare(image.Version(), before.firmwareVersion);
        std::cerr << (c < 0 ? "This is a downgrade. " : c == 0 ? "The logger already has this version. " : "")
                  << "Load firmware " << image.Version() << " into " << before.model << " " << before.serialNumber
                  << "? [y/N] " << std::flush;
        std::string answer;
        if (!std::getline(std::cin, answer) || (answer != "y" && answer != "Y" && answer != "yes"))
            throw Failure(kNo, "not confirmed; nothing was sent (--yes loads without asking)");
    }
    gInterrupted = 0;
    auto previous = std::signal(SIGINT, [](int) { gInterrupted = 1; });
    UpgradeResult r;
    {
        BarEvents events;
        r = logger->LoadFirmware(image, &events);
        if (r.Ok()) events.bar.Update(100, "Done");
        events.bar.Finish();
    }
    std::signal(SIGINT, previous);
    FailUnlessOk(r);
    if (JsonOutput())
        PrintJson(Json{{"link", logger->Description()}, {"file", FileJson(image)}, {"before", IdentityJson(before)},
                       {"after", IdentityJson(r.identity)}, {"message", r.message}});
    else
        std::cout << r.message << "\n";
}

struct PackValues {
    std::vector<std::string> models;
    std::string version, date, description, payload, out;
};

void Pack(const PackValues& v) {
    std::string payload;
    if (!FileOps::ReadWholeFile(v.payload, payload)) throw Failure(kBadInput, v.payload + ": File not found");
    const FirmwareImage image = FirmwareImage::Make(v.models, v.version, v.date, payload, v.description);
    std::string error;
    if (!FileOps::WriteFileAtomic(v.out, image.Serialize(), &error))
        throw Failure(kWriteFailed, "could not write " + v.out + ": " + error);
    if (JsonOutput()) {
        Json out = FileJson(FirmwareImage::Read(v.out));
        out["payloadCrc32"] = image.PayloadCrc();
        PrintJson(out);
    }
}

}  // namespace

void AddFirmwareCommand(CLI::App& app, int& exitCode) {
    // The options' values live as long as the command's callbacks, which share them.
    struct Values {
        Target target;
        std::string folder, model, running, file;
        PackValues pack;
        bool yes = false;
    };
    auto v = std::make_shared<Values>();
    auto* firmware = app.add_subcommand("firmware", "Firmware files and upgrades of loggers");
    firmware->require_subcommand(1);

    auto* list = firmware->add_subcommand("list", "The firmware files of a folder (or one file), newest first");
    list->add_option("FOLDER", v->folder, "A folder of .mxfw files, or one file")->required();
    list->add_option("--model", v->model, "Only the files for this model");
    list->add_option("--running", v->running, "With --model: mark this version with *");
    AddJsonFlag(list);
    list->callback([v, &exitCode] {
        List(v->folder, v->model, v->running);
        exitCode = kOk;
    });

    auto* identify = firmware->add_subcommand("identify", "Ask a logger who it is and what it runs");
    AddTargetOptions(*identify, v->target);
    AddJsonFlag(identify);
    identify->callback([v, &exitCode] {
        Identify(v->target);
        exitCode = kOk;
    });

    auto* upgrade = firmware->add_subcommand("upgrade", "Load a firmware file into a logger");
    AddTargetOptions(*upgrade, v->target);
    upgrade->add_option("FILE", v->file, "The firmware file (.mxfw)")->required();
    upgrade->add_flag("--yes,-y", v->yes, "Do not ask before loading");
    AddJsonFlag(upgrade);
    upgrade->callback([v, &exitCode] {
        Upgrade(v->target, v->file, v->yes);
        exitCode = kOk;
    });

    auto* pack = firmware->add_subcommand("pack", "Make a firmware file from an image");
    pack->add_option("--model", v->pack.models, "A model the image fits (repeat for more)")->required();
    pack->add_option("--version", v->pack.version, "The firmware's version, e.g. 2.4.1")->required();
    pack->add_option("--date", v->pack.date, "Its date, YYYY-MM-DD");
    pack->add_option("--description", v->pack.description, "A line about it");
    pack->add_option("IMAGE", v->pack.payload, "The image to load into the logger")->required();
    pack->add_option("OUT", v->pack.out, "The firmware file to write")->required();
    AddJsonFlag(pack);
    pack->callback([v, &exitCode] {
        Pack(v->pack);
        exitCode = kOk;
    });
}

}  // namespace meridex::cli
