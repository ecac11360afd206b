#pragma once
#include <meridex/Export.h>
#include <chrono>
#include <cstdint>
#include <memory>
#include <string>

#include <meridex/firmware/ByteLink.h>

/// @file
/// @brief The byte links of this platform: serial ports, TCP and UDP.
namespace meridex::Platform {

/// Opens a serial device at baud bit/s, 8 data bits, no parity, one stop bit,
/// no flow control; null (and error filled) when it cannot. description names
/// the link in messages.
MERIDEX_EXPORT std::unique_ptr<ByteLink> OpenSerialLink(const std::string& device, std::uint32_t baud,
                                                        const std::string& description, std::string& error);
/// Connects to host:port over TCP within timeout; null (and error filled) when it cannot.
MERIDEX_EXPORT std::unique_ptr<ByteLink> OpenTcpLink(const std::string& host, std::uint16_t port,
                                                     std::chrono::milliseconds timeout, std::string& error);
/// A UDP exchange with host:port (each send one datagram); null (and error filled) when it cannot be set up.
MERIDEX_EXPORT std::unique_ptr<ByteLink> OpenUdpLink(const std::string& host, std::uint16_t port, std::string& error);

}  // namespace meridex::Platform
