#include <meridex/comms/PortsList.h>

#include <meridex/frame/Text.h>

namespace meridex {

std::vector<std::pair<std::string, std::string>> ParsePortsList(std::string_view contents) {
    std::vector<std::pair<std::string, std::string>> ports;
    while (!contents.empty()) {
        const std::size_t end = contents.find('\n');
        const std::string_view line = Text::Trim(contents.substr(0, end));
        contents = end == std::string_view::npos ? std::string_view() : contents.substr(end + 1);
        const std::size_t bar = line.find('|');
        if (line.empty() || bar == std::string_view::npos) continue;
        const std::string_view description = line.substr(bar + 1);
        ports.emplace_back(line.substr(0, bar), description.substr(0, description.find('|')));
    }
    return ports;
}

}  // namespace meridex
