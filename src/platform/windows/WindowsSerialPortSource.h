#pragma once
#include <map>
#include <string>
#include <vector>

#include <meridex/platform/SerialPortSource.h>

namespace meridex {

// The serial ports of a Windows PC, as Windows itself numbers them.
//
// - The ports are the values of the serial device map under the local machine
//   hive, "HARDWARE\\DEVICEMAP\\SERIALCOMM\\": each value's data names a port
//   ("COM5"), its name the driver's device ("\Device\BthModem0").
// - A port whose value name matches "*BthModem*" (the shell's wild-card match)
//   is a Bluetooth modem link: present without any query, as opening it
//   would start a radio connection.
// - Any other port is present when its default configuration can be read;
//   the query is asked a second time when the first fails, as some drivers
//   fail the first after a port has been idle.
// - The description is the port's friendly name in the device manager, or
//   else the device name of the map.
class WindowsSerialPortSource : public SerialPortSource {
public:
    // One value of the serial device map.
    struct MapEntry {
        std::wstring name;  // \Device\Serial0
        std::wstring data;  // COM1
    };

    std::vector<SerialPort> ListPorts() override;
    bool Probe(const SerialPort& port) override;

    // The values of the serial device map, in the registry's order (empty
    // when the key cannot be opened).
    static std::vector<MapEntry> ReadDeviceMap();
    // The ports of a device map, one per number, ascending. A number named by
    // several values is a Bluetooth modem link when any of its names matches.
    static std::vector<SerialPort> PortsOf(const std::vector<MapEntry>& entries,
                                           const std::map<int, std::string>& friendlyNames);
    // The port number of a map value's data: the characters from the fourth
    // on, read as a number (0 when they are not one).
    static int PortNumber(const std::wstring& data);
    // The default-configuration query of a port name, asked twice at most.
    static bool QueryDefaultConfiguration(const std::wstring& portName);
};

}  // namespace meridex
