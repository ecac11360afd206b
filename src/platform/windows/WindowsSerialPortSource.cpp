#include <meridex/platform/windows/WindowsSerialPortSource.h>

#include <windows.h>
#include <devguid.h>
#include <setupapi.h>
#include <shlwapi.h>

#include <algorithm>

#include <meridex/platform/windows/RegistryKey.h>
#include <meridex/platform/windows/WideText.h>

namespace meridex {
namespace {

constexpr const wchar_t* kDeviceMap = L"HARDWARE\\DEVICEMAP\\SERIALCOMM\\";

bool IsBluetoothModemName(const std::wstring& name) { return ::PathMatchSpecW(name.c_str(), L"*BthModem*") != FALSE; }

// The device manager's names of the ports present, by port number.
std::map<int, std::string> FriendlyNames() {
    std::map<int, std::string> names;
    HDEVINFO devices = ::SetupDiGetClassDevsW(&GUID_DEVCLASS_PORTS, nullptr, nullptr, DIGCF_PRESENT);
    if (devices == INVALID_HANDLE_VALUE) return names;
    SP_DEVINFO_DATA device{};
    device.cbSize = sizeof(device);
    for (DWORD index = 0; ::SetupDiEnumDeviceInfo(devices, index, &device); ++index) {
        HKEY parameters = ::SetupDiOpenDevRegKey(devices, &device, DICS_FLAG_GLOBAL, 0, DIREG_DEV, KEY_READ);
        if (parameters == INVALID_HANDLE_VALUE) continue;
        wchar_t portName[64] = {};
        DWORD size = sizeof(portName) - sizeof(wchar_t);
        DWORD type = 0;
        const bool named = ::RegQueryValueExW(parameters, L"PortName", nullptr, &type,
                                              reinterpret_cast<BYTE*>(portName), &size) == ERROR_SUCCESS &&
                           type == REG_SZ;
        ::RegCloseKey(parameters);
        if (!named) continue;
        wchar_t friendly[256] = {};
        if (!::SetupDiGetDeviceRegistryPropertyW(devices, &device, SPDRP_FRIENDLYNAME, nullptr,
                                                 reinterpret_cast<BYTE*>(friendly), sizeof(friendly) - sizeof(wchar_t),
                                                 nullptr))
            continue;
        const int number = WindowsSerialPortSource::PortNumber(portName);
        if (number > 0) names.emplace(number, Wide::ToUtf8(friendly));
    }
    ::SetupDiDestroyDeviceInfoList(devices);
    return names;
}

}  // namespace

std::vector<WindowsSerialPortSource::MapEntry> WindowsSerialPortSource::ReadDeviceMap() {
    std::vector<MapEntry> entries;
    for (const RegistryKey::Value& value : RegistryKey::Open(HKEY_LOCAL_MACHINE, kDeviceMap).Values())
        if (value.isString && !value.data.empty()) entries.push_back({value.name, value.data});
    return entries;
}

int WindowsSerialPortSource::PortNumber(const std::wstring& data) {
    if (data.size() < 4 || data.size() > 8) return 0;
    long number = 0;
    for (wchar_t c : data.substr(3)) {
        if (c < L'0' || c > L'9') return 0;
        number = number * 10 + (c - L'0');
    }
    return number <= 32767 ? static_cast<int>(number) : 0;
}

std::vector<SerialPort> WindowsSerialPortSource::PortsOf(const std::vector<MapEntry>& entries,
                                                         const std::map<int, std::string>& friendlyNames) {
    std::map<int, SerialPort> ports;
    for (const MapEntry& entry : entries) {
        const int number = PortNumber(entry.data);
        if (number < 1) continue;
        SerialPort& port = ports[number];
        const bool bluetooth = IsBluetoothModemName(entry.name);
        if (port.number == 0 || (bluetooth && !port.bluetooth)) {
            port.number = static_cast<std::int16_t>(number);
            port.device = "COM" + std::to_string(number);
            std::string name = Wide::ToUtf8(entry.name);
            const std::size_t slash = name.find_last_of('\\');
            port.description = slash == std::string::npos ? name : name.substr(slash + 1);
        }
        port.bluetooth = port.bluetooth || bluetooth;
    }
    std::vector<SerialPort> list;
    for (auto& [number, port] : ports) {
        auto friendly = friendlyNames.find(number);
        if (friendly != friendlyNames.end() && !friendly->second.empty()) port.description = friendly->second;
        list.push_back(std::move(port));
    }
    return list;
}

std::vector<SerialPort> WindowsSerialPortSource::ListPorts() { return PortsOf(ReadDeviceMap(), FriendlyNames()); }

bool WindowsSerialPortSource::QueryDefaultConfiguration(const std::wstring& portName) {
    for (int attempt = 0; attempt < 2; ++attempt) {
        // The 52 bytes of a configuration record with no provider data.
        alignas(COMMCONFIG) BYTE buffer[52] = {};
        DWORD size = sizeof(buffer);
        if (::GetDefaultCommConfigW(portName.c_str(), reinterpret_cast<COMMCONFIG*>(buffer), &size)) return true;
    }
    return false;
}

bool WindowsSerialPortSource::Probe(const SerialPort& port) {
    if (port.bluetooth) return true;
    return QueryDefaultConfiguration(L"COM" + std::to_wstring(port.number));
}

}  // namespace meridex
