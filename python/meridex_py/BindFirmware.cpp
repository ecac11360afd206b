#include "Bind.h"
#include "Callbacks.h"

#include <pybind11/chrono.h>

#include <meridex/firmware/Crc.h>
#include <meridex/firmware/FirmwareFolder.h>
#include <meridex/firmware/FirmwareVersion.h>
#include <meridex/firmware/LoggerLinks.h>
#include <meridex/frame/Error.h>
#include <meridex/platform/Platform.h>

namespace meridex::python {
namespace {

// An upgrade's events as Python callables: progress(step, done, total) and cancel() -> bool.
class PyUpgradeEvents : public UpgradeEvents, public Callbacks {
public:
    Handler<void(UpgradeStep, std::uint64_t, std::uint64_t)> progress;
    Handler<bool()> cancel;
    void Progress(UpgradeStep step, std::uint64_t done, std::uint64_t total) override { Call(progress, step, done, total); }
    bool CancelRequested() override { return Call(cancel) || Failed(); }  // a failing callback stops the upgrade
};

py::bytes Bytes(const std::string& bytes) { return py::bytes(bytes); }

// The logger behind an opener, or ConnectionError with the reason it could not be reached.
template <typename Open>
std::unique_ptr<LinkLogger> Reach(Open open) {
    std::string error;
    std::unique_ptr<LinkLogger> logger = open(error);
    if (!logger) {
        PyErr_SetString(PyExc_ConnectionError, error.c_str());
        throw py::error_already_set();
    }
    return logger;
}

// A port source given from Python (None: this PC's ports).
using MaybePorts = std::optional<std::shared_ptr<SerialPortSource>>;
std::shared_ptr<SerialPortSource> PortsOrThisPc(MaybePorts ports) {
    return ports && *ports ? *ports : Platform::DefaultSerialPortSource(Platform::DefaultUserStore());
}

void BindResults(py::module_& m) {
    py::enum_<UpgradeStep>(m, "UpgradeStep", "The steps of a firmware upgrade, in order")
        .value("Identify", UpgradeStep::Identify, "Asking the logger who it is")
        .value("EnterLoader", UpgradeStep::EnterLoader, "Restarting the logger into its loader")
        .value("Erase", UpgradeStep::Erase, "Erasing the logger's firmware memory")
        .value("Write", UpgradeStep::Write, "Writing the image block by block")
        .value("Verify", UpgradeStep::Verify, "Comparing the logger's CRC-32 of the image with the file's")
        .value("Start", UpgradeStep::Start, "Starting the new firmware")
        .value("Confirm", UpgradeStep::Confirm, "Checking that the new version runs");
    m.def("UpgradeStepText", &UpgradeStepText, py::arg("step"), py::arg("done"), py::arg("total"),
          "Text for a step (\"Writing the image (40%)\"); done and total count bytes while writing");
    m.def("UpgradePercent", &UpgradePercent, py::arg("step"), py::arg("done"), py::arg("total"),
          "How far an upgrade has come, 0 to 100, for a progress bar");

    py::enum_<UpgradeStatus>(m, "UpgradeStatus", "How a logger operation ended")
        .value("Ok", UpgradeStatus::Ok, "Done")
        .value("Cancelled", UpgradeStatus::Cancelled, "The user cancelled")
        .value("ImageRefused", UpgradeStatus::ImageRefused, "The file is damaged or for another model; nothing was sent")
        .value("NoAnswer", UpgradeStatus::NoAnswer, "The logger did not answer in time")
        .value("LinkLost", UpgradeStatus::LinkLost, "The link went down")
        .value("LoggerRefused", UpgradeStatus::LoggerRefused, "The logger would not do a step")
        .value("TransferFailed", UpgradeStatus::TransferFailed, "A block still failed after its retries")
        .value("VerifyFailed", UpgradeStatus::VerifyFailed, "The logger's CRC-32 of the image differs from the file's")
        .value("StartFailed", UpgradeStatus::StartFailed, "The new firmware did not start with the expected version")
        .value("NoLink", UpgradeStatus::NoLink, "The link could not be opened");

    py::class_<LoggerIdentity>(m, "LoggerIdentity", "Who a logger says it is")
        .def_readonly("model", &LoggerIdentity::model, "Model name, matched against a firmware file's models")
        .def_readonly("serialNumber", &LoggerIdentity::serialNumber, "The logger's serial number")
        .def_readonly("firmwareVersion", &LoggerIdentity::firmwareVersion,
                      "Version of its firmware; empty when it holds none that can run")
        .def_readonly("inLoader", &LoggerIdentity::inLoader, "True while it waits in its loader")
        .def_readonly("loaderVersion", &LoggerIdentity::loaderVersion, "Version of its loader, when it says")
        .def("__repr__", [](const LoggerIdentity& i) {
            return "<meridex.LoggerIdentity " + i.model + " " + i.serialNumber + " " + i.firmwareVersion + ">";
        }, "Model, serial number and version in angle brackets");

    py::class_<UpgradeResult>(m, "UpgradeResult", "How a logger operation ended, and who the logger said it was then")
        .def_readonly("status", &UpgradeResult::status, "How it ended")
        .def_readonly("message", &UpgradeResult::message, "What happened, for a person")
        .def_readonly("identity", &UpgradeResult::identity, "Who the logger said it was at the end")
        .def("Ok", &UpgradeResult::Ok, "True when the operation succeeded")
        .def("__bool__", &UpgradeResult::Ok, "True when the operation succeeded")
        .def("__repr__", [](const UpgradeResult& r) { return "<meridex.UpgradeResult " + r.message + ">"; },
             "The message in angle brackets");
}

void BindFiles(py::module_& m) {
    py::class_<FirmwareImage>(m, "FirmwareImage",
                              "A firmware file: the models it fits, its version and date, and its payload")
        .def_static(
            "Read",
            [](const std::string& path) {
                FirmwareImage::ReadError error;
                FirmwareImage image = FirmwareImage::Read(path, &error);
                if (image.IsNull()) throw Error(error.number, "FirmwareImage:Read", error.description);
                return image;
            },
            py::arg("path"),
            "Reads and checks a whole file; meridex.Error 53 when it is missing, 321 when damaged or foreign")
        .def_static(
            "Make",
            [](std::vector<std::string> models, std::string version, std::string date, const py::bytes& payload,
               std::string description) {
                return FirmwareImage::Make(std::move(models), std::move(version), std::move(date),
                                           std::string(payload), std::move(description));
            },
            py::arg("models"), py::arg("version"), py::arg("date"), py::arg("payload"), py::arg("description") = "",
            "An image made in memory, for writing a firmware file with Serialize")
        .def("Serialize", [](const FirmwareImage& i) { return Bytes(i.Serialize()); }, "The file's bytes")
        .def_property_readonly("Path", &FirmwareImage::Path, "The file it was read from (\"\" when made in memory)")
        .def_property_readonly("Models", &FirmwareImage::Models, "The models the image fits")
        .def_property_readonly("Version", &FirmwareImage::Version, "Its firmware version (\"2.4.1\")")
        .def_property_readonly("Date", &FirmwareImage::Date, "Its release date, YYYY-MM-DD (may be empty)")
        .def_property_readonly("Description", &FirmwareImage::Description, "Free text from the file")
        .def_property_readonly("Payload", [](const FirmwareImage& i) { return Bytes(i.Payload()); },
                               "The bytes the logger receives")
        .def_property_readonly("PayloadCrc", &FirmwareImage::PayloadCrc, "CRC-32 of the payload, as the file states it")
        .def_property_readonly("Size", &FirmwareImage::Size, "The payload's size in bytes")
        .def("FitsModel", &FirmwareImage::FitsModel, py::arg("model"), "True when the image fits model (ignoring case)")
        .def("PayloadIntact", &FirmwareImage::PayloadIntact, "True when the payload matches its size and CRC-32")
        .def("__repr__", [](const FirmwareImage& i) { return "<meridex.FirmwareImage " + i.Version() + ">"; },
             "The version in angle brackets");

    py::class_<FirmwareFolder::Refusal>(m, "FirmwareRefusal", "A firmware file that was refused, and why")
        .def_readonly("path", &FirmwareFolder::Refusal::path, "The file")
        .def_property_readonly("number", [](const FirmwareFolder::Refusal& r) { return r.error.number; },
                               "53 when the file was not found, 321 when damaged or foreign")
        .def_property_readonly("description", [](const FirmwareFolder::Refusal& r) { return r.error.description; },
                               "The fault, for a person");
    py::class_<FirmwareFolder::Offer>(m, "FirmwareOffer", "A firmware file offered for a logger")
        .def_readonly("image", &FirmwareFolder::Offer::image, "The file")
        .def_readonly("comparison", &FirmwareFolder::Offer::comparison,
                      "Below 0 when older than the running version, 0 the same, above 0 newer")
        .def("Running", &FirmwareFolder::Offer::Running, "True when it holds the version the logger runs");
    py::class_<FirmwareFolder>(m, "FirmwareFolder",
                               "The firmware files (*.mxfw) of a folder, or one chosen file, each read and checked")
        .def(py::init<std::string>(), py::arg("path"), "Scans a folder, or a single firmware file")
        .def_property_readonly("Path", &FirmwareFolder::Path, "The folder or file scanned")
        .def_property_readonly("Exists", &FirmwareFolder::Exists, "False when the path is neither a folder nor a file")
        .def_property_readonly("Images", &FirmwareFolder::Images, "The files that were read, in name order")
        .def_property_readonly("Refused", &FirmwareFolder::Refused, "The files that were refused, in name order")
        .def("OffersFor", &FirmwareFolder::OffersFor, py::arg("model"), py::arg("running_version") = "",
             "The images that fit model, newest first, each compared with the running version");

    py::class_<Namespace<struct FirmwareVersionTag>>(m, "FirmwareVersion", "Ordering of firmware versions")
        .def_static("Compare", &FirmwareVersion::Compare, py::arg("a"), py::arg("b"),
                "Negative, zero or positive as dotted version a is older, the same or newer than b");
    py::class_<Namespace<struct CrcTag>>(m, "Crc", "The checksums of the logger link and of firmware files")
        .def_static("Crc32", [](const py::bytes& b, std::uint32_t c) { return Crc::Crc32(std::string(b), c); },
            py::arg("data"), py::arg("crc") = 0, "CRC-32 (the zlib one); crc carries on from an earlier part");
}

void BindLoggers(py::module_& m) {
    py::class_<LinkLogger::Options>(m, "LinkOptions", "Time limits and limits of a logger link's exchange")
        .def(py::init<>(), "The default limits")
        .def_readwrite("replyTimeout", &LinkLogger::Options::replyTimeout, "Wait for a reply")
        .def_readwrite("eraseTimeout", &LinkLogger::Options::eraseTimeout, "Wait for the erase to finish")
        .def_readwrite("restartTimeout", &LinkLogger::Options::restartTimeout,
                       "Wait for the logger to come back after a restart")
        .def_readwrite("maxAttempts", &LinkLogger::Options::maxAttempts,
                       "Sends of one command or block before giving up")
        .def_readwrite("lineBaud", &LinkLogger::Options::lineBaud, "The line's speed in bit/s; 0 when it adds no time")
        .def_readwrite("blockSize", &LinkLogger::Options::blockSize, "Largest block written");

    py::class_<LinkLogger>(m, "LinkLogger", "A logger reached over a serial, TCP or UDP link (see LoggerLinks)")
        .def("Description", &LinkLogger::Description, "Where the logger is reached (\"TCP 127.0.0.1:9000\")")
        .def("Identify", &LinkLogger::Identify, "Asks the logger who it is: the result's identity holds the answer")
        .def(
            "LoadFirmware",
            [](LinkLogger& logger, const FirmwareImage& image,
               Handler<void(UpgradeStep, std::uint64_t, std::uint64_t)> progress, Handler<bool()> cancel) {
                PyUpgradeEvents events;
                events.progress = std::move(progress);
                events.cancel = std::move(cancel);
                UpgradeResult result = logger.LoadFirmware(image, &events);
                events.RaiseHeld();
                return result;
            },
            py::arg("image"), py::arg("progress") = py::none(), py::arg("cancel") = py::none(),
            "Loads image into the logger, calling progress(step, done, total) as it goes and cancel() between "
            "blocks (True stops it; the logger then waits in its loader and loading again completes it). An "
            "exception a callable raises stops the upgrade and comes out here.")
        .def_property_readonly("LinkOptions", &LinkLogger::LinkOptions, "The limits in force")
        .def("__repr__", [](const LinkLogger& l) { return "<meridex.LinkLogger " + l.Description() + ">"; },
             "Where the logger is reached, in angle brackets");

    py::class_<Namespace<struct LoggerLinksTag>> links(
        m, "LoggerLinks", "Loggers reached through a device profile, a COM number or HOST:PORT. Each raises "
                          "ConnectionError with the reason when the link cannot be opened.");
    const auto defaults = LinkLogger::Options{};
    links.def_static(
        "OpenProfile",
        [](const XmlNode& profile, MaybePorts ports, const LinkLogger::Options& options) {
            std::shared_ptr<SerialPortSource> source = PortsOrThisPc(std::move(ports));
            return Reach([&](std::string& e) { return LoggerLinks::OpenProfile(profile, *source, e, options); });
        },
        py::arg("profile"), py::arg("ports") = py::none(), py::arg("options") = defaults,
        "The logger behind a device profile of the map: a direct cable, TCP or UDP (not a modem)");
    links.def_static(
        "OpenPort",
        [](int number, std::uint32_t baud, MaybePorts ports, const LinkLogger::Options& options) {
            std::shared_ptr<SerialPortSource> source = PortsOrThisPc(std::move(ports));
            return Reach([&](std::string& e) { return LoggerLinks::OpenPort(number, baud, *source, e, options); });
        },
        py::arg("number"), py::arg("baud") = 9600, py::arg("ports") = py::none(), py::arg("options") = defaults,
        "The logger on serial port COM<number> as this PC (or ports) numbers its ports");
    links.def_static(
        "OpenTcp",
        [](const std::string& host, std::uint16_t port, const LinkLogger::Options& options) {
            return Reach([&](std::string& e) { return LoggerLinks::OpenTcp(host, port, e, options); });
        },
        py::arg("host"), py::arg("port"), py::arg("options") = defaults, "The logger at host:port over TCP");
    links.def_static(
        "OpenUdp",
        [](const std::string& host, std::uint16_t port, const LinkLogger::Options& options) {
            return Reach([&](std::string& e) { return LoggerLinks::OpenUdp(host, port, e, options); });
        },
        py::arg("host"), py::arg("port"), py::arg("options") = defaults, "The logger at host:port over UDP");
    links.def_static(
        "SplitHostPort",
        [](const std::string& text) -> std::optional<std::pair<std::string, int>> {
            std::string host;
            std::uint16_t port = 0;
            if (!LoggerLinks::SplitHostPort(text, host, port)) return std::nullopt;
            return std::pair<std::string, int>{host, port};
        },
        py::arg("text"), "(host, port) of \"HOST:PORT\" (\"[::1]:9000\" for IPv6), or None when it is not one");
}

}  // namespace

void BindFirmware(py::module_& m) {
    BindResults(m);
    BindFiles(m);
    BindLoggers(m);
}

}  // namespace meridex::python
