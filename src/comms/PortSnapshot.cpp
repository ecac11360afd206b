#include <meridex/comms/PortSnapshot.h>

#include <algorithm>

namespace meridex {

const std::vector<SerialPort>& PortSnapshot::Ports() {
    if (!ports_) {
        ports_ = source_.ListPorts();
        std::stable_sort(ports_->begin(), ports_->end(),
                         [](const SerialPort& a, const SerialPort& b) { return a.number < b.number; });
    }
    return *ports_;
}

const SerialPort* PortSnapshot::Find(std::int16_t number) {
    const std::vector<SerialPort>& ports = Ports();
    auto it = std::lower_bound(ports.begin(), ports.end(), number,
                               [](const SerialPort& port, std::int16_t n) { return port.number < n; });
    return it != ports.end() && it->number == number ? &*it : nullptr;
}

bool PortSnapshot::IsBluetoothModemPort(std::int16_t number) {
    const SerialPort* port = Find(number);
    return port && port->bluetooth;
}

bool PortSnapshot::IsPresent(std::int16_t number) {
    const SerialPort* port = Find(number);
    if (!port) return false;
    if (port->bluetooth) return true;
    auto known = probed_.find(number);
    if (known != probed_.end()) return known->second;
    bool present = source_.Probe(*port);
    probed_.emplace(number, present);
    return present;
}

std::vector<std::int16_t> PortSnapshot::PresentPorts(std::int16_t highest) {
    std::vector<std::int16_t> present;
    for (const SerialPort& port : Ports()) {
        if (port.number < 1) continue;
        if (port.number > highest) break;
        if (IsPresent(port.number)) present.push_back(port.number);
    }
    return present;
}

}  // namespace meridex
