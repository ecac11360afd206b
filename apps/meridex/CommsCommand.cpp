#include <filesystem>
#include <iomanip>
#include <iostream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "Commands.h"
#include "Json.h"
#include <meridex/comms/CommsProfileManager.h>
#include <meridex/comms/PortSnapshot.h>
#include <meridex/comms/ProfileXml.h>
#include <meridex/comms/XmlSchemeFile.h>
#include <meridex/platform/Platform.h>

namespace meridex::cli {

namespace {

constexpr int kOk = 0;
constexpr int kFailed = 1;  // not saved, scheme not opened
constexpr int kUsage = 2;

struct Arguments {
    std::string map;
    std::string second;  // KIND or SCHEME
    std::string port;
    std::string companionDir;
    bool json = false;
    bool save = false;
};

// Loads the map, telling the user when the default map stands in for it.
void Load(CommsProfileManager& manager, const std::string& file) {
    if (manager.LoadXMLMapFile(file)) return;
    std::error_code ec;
    if (std::filesystem::exists(file, ec))
        std::cerr << "meridex: " << file
                  << " is not a communications map; using this PC's default map (the old file is kept as "
                  << file << ".unreadable when the map is saved)\n";
    else
        std::cerr << "meridex: " << file << " does not exist; using this PC's default map\n";
}

bool Save(CommsProfileManager& manager) {
    std::string error;
    if (manager.SaveXMLMapFile({}, &error)) return true;
    std::cerr << "meridex: could not save " << manager.MapFile() << ": " << error << "\n";
    manager.setMapFile("");  // and not again on the way out
    return false;
}

std::string Where(const XmlNode& profile) {
    using ProfileXml::ChildText;
    if (ProfileXml::HasChild(profile, "COMMPORT")) return "COM" + ChildText(profile, "COMMPORT");
    std::string address = ChildText(profile, "ADDRESS");
    std::string port = ChildText(profile, ProfileXml::HasChild(profile, "PORT") ? "PORT" : "PROXYPORT");
    return port.empty() ? address : address + ":" + port;
}

void PrintProfiles(std::ostream& out, const XmlNode& list) {
    XmlNode defaultProfile = CommsProfileManager::GetDefaultProfile(list);
    std::vector<XmlNode> profiles = list.SelectAll("PROFILE");
    if (profiles.empty()) out << "  (no profiles)\n";
    for (const XmlNode& profile : profiles) {
        using ProfileXml::ChildText;
        out << (profile == defaultProfile ? "* " : "  ") << std::left << std::setw(10) << ChildText(profile, "KEY")
            << " " << std::setw(30) << ChildText(profile, "NAME") << " " << std::setw(16)
            << (ChildText(profile, "TYPE") + "/" + ChildText(profile, "METHOD")) << " " << Where(profile) << "\n";
    }
}

std::string ProfilesJson(const XmlNode& list) {
    XmlNode defaultProfile = CommsProfileManager::GetDefaultProfile(list);
    std::string out = "[";
    bool first = true;
    for (const XmlNode& profile : list.SelectAll("PROFILE")) {
        out += first ? "{" : ", {";
        first = false;
        out += "\"default\": " + std::string(profile == defaultProfile ? "true" : "false");
        for (XmlNode field = profile.FirstChildElement(); field; field = field.NextSiblingElement())
            out += ", " + JsonString(field.Name()) + ": " + JsonString(field.Text());
        out += "}";
    }
    return out + "]";
}

int Ports(const Arguments& args) {
    auto source = Platform::DefaultSerialPortSource(Platform::DefaultUserStore());
    PortSnapshot ports(*source);
    std::vector<SerialPort> present;
    for (const SerialPort& port : ports.Ports())
        if (ports.IsPresent(port.number)) present.push_back(port);
    if (args.json) {
        std::string out = "[";
        for (std::size_t i = 0; i < present.size(); ++i)
            out += std::string(i ? ", " : "") + "{\"com\": " + std::to_string(present[i].number) +
                   ", \"device\": " + JsonString(present[i].device) +
                   ", \"description\": " + JsonString(present[i].description) +
                   ", \"bluetooth\": " + (present[i].bluetooth ? "true" : "false") + "}";
        std::cout << out << "]\n";
        return kOk;
    }
    if (present.empty()) std::cout << "No serial ports present on this PC.\n";
    for (const SerialPort& port : present)
        std::cout << std::left << std::setw(7) << ("COM" + std::to_string(port.number)) << " " << std::setw(40)
                  << port.device << " " << port.description << (port.bluetooth ? "  (Bluetooth)" : "") << "\n";
    return kOk;
}

int List(const Arguments& args) {
    CommsProfileManager manager;
    Load(manager, args.map);
    manager.setMapFile("");  // looking never writes
    if (args.json)
        std::cout << ProfilesJson(manager.ApplicationProfiles()) << "\n";
    else
        PrintProfiles(std::cout, manager.ApplicationProfiles());
    return kOk;
}

int Scan(const Arguments& args) {
    std::string companionDir = args.companionDir.empty() ? Platform::ProgramFolder() : args.companionDir;
    CommsProfileManager manager;
    Load(manager, args.map);
    manager.CleanRS232Direct();
    std::error_code ec;
    if (!std::filesystem::exists(companionDir + "/" + Platform::CompanionProgramName(), ec))
        std::cerr << "meridex: no " << Platform::CompanionProgramName() << " in " << companionDir
                  << "; profile names stay as they are\n";
    manager.GetCommPortDescriptions(companionDir);
    PrintProfiles(std::cout, manager.ApplicationProfiles());
    return Save(manager) ? kOk : kFailed;
}

int Add(const Arguments& args) {
    CommsProfileManager manager;
    Load(manager, args.map);
    XmlNode added;
    if (args.second == "direct") added = manager.AddRS232Direct(args.port);
    else if (args.second == "modem") added = manager.AddRS232PhoneModem(args.port);
    else if (args.second == "udp") added = manager.AddUDPConnection();
    else if (args.second == "tcp") added = manager.AddTCPConnection();
    else added = manager.AddGPRSProxyConnection();
    std::cout << "Added " << ProfileXml::ChildText(added, "KEY") << ": " << ProfileXml::ChildText(added, "NAME")
              << "\n";
    return Save(manager) ? kOk : kFailed;
}

int Map(const Arguments& args) {
    XmlSchemeFile scheme;
    if (!scheme.Open(args.second)) {
        std::cerr << "meridex: " << args.second << " is not a readable scheme (root SCHEME)\n";
        return kFailed;
    }
    CommsProfileManager manager;
    Load(manager, args.map);
    if (!args.save) manager.setMapFile("");
    std::string before = args.json ? ProfilesJson(scheme.CommsProfiles()) : std::string();
    std::ostringstream text;
    if (!args.json) PrintProfiles(text, scheme.CommsProfiles());
    manager.MapSchemeCommsProfiles(scheme);
    if (args.json) {
        std::cout << "{\"scheme\": " << JsonString(scheme.SchemeText()) << ", \"before\": " << before
                  << ", \"after\": " << ProfilesJson(scheme.CommsProfiles()) << "}\n";
    } else {
        std::cout << "Scheme " << scheme.SchemeText() << " as written:\n" << text.str() << "Mapped onto this PC:\n";
        PrintProfiles(std::cout, scheme.CommsProfiles());
    }
    if (!args.save) return kOk;
    std::string error;
    if (!scheme.Save(&error)) {
        std::cerr << "meridex: could not save " << scheme.SchemeText() << ": " << error << "\n";
        return kFailed;
    }
    return Save(manager) ? kOk : kFailed;
}

bool ValidPort(const std::string& port) {
    if (port.empty() || port.size() > 5) return port.empty();
    for (char c : port)
        if (c < '0' || c > '9') return false;
    return std::stol(port) >= 1 && std::stol(port) <= 32767;
}

}  // namespace

void AddCommsCommands(CLI::App& app, int& exitCode) {
    auto args = std::make_shared<Arguments>();

    CLI::App* ports = app.add_subcommand("ports", "List the serial ports present on this PC with their COM numbers");
    ports->add_flag("--json", args->json, "Print JSON");
    ports->callback([args, &exitCode] { exitCode = Ports(*args); });

    CLI::App* comms = app.add_subcommand("comms", "The communications map: this PC's connection devices");
    comms->require_subcommand(1);

    CLI::App* list = comms->add_subcommand("list", "Show the profiles of a map (the default map when it is missing)");
    list->add_option("MAP", args->map, "Map file (CommsProfiles.xml)")->required();
    list->add_flag("--json", args->json, "Print JSON");
    list->callback([args, &exitCode] { exitCode = List(*args); });

    CLI::App* scan = comms->add_subcommand(
        "scan", "Bring the direct profiles in step with the ports present, name them after the devices, and save");
    scan->add_option("MAP", args->map, "Map file")->required();
    scan->add_option("--companion-dir", args->companionDir,
                     "Folder of SerialPortInfoDump (default: the folder of this program)");
    scan->callback([args, &exitCode] { exitCode = Scan(*args); });

    CLI::App* add = comms->add_subcommand("add", "Add a device of a kind to a map and save it");
    add->add_option("MAP", args->map, "Map file")->required();
    add->add_option("KIND", args->second, "direct, modem, udp, tcp or gprs")
        ->required()
        ->check(CLI::IsMember({"direct", "modem", "udp", "tcp", "gprs"}));
    add->add_option("--port", args->port, "COM port number of a direct cable or phone modem");
    add->callback([args, &exitCode] {
        if (!args->port.empty() && args->second != "direct" && args->second != "modem") {
            std::cerr << "meridex: --port is for direct and modem devices only\n";
            exitCode = kUsage;
        } else if (!ValidPort(args->port)) {
            std::cerr << "meridex: --port takes a port number 1 to 32767\n";
            exitCode = kUsage;
        } else {
            exitCode = Add(*args);
        }
    });

    CLI::App* map = comms->add_subcommand("map", "Show how a scheme's profiles map onto this PC's devices");
    map->add_option("MAP", args->map, "Map file")->required();
    map->add_option("SCHEME", args->second, "Scheme file (root SCHEME)")->required();
    map->add_flag("--json", args->json, "Print JSON");
    map->add_flag("--save", args->save, "Write the mapped scheme back (and the map, which may gain the default mark)");
    map->callback([args, &exitCode] { exitCode = Map(*args); });
}

}  // namespace meridex::cli
