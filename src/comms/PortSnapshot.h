#pragma once
#include <meridex/Export.h>
#include <cstdint>
#include <map>
#include <optional>
#include <vector>

#include <meridex/platform/SerialPortSource.h>

namespace meridex {

/// The serial ports as one operation sees them: the port list is taken once
/// and each port is probed at most once, so an operation that asks about
/// many port numbers costs one listing plus one probe per port that exists.
class MERIDEX_EXPORT PortSnapshot {
public:
    /// A snapshot of source (not owned; it must outlive the snapshot). Nothing
    /// is asked of it until the first call.
    explicit PortSnapshot(SerialPortSource& source) : source_(source) {}

    /// The listed ports in ascending number, listed on the first call only.
    const std::vector<SerialPort>& Ports();
    /// The listed port with that number, or null.
    const SerialPort* Find(std::int16_t number);
    /// A listed Bluetooth modem link (present without probing).
    bool IsBluetoothModemPort(std::int16_t number);
    /// The port-presence test.
    bool IsPresent(std::int16_t number);
    /// The present ports 1..highest, ascending.
    std::vector<std::int16_t> PresentPorts(std::int16_t highest);

private:
    SerialPortSource& source_;
    std::optional<std::vector<SerialPort>> ports_;
    std::map<std::int16_t, bool> probed_;
};

}  // namespace meridex
