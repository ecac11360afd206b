#include <algorithm>
#include <filesystem>
#include <iomanip>
#include <iostream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "Commands.h"
#include "Cli.h"
#include <meridex/comms/CommsProfileManager.h>
#include <meridex/comms/PortSnapshot.h>
#include <meridex/comms/ProfileXml.h>
#include <meridex/comms/XmlSchemeFile.h>
#include <meridex/platform/Platform.h>

namespace meridex::cli {

namespace {

constexpr std::string_view kRoot = "COMMSPROFILES";
constexpr std::string_view kKind = "communications map";

struct Arguments {
    std::string map;
    std::string second;  // KIND or SCHEME
    std::string port;
    std::string companionDir;
    bool save = false;
    bool dryRun = false;
};

// The manager saves its map when it ends; the tool saves only when it means
// to, so a refused or dry run never writes.
struct OpenMap {
    CommsProfileManager manager;
    ~OpenMap() { manager.setMapFile(""); }
};

// For looking: a missing map is this PC's default map, one of another kind is refused.
bool LoadToRead(CommsProfileManager& manager, const std::string& file) {
    std::error_code ec;
    if (std::filesystem::exists(file, ec)) RequireRead(file, kRoot, kKind);
    const bool read = manager.LoadXMLMapFile(file);
    if (!read) Note(file + " does not exist; using this PC's default map");
    return read;
}

// For saving: a missing map starts from the default map; another kind is not replaced without --force.
bool LoadToChange(CommsProfileManager& manager, const std::string& file) {
    RefuseToReplace(file, kRoot, kKind);
    return manager.LoadXMLMapFile(file);
}

void Save(CommsProfileManager& manager) {
    std::string error;
    if (!manager.SaveXMLMapFile({}, &error)) throw Failure(kWriteFailed, "could not save " + manager.MapFile() + ": " + error);
    NoteSaved(manager.ConflictCopy());
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

Json ProfileJson(const XmlNode& profile, bool isDefault) {
    using ProfileXml::ChildText;
    Json parameters = Json::object();
    for (XmlNode field = profile.FirstChildElement(); field; field = field.NextSiblingElement())
        parameters[field.Name()] = field.Text();
    return {{"key", ChildText(profile, "KEY")},   {"name", ChildText(profile, "NAME")},
            {"type", ChildText(profile, "TYPE")}, {"method", ChildText(profile, "METHOD")},
            {"where", Where(profile)},            {"isDefault", isDefault},
            {"parameters", parameters}};
}

Json ProfilesJson(const XmlNode& list) {
    XmlNode defaultProfile = CommsProfileManager::GetDefaultProfile(list);
    Json out = Json::array();
    for (const XmlNode& profile : list.SelectAll("PROFILE")) out.push_back(ProfileJson(profile, profile == defaultProfile));
    return out;
}

int Ports(const Arguments&) {
    auto source = Platform::DefaultSerialPortSource(Platform::DefaultUserStore());
    PortSnapshot ports(*source);
    std::vector<SerialPort> present;
    for (const SerialPort& port : ports.Ports())
        if (ports.IsPresent(port.number)) present.push_back(port);
    if (JsonOutput()) {
        Json out = Json::array();
        for (const SerialPort& port : present)
            out.push_back({{"com", port.number},
                           {"device", port.device},
                           {"description", port.description},
                           {"bluetooth", port.bluetooth}});
        PrintJson({{"ports", out}});
        return kOk;
    }
    if (present.empty()) std::cout << "No serial ports present on this PC.\n";
    for (const SerialPort& port : present)
        std::cout << std::left << std::setw(7) << ("COM" + std::to_string(port.number)) << " " << std::setw(40)
                  << port.device << " " << port.description << (port.bluetooth ? "  (Bluetooth)" : "") << "\n";
    return kOk;
}

int List(const Arguments& args) {
    OpenMap map;
    CommsProfileManager& manager = map.manager;
    const bool read = LoadToRead(manager, args.map);
    if (JsonOutput())
        PrintJson({{"map", args.map}, {"fromFile", read}, {"profiles", ProfilesJson(manager.ApplicationProfiles())}});
    else
        PrintProfiles(std::cout, manager.ApplicationProfiles());
    return kOk;
}

struct DeviceLine {
    std::string key;
    std::string name;
    std::string where;
};

std::vector<DeviceLine> Devices(const CommsProfileManager& manager) {
    std::vector<DeviceLine> devices;
    for (const XmlNode& profile : manager.ApplicationProfiles().SelectAll("PROFILE"))
        devices.push_back({ProfileXml::ChildText(profile, "KEY"), ProfileXml::ChildText(profile, "NAME"), Where(profile)});
    return devices;
}

const DeviceLine* FindDevice(const std::vector<DeviceLine>& devices, const std::string& key) {
    for (const DeviceLine& device : devices)
        if (device.key == key) return &device;
    return nullptr;
}

Json DeviceJson(const DeviceLine& device) { return {{"key", device.key}, {"name", device.name}, {"where", device.where}}; }

int Scan(const Arguments& args) {
    std::string companionDir = args.companionDir.empty() ? Platform::ProgramFolder() : args.companionDir;
    OpenMap map;
    CommsProfileManager& manager = map.manager;
    const bool read = LoadToChange(manager, args.map);
    const std::vector<DeviceLine> before = Devices(manager);
    manager.CleanRS232Direct();
    std::error_code ec;
    if (!std::filesystem::exists(companionDir + "/" + Platform::CompanionProgramName(), ec))
        Note("no " + Platform::CompanionProgramName() + " in " + companionDir + "; profile names stay as they are");
    manager.GetCommPortDescriptions(companionDir);
    const std::vector<DeviceLine> after = Devices(manager);

    Json removed = Json::array(), added = Json::array(), renamed = Json::array();
    for (const DeviceLine& device : before)
        if (!FindDevice(after, device.key)) removed.push_back(DeviceJson(device));
    for (const DeviceLine& device : after) {
        const DeviceLine* old = FindDevice(before, device.key);
        if (!old) added.push_back(DeviceJson(device));
        else if (old->name != device.name)
            renamed.push_back({{"key", device.key}, {"from", old->name}, {"to", device.name}, {"where", device.where}});
    }
    const bool changed = !read || !removed.empty() || !added.empty() || !renamed.empty();
    if (!args.dryRun && changed) Save(manager);
    if (JsonOutput()) {
        PrintJson({{"map", args.map},
                   {"dryRun", args.dryRun},
                   {"saved", !args.dryRun && changed},
                   {"removed", removed},
                   {"added", added},
                   {"renamed", renamed},
                   {"profiles", ProfilesJson(manager.ApplicationProfiles())}});
        return kOk;
    }
    for (const Json& d : removed)
        std::cout << "Removed " << d["key"].get<std::string>() << ": " << d["name"].get<std::string>() << " ("
                  << d["where"].get<std::string>() << ", port gone)\n";
    for (const Json& d : added)
        std::cout << "Added   " << d["key"].get<std::string>() << ": " << d["name"].get<std::string>() << " ("
                  << d["where"].get<std::string>() << ")\n";
    for (const Json& d : renamed)
        std::cout << "Renamed " << d["key"].get<std::string>() << ": " << d["from"].get<std::string>() << " -> "
                  << d["to"].get<std::string>() << "\n";
    std::cout << removed.size() << " removed, " << added.size() << " added, " << renamed.size() << " renamed; "
              << (args.dryRun ? "nothing saved (--dry-run)" : changed ? "saved " + args.map : "nothing to save")
              << "\n";
    PrintProfiles(std::cout, manager.ApplicationProfiles());
    return kOk;
}

int Add(const Arguments& args) {
    OpenMap map;
    CommsProfileManager& manager = map.manager;
    LoadToChange(manager, args.map);
    XmlNode added;
    if (args.second == "direct") added = manager.AddRS232Direct(args.port);
    else if (args.second == "modem") added = manager.AddRS232PhoneModem(args.port);
    else if (args.second == "udp") added = manager.AddUDPConnection();
    else if (args.second == "tcp") added = manager.AddTCPConnection();
    else added = manager.AddGPRSProxyConnection();
    const std::vector<XmlNode> profiles = manager.ApplicationProfiles().SelectAll("PROFILE");
    const auto position = std::find(profiles.begin(), profiles.end(), added) - profiles.begin() + 1;
    Save(manager);
    // A load numbers the keys afresh, so the device is reported as the saved
    // file gives it back: the key later commands will see.
    OpenMap reloaded;
    XmlNode saved = reloaded.manager.LoadXMLMapFile(args.map)
                        ? reloaded.manager.ApplicationProfile(static_cast<long long>(position))
                        : XmlNode();
    if (saved.IsNull()) saved = added;
    if (JsonOutput())
        PrintJson({{"map", args.map}, {"added", ProfileJson(saved, false)}});
    else
        std::cout << "Added " << ProfileXml::ChildText(saved, "KEY") << ": " << ProfileXml::ChildText(saved, "NAME") << "\n";
    return kOk;
}

int Map(const Arguments& args) {
    XmlSchemeFile scheme;
    if (!scheme.Open(args.second)) throw Failure(kBadInput, args.second + " is not a readable scheme (root SCHEME)");
    OpenMap map;
    CommsProfileManager& manager = map.manager;
    if (args.save) LoadToChange(manager, args.map);
    else LoadToRead(manager, args.map);
    const Json before = ProfilesJson(scheme.CommsProfiles());
    std::ostringstream text;
    if (!JsonOutput()) PrintProfiles(text, scheme.CommsProfiles());
    manager.MapSchemeCommsProfiles(scheme);
    if (JsonOutput()) {
        PrintJson({{"scheme", scheme.SchemeText()},
                   {"saved", args.save},
                   {"before", before},
                   {"after", ProfilesJson(scheme.CommsProfiles())}});
    } else {
        std::cout << "Scheme " << scheme.SchemeText() << " as written:\n" << text.str() << "Mapped onto this PC:\n";
        PrintProfiles(std::cout, scheme.CommsProfiles());
    }
    if (!args.save) return kOk;
    std::string error;
    if (!scheme.Save(&error)) throw Failure(kWriteFailed, "could not save " + scheme.SchemeText() + ": " + error);
    Save(manager);
    return kOk;
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
    auto add = [&](CLI::App& parent, const char* name, const char* description, int (*command)(const Arguments&)) {
        CLI::App* sub = parent.add_subcommand(name, description);
        AddJsonFlag(sub);
        sub->callback([&exitCode, args, command] { exitCode = command(*args); });
        return sub;
    };

    add(app, "ports", "List the serial ports present on this PC with their COM numbers", Ports);

    CLI::App* comms = app.add_subcommand("comms", "The communications map: this PC's connection devices");
    comms->require_subcommand(1);

    CLI::App* list = add(*comms, "list", "Show the profiles of a map (this PC's default map when it is missing)", List);
    list->add_option("MAP", args->map, "Map file (CommsProfiles.xml)")->required();

    CLI::App* scan = add(*comms, "scan",
                         "Drop direct profiles whose port has gone, add the new ports, name them after the devices, "
                         "print what changed and save",
                         Scan);
    scan->add_option("MAP", args->map, "Map file")->required();
    scan->add_option("--companion-dir", args->companionDir,
                     "Folder of SerialPortInfoDump (default: the folder of this program)");
    scan->add_flag("--dry-run", args->dryRun, "Print what would change; save nothing");
    AddForceFlag(scan);

    CLI::App* addDevice = add(*comms, "add", "Add a device of a kind to a map and save it", Add);
    addDevice->add_option("MAP", args->map, "Map file")->required();
    addDevice->add_option("KIND", args->second, "direct, modem, udp, tcp or gprs")
        ->required()
        ->check(CLI::IsMember({"direct", "modem", "udp", "tcp", "gprs"}));
    addDevice->add_option("--port", args->port, "COM port number of a direct cable or phone modem");
    AddForceFlag(addDevice);
    addDevice->callback([args, &exitCode] {
        const bool serial = args->second == "direct" || args->second == "modem";
        if (!args->port.empty() && !serial) throw Failure(kUsage, "--port is for direct and modem devices only");
        if (args->port.empty() && serial) throw Failure(kUsage, "a " + args->second + " device needs --port N");
        if (!ValidPort(args->port)) throw Failure(kUsage, "--port takes a port number 1 to 32767");
        exitCode = Add(*args);
    });

    CLI::App* map = add(*comms, "map", "Show how a scheme's profiles map onto this PC's devices", Map);
    map->add_option("MAP", args->map, "Map file")->required();
    map->add_option("SCHEME", args->second, "Scheme file (root SCHEME)")->required();
    map->add_flag("--save", args->save, "Write the mapped scheme back (and the map, which may gain the default mark)");
    AddForceFlag(map);
}

}  // namespace meridex::cli
