#include <meridex/comms/CommsProfileManager.h>

#include <chrono>
#include <cmath>
#include <deque>
#include <filesystem>
#include <thread>
#include <unordered_set>

#include <meridex/comms/PortSnapshot.h>
#include <meridex/comms/PortsList.h>
#include <meridex/comms/PortsFile.h>
#include <meridex/comms/ProfileXml.h>
#include <meridex/frame/Utf8.h>
#include <meridex/frame/Error.h>
#include <meridex/frame/FileOps.h>
#include <meridex/frame/Numeric.h>
#include <meridex/frame/Text.h>
#include <meridex/frame/ThreeWayMerge.h>
#include <meridex/frame/XMLOps.h>
#include <meridex/platform/Platform.h>
#include <meridex/platform/StartedProgram.h>

namespace meridex {
namespace fs = std::filesystem;
using namespace ProfileXml;

namespace {

constexpr std::string_view kRoot = "COMMSPROFILES";
constexpr std::string_view kProfile = "PROFILE";

std::vector<XmlNode> ExactProfiles(const XmlNode& parent, std::string_view type, std::string_view method) {
    std::vector<XmlNode> found;
    for (const XmlNode& profile : parent.SelectAll(kProfile))
        if (ChildText(profile, "TYPE") == type && ChildText(profile, "METHOD") == method) found.push_back(profile);
    return found;
}

bool SamePort(const std::optional<std::int16_t>& a, const std::optional<std::int16_t>& b) { return a && b && *a == *b; }

// Hands out the keys that are free in a profile list, smallest first, so a
// run of appends costs one look at the list rather than one per append.
class FreeKeys {
public:
    explicit FreeKeys(const XmlNode& list) {
        for (const XmlNode& profile : list.SelectAll(kProfile)) used_.insert(Text::FoldCase(ChildText(profile, "KEY")));
    }
    // taken: a key that counts as used for this one call only (the old key
    // of a copy that is already in the list and is being given a new one).
    std::string Next(std::string_view taken = {}) {
        const std::string held = Text::FoldCase(taken);
        while (used_.count(Text::FoldCase("PROFILE" + std::to_string(next_)))) ++next_;
        for (long long n = next_;; ++n) {
            std::string key = "PROFILE" + std::to_string(n);
            std::string folded = Text::FoldCase(key);
            if (folded == held || !used_.insert(folded).second) continue;
            return key;
        }
    }

private:
    std::unordered_set<std::string> used_;
    long long next_ = 0;
};

// A deep copy of profile appended to list, then given a new key: while it is
// looked for, the key the copy brought along is in the list and so not free.
XmlNode AppendCopy(const XmlNode& list, const XmlNode& profile, FreeKeys& keys) {
    XmlNode copy = list.AppendChild(profile.CloneNode(true));
    SetChild(copy, "KEY", keys.Next(ChildText(copy, "KEY")));
    return copy;
}

// COMMPORT as the clean-up reads it: a text that is not wholly a number is port 0.
std::optional<std::int16_t> WholePortNumber(const XmlNode& profile) {
    if (!Numeric::IsNumeric(ChildText(profile, "COMMPORT"))) return std::int16_t{0};
    return PortNumber(profile);
}

// The first entry of a queue of settings; the last one is kept for every
// later caller.
std::string TakeQueued(std::deque<std::string>& queue) {
    std::string first = queue.front();
    if (queue.size() > 1) queue.pop_front();
    return first;
}

double SecondsNow() {
    using namespace std::chrono;
    return duration<double>(steady_clock::now().time_since_epoch()).count();
}

}  // namespace

CommsProfileManager::CommsProfileManager() : CommsProfileManager(nullptr, nullptr) {}

CommsProfileManager::CommsProfileManager(std::shared_ptr<SerialPortSource> ports, std::shared_ptr<UserStore> store)
    : ports_(std::move(ports)), store_(std::move(store)) {
    if (!store_) store_ = Platform::DefaultUserStore();
    if (!ports_) ports_ = Platform::DefaultSerialPortSource(store_);
    BuildDefaultMap();
}

CommsProfileManager::~CommsProfileManager() {
    try {
        if (!mapFile_.empty()) SaveXMLMapFile();
    } catch (...) {
        // Ending never fails; the map was saved at the last explicit save.
    }
}

std::int16_t CommsProfileManager::MaxCommPort() const {
    double bound = Numeric::LeadingNumber(store_->GetSetting("MeridexV4", "Settings", "MAX_COMM_PORT_SCOMM", "64"));
    // Out-of-range settings are clamped rather than failing every port scan.
    if (!(bound > 0)) return 0;
    if (bound >= 32767) return 32767;
    return Numeric::ToInt16(bound);
}

void CommsProfileManager::BuildDefaultMap() {
    document_ = XMLOps::NewXMLDocument();
    root_ = document_.DocumentNode().AppendChild(document_.CreateElement(kRoot));
    PortSnapshot ports(*ports_);
    for (std::int16_t port : ports.PresentPorts(MaxCommPort())) AddRS232Direct(std::to_string(port));
    AddUDPConnection();
    AddTCPConnection();
    AddGPRSProxyConnection();
}

bool CommsProfileManager::LoadXMLMapFile(const std::string& XMLFile) {
    mapFile_ = XMLFile;
    std::error_code ec;
    bool exists = !XMLFile.empty() && fs::exists(utf8::ToPath(XMLFile), ec);
    shared_.NotRead(XMLFile);
    XmlDocument document = exists && shared_.Read(XMLFile) ? XmlDocument::Parse(shared_.Base()) : XmlDocument();
    XmlNode root = document ? document.DocumentElement() : XmlNode();
    if (!root || root.Name() != kRoot) {
        if (exists) unreadable_.Remember(XMLFile);
        BuildDefaultMap();
        return false;
    }
    unreadable_.Forget(XMLFile);
    document_ = document;
    root_ = root;
    // Keys read from a file are numbered from 1 (new ones are looked for from 0).
    int position = 0;
    for (const XmlNode& profile : root_.SelectAll(kProfile))
        SetChild(profile, "KEY", "PROFILE" + std::to_string(++position));
    shared_.setBase(document_.Serialize());  // merges compare with the keys as numbered here
    return true;
}

bool CommsProfileManager::SaveXMLMapFile(const std::string& XMLFile, std::string* error) {
    if (!XMLFile.empty()) mapFile_ = XMLFile;
    if (mapFile_.empty()) {
        if (error) *error = "no map file is set";
        return false;
    }
    if (!unreadable_.KeepBeforeReplacing(mapFile_)) {
        if (error) *error = "the unusable map file " + mapFile_ + " could not be kept aside";
        return false;
    }
    const auto merge = [this](const std::string& base, const std::string& theirs) {
// Keys are numbered afresh at every load, so a profile is known across
        // versions by the rest of its content; one of theirs whose key ours
        // already uses takes the next free one.
        ThreeWayMerge::Rules rules;
        rules.identity = [](const XmlNode& profile) {
            std::string content;
            for (XmlNode child = profile.FirstChildElement(); child; child = child.NextSiblingElement())
                if (child.Name() != "KEY") content += child.Xml();
            return content;
        };
        rules.inserted = [](const XmlNode& added, const XmlNode& list) {
            if (added.Name() != kProfile) return;
            const std::string key = ChildText(added, "KEY");
            for (const XmlNode& profile : list.SelectAll(kProfile))
                if (profile != added && Text::EqualsIgnoreCase(ChildText(profile, "KEY"), key)) {
                    SetChild(added, "KEY", FreeKeys(list).Next(key));
                    return;
                }
        };
        return ThreeWayMerge::MergeDocuments(root_, base, theirs, rules);
    };
    return shared_.Save(mapFile_, [this] { return document_.Serialize(); }, merge, "CommsProfileManager:SaveXMLMapFile",
                        error);
}

void CommsProfileManager::GetCommPortDescriptions(const std::string& RootPath) {
    if (RootPath.empty()) return;  // never the file system's root
    try {
        std::string folder = RootPath;
        if (!FileOps::IsSeparator(folder.back())) folder += '/';
        const std::string program = folder + Platform::CompanionProgramName();
        // The companion writes where it is told: its own folder, or a per-user one when that is read-only.
        const std::string listFolder = PortsFile::Folder(RootPath);
        const std::string portsFile = listFolder + "/ports.txt";
        std::error_code ec;
        fs::remove(utf8::ToPath(portsFile), ec);  // a stale list is never read
        if (!fs::is_regular_file(utf8::ToPath(program), ec)) return;

        const double deadline = std::round(SecondsNow() + 2);
        StartedProgram companion = StartedProgram::Start(program, {listFolder});
        if (!companion.Started()) return;
        // The companion writes the list atomically, so once it is there it is whole.
        while (!fs::exists(utf8::ToPath(portsFile), ec)) {
            if (SecondsNow() > deadline) {
                companion.End(std::chrono::milliseconds(0));  // the wait is bounded: no grace past it
                return;
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(15));
        }
        companion.End();

        std::string contents;
        if (!FileOps::ReadWholeFile(portsFile, contents)) return;
        for (const auto& [port, description] : ParsePortsList(contents)) {
            for (const XmlNode& profile : root_.SelectAll(kProfile)) {
                if ("COM" + ChildText(profile, "COMMPORT") == port) {
                    SetChild(profile, "NAME", description);
                    break;
                }
            }
        }
    } catch (...) {
        // The names simply stay as they were.
    }
}

std::int16_t CommsProfileManager::ApplicationProfileCount() const {
    std::size_t count = root_.CountChildElements(kProfile);
    return static_cast<std::int16_t>(count > 32767 ? 32767 : count);
}

XmlNode CommsProfileManager::ApplicationProfile(const Index& index) const {
    std::vector<XmlNode> profiles = root_.SelectAll(kProfile);
    if (index.IsNumber()) {
        if (index.Number() < 1 || index.Number() > static_cast<long long>(profiles.size())) return {};
        return profiles[static_cast<std::size_t>(index.Number() - 1)];
    }
    for (const XmlNode& profile : profiles)
        if (Text::EqualsIgnoreCase(ChildText(profile, "KEY"), index.Key())) return profile;
    return {};
}

void CommsProfileManager::AddApplicationProfile(const XmlNode& NewProfile) {
    if (!NewProfile || !NewProfile.IsElement()) return;
    std::string key = FreeKeys(root_).Next();
    SetChild(NewProfile, "KEY", key);
    root_.AppendChild(NewProfile);
}

void CommsProfileManager::RemoveApplicationProfile(const XmlNode& Profile) {
    if (Profile) root_.RemoveChild(Profile);
}

XmlNode CommsProfileManager::NewProfile(std::initializer_list<std::pair<std::string_view, std::string_view>> fields) const {
    XmlNode profile = XMLOps::CreateXMLElement(kProfile);
    for (const auto& [name, value] : fields) SetChild(profile, name, value);
    return profile;
}

XmlNode CommsProfileManager::AppendProfile(const XmlNode& profile,
                                           std::initializer_list<std::pair<std::string_view, std::string_view>> afterKey) {
    SetChild(profile, "KEY", FreeKeys(root_).Next());
    for (const auto& [name, value] : afterKey) SetChild(profile, name, value);
    return root_.AppendChild(profile);
}

XmlNode CommsProfileManager::AddRS232Direct(std::string_view PortNumber) {
    std::string name = "Direct to COM" + std::string(PortNumber);
    XmlNode profile = NewProfile({{"NAME", name}, {"TYPE", "RS232"}, {"METHOD", "DIRECT"}, {"BAUDRATE", "9600"}});
    if (!PortNumber.empty()) SetChild(profile, "COMMPORT", PortNumber);
    SetChild(profile, "FORCEPROMPT", "[RTS]");
    SetChild(profile, "ICON", "DIRECT");
    return AppendProfile(profile);
}

XmlNode CommsProfileManager::AddRS232PhoneModem(std::string_view PortNumber) {
    std::string name = "Phone modem on COM" + std::string(PortNumber);
    XmlNode profile = NewProfile({{"NAME", name}, {"TYPE", "RS232"}, {"METHOD", "PHONEMODEM"}, {"BAUDRATE", "9600"}});
    if (!PortNumber.empty()) SetChild(profile, "COMMPORT", PortNumber);
    for (const auto& [field, value] : {std::pair<std::string_view, std::string_view>{"RESET", "ATZ"},
                                       {"SETTINGS", "ATE0"}, {"FORCEPROMPT", "K"}, {"ICON", "PHONEMODEM"}})
        SetChild(profile, field, value);
    return AppendProfile(profile);
}

XmlNode CommsProfileManager::AddUDPConnection() {
    return AppendProfile(NewProfile({{"NAME", "Network (UDP)"}, {"TYPE", "IP"}, {"METHOD", "UDP"},
                                     {"FORCEPROMPT", "[CR/LF]"}, {"ICON", "IP"}, {"ADDRESS", "127.0.0.1"},
                                     {"PORT", "9000"}, {"TIMEOUT", "10"}, {"PROMPTTIMEOUT", "10"},
                                     {"SENDBLOCKSIZE", "256"}}));
}

XmlNode CommsProfileManager::AddTCPConnection() {
    return AppendProfile(NewProfile({{"NAME", "Network (TCP/IP)"}, {"TYPE", "IP"}, {"METHOD", "TCP"},
                                     {"FORCEPROMPT", "K"}, {"ICON", "IP"}, {"ADDRESS", "127.0.0.1"},
                                     {"PORT", "9000"}, {"TIMEOUT", "5"}, {"SENDBLOCKSIZE", "256"}}));
}

XmlNode CommsProfileManager::AddGPRSProxyConnection() {
    return AppendProfile(NewProfile({{"NAME", "GPRS Proxy (Harvest Modem)"}, {"TYPE", "IP"}, {"METHOD", "GPRSPROXY"},
                                     {"FORCEPROMPT", "[CR/LF]"}, {"ICON", "IP"}, {"PROXYPORT", "9002"},
                                     {"TIMEOUT", "10"}, {"PROMPTTIMEOUT", "10"}, {"SENDBLOCKSIZE", "256"}}),
                         {{"ADDRESS", "127.0.0.1"}, {"MAXTESTMODECHANNELGAP", "128"}});
}

std::vector<XmlNode> CommsProfileManager::GetDeviceProfileList(const XmlNode& Profiles, std::string_view ProfileType,
                                                               std::string_view ProfileMethod) {
    std::vector<XmlNode> found;
    for (const XmlNode& profile : Profiles.SelectAll(kProfile))
        if (Text::EqualsIgnoreCase(ChildText(profile, "TYPE"), ProfileType) &&
            Text::EqualsIgnoreCase(ChildText(profile, "METHOD"), ProfileMethod))
            found.push_back(profile);
    return found;
}

XmlNode CommsProfileManager::GetDeviceProfile(const XmlNode& Profiles, std::string_view ProfileType,
                                              std::string_view ProfileMethod) {
    for (const XmlNode& profile : Profiles.SelectAll(kProfile))
        if (ChildText(profile, "TYPE") == ProfileType && ChildText(profile, "METHOD") == ProfileMethod) return profile;
    return {};
}

XmlNode CommsProfileManager::GetDefaultProfile(const XmlNode& SchemeProfiles) {
    for (const XmlNode& profile : SchemeProfiles.SelectAll(kProfile))
        if (const std::string mark = ChildText(profile, "DEFAULT");
            Numeric::IsNumeric(mark) && Numeric::LeadingNumber(mark) != 0)
            return profile;
    return {};
}

void CommsProfileManager::CleanRS232Direct() {
    PortSnapshot ports(*ports_);
    std::vector<XmlNode> direct = GetDeviceProfileList(root_, "RS232", "DIRECT");
    std::vector<std::optional<std::int16_t>> numbers;
    for (const XmlNode& profile : direct) {
        numbers.push_back(WholePortNumber(profile));
        if (!numbers.back() || !ports.IsPresent(*numbers.back())) root_.RemoveChild(profile);
    }
    try {
        for (std::int16_t port : ports.PresentPorts(MaxCommPort())) {
            bool known = false;
            for (const auto& number : numbers) known = known || SamePort(number, port);
            if (!known) AddRS232Direct(std::to_string(port));
        }
    } catch (...) {
        // What was added so far stays.
    }
}

XmlNode CommsProfileManager::GetExactMatch(const XmlNode& Profile) {
    const std::string type = ChildText(Profile, "TYPE"), method = ChildText(Profile, "METHOD");
    if (type == "RS232") {
        if (method != "DIRECT") return {};  // a phone modem never has an exact match
        std::optional<std::int16_t> port = PortNumber(Profile);
        for (const XmlNode& direct : ExactProfiles(root_, "RS232", "DIRECT"))
            if (SamePort(PortNumber(direct), port)) return direct.CloneNode(true);
        return {};
    }
    if (type != "IP") return {};
    if (method != "GPRSPROXY") return Profile.CloneNode(true);
    XmlNode proxy = GetDeviceProfile(root_, "IP", "GPRSPROXY");
    if (!proxy)
        throw Error(ErrorNumber::ObjectRequired, "CommsProfileManager:GetExactMatch",
                    "The communications map has no GPRS proxy profile to match a GPRS proxy connection.");
    return proxy.CloneNode(true);
}

XmlNode CommsProfileManager::GetBestMatch(const XmlNode& Profile) {
    const std::string type = ChildText(Profile, "TYPE"), method = ChildText(Profile, "METHOD");
    if (type == "IP") {
        if (method != "GPRSPROXY") return Profile.CloneNode(true);
        XmlNode proxy = GetDeviceProfile(root_, "IP", "GPRSPROXY");
        return proxy ? proxy.CloneNode(true) : XmlNode();
    }
    if (type != "RS232") return {};
    std::optional<std::int16_t> port = PortNumber(Profile);
    bool present = port && PortSnapshot(*ports_).IsPresent(*port);
    if (method == "DIRECT") {
        if (present) return Profile.CloneNode(true);
        XmlNode first = GetDeviceProfile(root_, "RS232", "DIRECT");
        return first ? first.CloneNode(true) : XmlNode();
    }
    if (method != "PHONEMODEM") return {};
    XmlNode modem = GetDeviceProfile(root_, "RS232", "PHONEMODEM");
    if (!modem) {
        if (present) return {};
        throw Error(ErrorNumber::ObjectRequired, "CommsProfileManager:GetBestMatch",
                    "The communications map has no phone modem profile to stand in for the absent port COM" +
                        ChildText(Profile, "COMMPORT") + ".");
    }
    // With the port present the map's own modem keeps the number and switch
    // setting; otherwise only the copy gets them.
    XmlNode target = present ? modem : modem.CloneNode(true);
    for (std::string_view field : {"PHONENUMBER", "TELSWITCH"}) SetExisting(target, field, ChildText(Profile, field));
    return present ? target.CloneNode(true) : target;
}

void CommsProfileManager::MapSchemeCommsProfiles(Scheme& iScheme) {
    MapSchemeCommsProfiles(iScheme.CommsProfiles(), iScheme.SchemeText());
}

void CommsProfileManager::MapSchemeCommsProfiles(const XmlNode& profiles, std::string_view schemeText) {
    const XmlNode list = profiles;
    if (!list) return;
    PortSnapshot ports(*ports_);
    const XmlNode oldDefault = GetDefaultProfile(list);

    // Direct cables: drop the ports this PC lacks, add the ones it has. The
    // map's cables are read once; the lookup is GetExactMatch's, without the copy.
    struct Cable {
        XmlNode node;
        std::optional<std::int16_t> port;
    };
    std::vector<Cable> cables;
    for (const XmlNode& device : ExactProfiles(root_, "RS232", "DIRECT")) cables.push_back({device, PortNumber(device)});
    auto exactMatch = [&](const XmlNode& profile, const std::optional<std::int16_t>& port) {
        if (ChildText(profile, "TYPE") == "RS232" && ChildText(profile, "METHOD") == "DIRECT")
            for (const Cable& cable : cables)
                if (SamePort(cable.port, port)) return cable.node;
        return XmlNode();
    };
    std::deque<std::string> switches;
    for (const XmlNode& profile : GetDeviceProfileList(list, "RS232", "DIRECT")) {
        std::optional<std::int16_t> port = PortNumber(profile);
        bool remove = !port || !ports.IsPresent(*port);
        if (XmlNode match = exactMatch(profile, port)) {
            if (IsTrueText(ChildText(match, "HIDE"))) {
                remove = true;
            } else {
                SetChild(profile, "NAME", ChildText(match, "NAME"));
                SetChild(profile, "ORVABT", IsTrueText(ChildText(match, "ORVABT")) ? "True" : "False");
            }
        }
        if (remove) {
            std::string setting = ChildText(profile, "TELSWITCH");
            if (!setting.empty()) switches.push_back(setting);
            list.RemoveChild(profile);
        }
    }
    std::vector<std::optional<std::int16_t>> schemePorts;
    for (const XmlNode& profile : ExactProfiles(list, "RS232", "DIRECT")) schemePorts.push_back(PortNumber(profile));
    FreeKeys keys(list);
    for (const Cable& cable : cables) {
        bool inScheme = false;
        for (const auto& schemePort : schemePorts) inScheme = inScheme || SamePort(schemePort, cable.port);
        if (inScheme || IsTrueText(ChildText(cable.node, "HIDE"))) continue;
        XmlNode copy = AppendCopy(list, cable.node, keys);
        schemePorts.push_back(cable.port);
        if (!switches.empty()) SetExisting(copy, "TELSWITCH", TakeQueued(switches));
    }

    // Phone modems: only this PC's modems stay; the numbers dialled move over.
    struct Modem {
        std::optional<std::int16_t> port;
        std::string name;
        bool operator==(const Modem& other) const {
            return SamePort(port, other.port) && Text::EqualsIgnoreCase(name, other.name);
        }
    };
    auto modemOf = [](const XmlNode& profile) { return Modem{PortNumber(profile), ChildText(profile, "NAME")}; };
    auto contains = [](const std::vector<Modem>& modems, const Modem& modem) {
        for (const Modem& other : modems)
            if (other == modem) return true;
        return false;
    };
    std::deque<std::string> dialling;
    const std::vector<XmlNode> modems = ExactProfiles(root_, "RS232", "PHONEMODEM");
    std::vector<Modem> mapModems;
    for (const XmlNode& modem : modems) mapModems.push_back(modemOf(modem));
    std::vector<Modem> schemeModems;
    for (const XmlNode& profile : ExactProfiles(list, "RS232", "PHONEMODEM")) {
        Modem modem = modemOf(profile);
        if (contains(mapModems, modem)) {
            schemeModems.push_back(std::move(modem));
            continue;
        }
        dialling.push_back(ChildText(profile, "TELSWITCH") + "|" + ChildText(profile, "PHONENUMBER"));
        list.RemoveChild(profile);
    }
    keys = FreeKeys(list);
    for (std::size_t i = 0; i < modems.size(); ++i) {
        if (contains(schemeModems, mapModems[i])) continue;
        XmlNode copy = AppendCopy(list, modems[i], keys);
        schemeModems.push_back(mapModems[i]);
        if (dialling.empty()) continue;
        std::string pair = TakeQueued(dialling);
        // The first and second of its "|"-separated parts; any further part is dropped.
        std::size_t bar = pair.find('|');
        SetExisting(copy, "TELSWITCH", pair.substr(0, bar));
        SetExisting(copy, "PHONENUMBER",
                    bar == std::string::npos ? std::string() : pair.substr(bar + 1, pair.find('|', bar + 1) - bar - 1));
    }

    // Network links.
    for (std::string_view method : {"UDP", "TCP"}) {
        if (GetDeviceProfile(list, "IP", method)) continue;
        if (XmlNode device = GetDeviceProfile(root_, "IP", method)) AppendCopy(list, device, keys);
    }
    XmlNode proxy = GetDeviceProfile(root_, "IP", "GPRSPROXY");
    std::vector<XmlNode> proxies = ExactProfiles(list, "IP", "GPRSPROXY");
    if (proxies.empty()) {
        if (proxy) AppendCopy(list, proxy, keys);
    } else if (proxy) {
        for (const XmlNode& profile : proxies)
            for (std::string_view field : {"USERNAME", "PASSWORD", "PROXYADDRESS", "PROXYPORT"})
                SetExisting(profile, field, ChildText(proxy, field));
    }

    // The default.
    if (!oldDefault) {
        if (XmlNode chosen = ChooseDefault(list, std::string(schemeText))) SetExisting(chosen, "DEFAULT", "-1");
    } else if (!(GetDefaultProfile(list) == oldDefault)) {
        XmlNode same = GetDeviceProfile(list, ChildText(oldDefault, "TYPE"), ChildText(oldDefault, "METHOD"));
        if (same) {
            SetChild(same, "DEFAULT", "-1");
        } else {
            if (XmlNode first = list.FirstChildElement(kProfile)) SetChild(first, "DEFAULT", "-1");
            SetChild(oldDefault, "DEFAULT", "0");
        }
    }
}

XmlNode CommsProfileManager::ChooseDefault(const XmlNode& schemeProfiles, const std::string& schemeText) const {
    auto directOn = [&](const std::string& port) -> XmlNode {
        for (const XmlNode& profile : ExactProfiles(schemeProfiles, "RS232", "DIRECT"))
            if (ChildText(profile, "COMMPORT") == port) return profile;
        return {};
    };
    XmlNode chosen;
    std::string port = store_->GetSetting("MERIDEXV4", "CommsPref", schemeText, "");
    if (!port.empty()) chosen = directOn(port);
    if (!chosen) {
        // The last port used at all, not the most used one.
        port.clear();
        for (const auto& [name, count] : store_->GetAllSettings("MERIDEXV4", "CommsUsage"))
            if (Numeric::IsNumeric(count) && Numeric::LeadingNumber(count) > 0) port = name;
        if (!port.empty()) chosen = directOn(port);
    }
    // Taken from the map itself, so the mark lands on the map's profile.
    if (!chosen) chosen = GetDeviceProfile(root_, "RS232", "DIRECT");
    if (!chosen) chosen = root_.FirstChildElement(kProfile);
    return chosen;
}

}  // namespace meridex
