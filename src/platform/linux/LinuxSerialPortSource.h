#pragma once
#include <functional>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include <meridex/platform/SerialPortSource.h>
#include <meridex/platform/UserStore.h>

namespace meridex {

// The serial ports of a Linux PC, numbered the way Windows numbers COM
// ports: a number stays with its device across unplugging, plugging in and
// restarting.
//
// - A built-in UART /dev/ttyS<k> is COM<k+1>.
// - Any other device (USB adapter, ACM modem, Bluetooth RFCOMM link) is known
//   by its stable identity, its /dev/serial/by-id name where it has one and
//   else its device path, and gets the lowest free number the first time it
//   is seen; the number is remembered in the user store.
// - The user store's section "SerialPorts" of the application "MeridexV4"
//   holds those numbers as lines "COM<n>=<device path>"; a line written by
//   hand pins a number to any device path (a pinned number wins over a
//   UART's own number, and the UART then gets a free one). The first line
//   for a number, and the first for a device path, counts.
// - A free number is never one that belongs to a UART the kernel knows
//   (/dev/ttyS<k> present or not), so no UART is pushed aside later.
// - A port is present when its device node exists, is a character device,
//   and opens without blocking with its terminal settings readable (a port
//   another program holds exclusively, or one this user may not open,
//   counts as present). A Bluetooth RFCOMM
//   link is present as soon as its node exists; it is never opened, as
//   opening one starts a radio connection.
class LinuxSerialPortSource : public SerialPortSource {
public:
    // A device found on this PC, before it has a number.
    struct Device {
        std::string path;         // /dev/ttyUSB0
        std::string identity;     // /dev/serial/by-id/... or the path
        std::string description;  // libserialport's description
        bool bluetooth = false;
        int uartIndex = -1;       // k of /dev/ttyS<k>, else -1
    };

    static constexpr const char* kApplication = "MeridexV4";
    static constexpr const char* kSection = "SerialPorts";

    explicit LinuxSerialPortSource(std::shared_ptr<UserStore> store);

    std::vector<SerialPort> ListPorts() override;
    bool Probe(const SerialPort& port) override;

    // The serial devices of this PC as libserialport lists them, with the
    // RFCOMM links it leaves out.
    static std::vector<Device> FindDevices();
    /// The k of every /dev/ttyS<k> the kernel has registered.
    static std::set<int> UartNodes();
    /// The numbering rules above applied to devices, with the UARTs uartNodes
    /// names keeping their numbers free; new numbers are saved in store.
    static std::vector<SerialPort> NumberPorts(const std::vector<Device>& devices, UserStore& store,
                                               const std::set<int>& uartNodes = {});
    /// How a probe opens a node (the system's open, or a test's).
    using OpenFunction = std::function<int(const std::string& path, int flags)>;
    /// The presence test of a device path (without the Bluetooth rule).
    static bool ProbeDevice(const std::string& path);
    /// The same test opening the node through open.
    static bool ProbeDevice(const std::string& path, const OpenFunction& open);

private:
    std::shared_ptr<UserStore> store_;
};

}  // namespace meridex
