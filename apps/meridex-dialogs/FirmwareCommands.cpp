// The firmware upgrade dialog on a logger reached over TCP, UDP or a COM port, with a firmware folder.
#include <cstdio>
#include <string>

#include <meridex/firmware/LoggerLinks.h>
#include <meridex/platform/Platform.h>
#include <meridex/ui/firmware/frmFirmware.h>

#include "DialogCommand.h"

namespace meridex::dialogs {
namespace {

// "tcp:HOST:PORT", "udp:HOST:PORT" or "COMn".
std::unique_ptr<LinkLogger> OpenLogger(const std::string& where, std::string& error) {
    std::string host;
    std::uint16_t port = 0;
    if (where.rfind("tcp:", 0) == 0 || where.rfind("udp:", 0) == 0) {
        if (!LoggerLinks::SplitHostPort(where.substr(4), host, port)) {
            error = "\"" + where.substr(4) + "\" is not HOST:PORT";
            return nullptr;
        }
        return where[0] == 't' ? LoggerLinks::OpenTcp(host, port, error) : LoggerLinks::OpenUdp(host, port, error);
    }
    if (where.size() > 3 && where.compare(0, 3, "COM") == 0 &&
        where.find_first_not_of("0123456789", 3) == std::string::npos && where.size() < 9) {
        auto store = Platform::DefaultUserStore();
        auto ports = Platform::DefaultSerialPortSource(store);
        return LoggerLinks::OpenPort(std::stoi(where.substr(3)), 9600, *ports, error);
    }
    error = "\"" + where + "\" is not tcp:HOST:PORT, udp:HOST:PORT or COMn";
    return nullptr;
}

const CommandRegistration firmware({
    "firmware", "tcp:HOST:PORT|udp:HOST:PORT|COMn FOLDER",
    "upgrade a logger's firmware from the files of FOLDER (failures go to MeridexAppLibrary.log)", 2, 2,
    [](const std::vector<std::string>& arguments) {
        std::string error;
        std::unique_ptr<LinkLogger> logger = OpenLogger(arguments[0], error);
        if (!logger) {
            std::fprintf(stderr, "%s\n", error.c_str());
            return 1;
        }
        ui::UpgradeFirmwareForm::ShowUpgradeFirmware(logger.get(), nullptr, arguments[1]);
        return 0;
    }});

}  // namespace
}  // namespace meridex::dialogs
