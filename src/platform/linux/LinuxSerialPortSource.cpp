#include <meridex/platform/linux/LinuxSerialPortSource.h>

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <libserialport.h>
#include <map>
#include <set>
#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>

#include <meridex/frame/Text.h>

namespace meridex {
namespace fs = std::filesystem;
namespace {

std::string Canonical(const std::string& path) {
    std::error_code ec;
    fs::path resolved = fs::canonical(path, ec);
    return ec ? std::string() : resolved.string();
}

std::string BaseName(const std::string& path) { return fs::path(path).filename().string(); }

bool IsRfcommName(const std::string& path) { return BaseName(path).rfind("rfcomm", 0) == 0; }

bool NodeExists(const std::string& path) {
    struct stat st {};
    return ::stat(path.c_str(), &st) == 0;
}

int UartIndex(const std::string& path) {
    constexpr std::string_view prefix = "/dev/ttyS";
    if (path.rfind(prefix, 0) != 0 || path.size() == prefix.size() || path.size() > prefix.size() + 4) return -1;
    int index = 0;
    for (char c : std::string_view(path).substr(prefix.size())) {
        if (c < '0' || c > '9') return -1;
        index = index * 10 + (c - '0');
    }
    return index;
}

// "COM12" (any case) -> 12; 0 for anything else.
int ComNumber(std::string_view name) {
    if (name.size() < 4 || name.size() > 8 || !Text::EqualsIgnoreCase(name.substr(0, 3), "COM")) return 0;
    long number = 0;
    for (char c : name.substr(3)) {
        if (c < '0' || c > '9') return 0;
        number = number * 10 + (c - '0');
    }
    return number >= 1 && number <= 32767 ? static_cast<int>(number) : 0;
}

}  // namespace

LinuxSerialPortSource::LinuxSerialPortSource(std::shared_ptr<UserStore> store) : store_(std::move(store)) {}

std::vector<SerialPort> LinuxSerialPortSource::ListPorts() {
    if (!store_) return {};
    return NumberPorts(FindDevices(), *store_, UartNodes());
}

std::set<int> LinuxSerialPortSource::UartNodes() {
    // The kernel registers every UART it may ever drive (8250.nr_uarts) at
    // start-up, present hardware or not, so these are all the UARTs there can
    // be until the next start.
    std::set<int> indexes;
    std::error_code ec;
    for (const char* folder : {"/dev", "/sys/class/tty"}) {
        for (fs::directory_iterator it(folder, ec), end; !ec && it != end; it.increment(ec)) {
            const int index = UartIndex("/dev/" + it->path().filename().string());
            if (index >= 0) indexes.insert(index);
        }
    }
    return indexes;
}

bool LinuxSerialPortSource::Probe(const SerialPort& port) {
    if (port.bluetooth) return NodeExists(port.device);
    return ProbeDevice(port.device);
}

std::vector<LinuxSerialPortSource::Device> LinuxSerialPortSource::FindDevices() {
    // The stable names udev gives USB and ACM devices, by the node they lead to.
    std::map<std::string, std::string> stableNames;
    std::error_code ec;
    std::vector<std::string> links;
    for (fs::directory_iterator it("/dev/serial/by-id", ec), end; !ec && it != end; it.increment(ec))
        links.push_back(it->path().string());
    std::sort(links.begin(), links.end());
    for (const std::string& link : links) {
        std::string target = Canonical(link);
        if (!target.empty()) stableNames.emplace(target, link);
    }

    std::vector<Device> devices;
    std::set<std::string> seen;
    sp_port** list = nullptr;
    if (sp_list_ports(&list) == SP_OK && list) {
        for (int i = 0; list[i]; ++i) {
            const char* name = sp_get_port_name(list[i]);
            if (!name || !seen.insert(name).second) continue;
            const char* description = sp_get_port_description(list[i]);
            Device device;
            device.path = name;
            device.description = description && *description ? description : BaseName(device.path);
            device.bluetooth = sp_get_port_transport(list[i]) == SP_TRANSPORT_BLUETOOTH || IsRfcommName(device.path);
            device.uartIndex = UartIndex(device.path);
            devices.push_back(std::move(device));
        }
        sp_free_port_list(list);
    }
    // Bound RFCOMM links have no device behind them in sysfs, so
    // libserialport does not list them.
    std::vector<std::string> rfcomm;
    for (fs::directory_iterator it("/dev", ec), end; !ec && it != end; it.increment(ec)) {
        std::string path = it->path().string();
        if (IsRfcommName(path) && !seen.count(path)) rfcomm.push_back(path);
    }
    std::sort(rfcomm.begin(), rfcomm.end());
    for (const std::string& path : rfcomm) devices.push_back(Device{path, {}, "Bluetooth link " + BaseName(path), true, -1});

    for (Device& device : devices) {
        auto stable = stableNames.find(Canonical(device.path));
        device.identity = stable != stableNames.end() ? stable->second : device.path;
    }
    return devices;
}

std::vector<SerialPort> LinuxSerialPortSource::NumberPorts(const std::vector<Device>& devices, UserStore& store,
                                                           const std::set<int>& uartNodes) {
    std::map<int, SerialPort> ports;
    // A UART's own number is never handed to another device, even while the
    // UART is not listed: once stored, such a number would be taken for ever.
    std::set<int> uartNumbers;
    for (int index : uartNodes) uartNumbers.insert(index + 1);
    for (const Device& device : devices)
        if (device.uartIndex >= 0) uartNumbers.insert(device.uartIndex + 1);
    std::vector<bool> matched(devices.size(), false);

    auto matching = [&](const std::string& path) -> int {
        std::string canonical;
        for (std::size_t i = 0; i < devices.size(); ++i) {
            if (matched[i]) continue;
            if (devices[i].identity == path || devices[i].path == path) return static_cast<int>(i);
            if (canonical.empty()) canonical = Canonical(path);
            if (!canonical.empty() && canonical == Canonical(devices[i].path)) return static_cast<int>(i);
        }
        return -1;
    };

    // Pinned and remembered numbers first; the first line for a number, and
    // the first for a device, wins.
    std::set<std::string> stored;
    for (const auto& [key, value] : store.GetAllSettings(kApplication, kSection)) {
        int number = ComNumber(key);
        if (number == 0 || value.empty() || ports.count(number) || !stored.insert(value).second) continue;
        SerialPort port;
        port.number = static_cast<std::int16_t>(number);
        port.device = value;
        int found = matching(value);
        if (found >= 0) {
            matched[found] = true;
            port.description = devices[found].description;
            port.bluetooth = devices[found].bluetooth;
        } else {
            // Not listed now: unplugged, or a device libserialport does not know.
            port.description = BaseName(value);
            port.bluetooth = IsRfcommName(Canonical(value)) && NodeExists(value);
        }
        ports.emplace(number, std::move(port));
    }

    // Built-in UARTs keep their own number unless it is pinned to another device.
    for (std::size_t i = 0; i < devices.size(); ++i) {
        const Device& device = devices[i];
        if (matched[i] || device.uartIndex < 0 || device.uartIndex >= 32767 || ports.count(device.uartIndex + 1))
            continue;
        matched[i] = true;
        ports.emplace(device.uartIndex + 1, SerialPort{static_cast<std::int16_t>(device.uartIndex + 1), device.path,
                                                       device.description, device.bluetooth});
    }

    // New devices, in a fixed order, take the lowest free numbers.
    std::vector<std::size_t> fresh;
    for (std::size_t i = 0; i < devices.size(); ++i)
        if (!matched[i]) fresh.push_back(i);
    std::sort(fresh.begin(), fresh.end(),
              [&](std::size_t a, std::size_t b) { return devices[a].identity < devices[b].identity; });
    int next = 1;
    for (std::size_t i : fresh) {
        while (next <= 32767 && (ports.count(next) || uartNumbers.count(next))) ++next;
        if (next > 32767) break;
        const Device& device = devices[i];
        ports.emplace(next, SerialPort{static_cast<std::int16_t>(next), device.identity, device.description,
                                       device.bluetooth});
        // A store that cannot be written still numbers the device for now.
        store.SaveSetting(kApplication, kSection, "COM" + std::to_string(next), device.identity);
    }

    std::vector<SerialPort> result;
    result.reserve(ports.size());
    for (auto& [number, port] : ports) result.push_back(std::move(port));
    return result;
}

bool LinuxSerialPortSource::ProbeDevice(const std::string& path) {
    return ProbeDevice(path, [](const std::string& node, int flags) { return ::open(node.c_str(), flags); });
}

bool LinuxSerialPortSource::ProbeDevice(const std::string& path, const OpenFunction& open) {
    struct stat st {};
    if (path.empty() || ::stat(path.c_str(), &st) != 0 || !S_ISCHR(st.st_mode)) return false;
    // Two attempts, as a port that is just being set up may refuse the first.
    for (int attempt = 0; attempt < 2; ++attempt) {
        int fd = open(path, O_RDWR | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
        if (fd < 0 && errno == EACCES) fd = open(path, O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
        if (fd < 0) {
            // Held exclusively by another program, or listed by the system
            // but closed to this user (not in the dialout group): the port is
            // there, and its profile must not be dropped.
            if (errno == EBUSY || errno == EACCES || errno == EPERM) return true;
            continue;
        }
        termios settings {};
        bool ok = ::tcgetattr(fd, &settings) == 0;
        int error = ok ? 0 : errno;
        ::close(fd);
        if (ok) return true;
        if (error == ENOTTY) return false;  // not a terminal: asking again cannot help
    }
    return false;
}

}  // namespace meridex
