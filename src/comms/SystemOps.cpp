#include <meridex/comms/SystemOps.h>

#include <cmath>

#include <meridex/comms/PortSnapshot.h>

namespace meridex::SystemOps {

bool IsBluetoothModemPort(SerialPortSource& ports, std::int16_t number) {
    return PortSnapshot(ports).IsBluetoothModemPort(number);
}

bool IsCommPortPresent(SerialPortSource& ports, std::int16_t number) {
    return PortSnapshot(ports).IsPresent(number);
}

std::vector<std::int16_t> GetPresentCommPorts(SerialPortSource& ports, std::int16_t highest) {
    if (highest < 1) return {};
    return PortSnapshot(ports).PresentPorts(highest);
}

int ProgressPercent(double fraction) {
    if (!(fraction > 0)) return 0;  // also NaN
    double percent = std::floor(fraction * 100 + 0.5);
    return percent > 100 ? 100 : static_cast<int>(percent);
}

}  // namespace meridex::SystemOps
