#pragma once
#include <meridex/Export.h>
#include <cstdint>
#include <string>
#include <vector>

namespace meridex {

/// One serial port of this PC under its COM number, the number the stored
/// documents use for it.
struct MERIDEX_EXPORT SerialPort {
    std::int16_t number = 0;  ///< The COM number.
    std::string device;       ///< the path that is opened
    std::string description;  ///< the friendly name shown to the user
    bool bluetooth = false;   ///< a Bluetooth modem link: present without probing
};

/// Where this PC's serial ports come from. The communications map takes one,
/// so it can be given a made-up port list instead of the machine's.
class MERIDEX_EXPORT SerialPortSource {
public:
    virtual ~SerialPortSource() = default;
    /// Every port that has a COM number, ascending, one entry per number. It
    /// never opens a port, so it stays quick however many ports are mapped.
    virtual std::vector<SerialPort> ListPorts() = 0;
    /// The presence test of one listed port (Bluetooth links are not probed:
    /// their being listed is enough). Quick for a port that is not there.
    virtual bool Probe(const SerialPort& port) = 0;
};

}  // namespace meridex
