#include <meridex/firmware/LoggerLinks.h>

#include <charconv>

#include <meridex/comms/ProfileXml.h>
#include <meridex/frame/Text.h>
#include <meridex/platform/Links.h>

namespace meridex::LoggerLinks {
namespace {

bool ParseWhole(std::string_view text, long long& value) {
    text = Text::Trim(text);
    auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
    return ec == std::errc() && end == text.data() + text.size() && !text.empty();
}

std::unique_ptr<LinkLogger> Wrap(std::unique_ptr<ByteLink> link, const LinkLogger::Options& options) {
    if (!link) return nullptr;
    return std::make_unique<LinkLogger>(std::move(link), options);
}

}  // namespace

bool SplitHostPort(const std::string& text, std::string& host, std::uint16_t& port) {
    std::size_t colon = text.rfind(':');
    if (colon == std::string::npos || colon == 0) return false;
    host = text.substr(0, colon);
    if (host.size() > 2 && host.front() == '[' && host.back() == ']') host = host.substr(1, host.size() - 2);
    long long number = 0;
    if (!ParseWhole(std::string_view(text).substr(colon + 1), number) || number < 1 || number > 65535) return false;
    port = static_cast<std::uint16_t>(number);
    return !host.empty();
}

std::unique_ptr<LinkLogger> OpenPort(int number, std::uint32_t baud, SerialPortSource& ports, std::string& error,
                                     LinkLogger::Options options) {
    for (const SerialPort& port : ports.ListPorts()) {
        if (port.number != number) continue;
        options.lineBaud = baud;
        std::string name = "COM" + std::to_string(number);
        return Wrap(Platform::OpenSerialLink(port.device, baud, name + " (" + port.device + ")", error), options);
    }
    error = "COM" + std::to_string(number) + " is not a serial port of this PC";
    return nullptr;
}

std::unique_ptr<LinkLogger> OpenTcp(const std::string& host, std::uint16_t port, std::string& error,
                                    LinkLogger::Options options) {
    return Wrap(Platform::OpenTcpLink(host, port, options.replyTimeout, error), options);
}

std::unique_ptr<LinkLogger> OpenUdp(const std::string& host, std::uint16_t port, std::string& error,
                                    LinkLogger::Options options) {
    return Wrap(Platform::OpenUdpLink(host, port, error), options);
}

std::unique_ptr<LinkLogger> OpenProfile(const XmlNode& profile, SerialPortSource& ports, std::string& error,
                                        LinkLogger::Options options) {
    using ProfileXml::ChildText;
    if (!profile) {
        error = "There is no such device profile";
        return nullptr;
    }
    const std::string type = ChildText(profile, "TYPE"), method = ChildText(profile, "METHOD");
    const std::string name = ChildText(profile, "NAME");
    long long number = 0;
    if (ParseWhole(ChildText(profile, "TIMEOUT"), number) && number > 0 && number <= 3600)
        options.replyTimeout = std::chrono::seconds(number);
    if (Text::EqualsIgnoreCase(type, "RS232") && Text::EqualsIgnoreCase(method, "DIRECT")) {
        std::optional<std::int16_t> port = ProfileXml::PortNumber(profile);
        if (!port || *port <= 0) {
            error = "The profile \"" + name + "\" names no serial port";
            return nullptr;
        }
        long long baud = 9600;
        if (ProfileXml::HasChild(profile, "BAUDRATE") &&
            (!ParseWhole(ChildText(profile, "BAUDRATE"), baud) || baud <= 0 || baud > 4000000)) {
            error = "The profile \"" + name + "\" has an unusable speed \"" + ChildText(profile, "BAUDRATE") + "\"";
            return nullptr;
        }
        return OpenPort(*port, static_cast<std::uint32_t>(baud), ports, error, options);
    }
    if (Text::EqualsIgnoreCase(type, "IP") &&
        (Text::EqualsIgnoreCase(method, "TCP") || Text::EqualsIgnoreCase(method, "UDP"))) {
        std::string host = std::string(Text::Trim(ChildText(profile, "ADDRESS")));
        long long port = 0;
        if (host.empty() || !ParseWhole(ChildText(profile, "PORT"), port) || port < 1 || port > 65535) {
            error = "The profile \"" + name + "\" needs an address and a port between 1 and 65535";
            return nullptr;
        }
        return Text::EqualsIgnoreCase(method, "TCP") ? OpenTcp(host, static_cast<std::uint16_t>(port), error, options)
                                                     : OpenUdp(host, static_cast<std::uint16_t>(port), error, options);
    }
    error = "Firmware cannot be loaded through the profile \"" + name + "\" (" + type + "/" + method +
            "): use a direct cable or a TCP or UDP link";
    return nullptr;
}

}  // namespace meridex::LoggerLinks
