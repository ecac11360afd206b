#pragma once
#include <meridex/Export.h>
#include <cstdint>
#include <vector>

#include <meridex/platform/SerialPortSource.h>

// Questions about the PC itself: which serial ports it has, and the rule for
// the percentage printed beside a progress bar.
namespace meridex::SystemOps {

// True when the port is a listed Bluetooth modem link.
bool IsBluetoothModemPort(SerialPortSource& ports, std::int16_t number);
// The port-presence test: a Bluetooth modem link, or a port that answers.
bool IsCommPortPresent(SerialPortSource& ports, std::int16_t number);
// The present ports 1..highest, ascending (empty for 0 or less).
std::vector<std::int16_t> GetPresentCommPorts(SerialPortSource& ports, std::int16_t highest);
// The percentage shown for a fraction 0..1: fraction x 100 + 0.5, whole part,
// kept within 0..100.
// Exported for the dialogs, whose progress bars print it.
MERIDEX_EXPORT int ProgressPercent(double fraction);

}  // namespace meridex::SystemOps
