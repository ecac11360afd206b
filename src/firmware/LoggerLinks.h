#pragma once
#include <meridex/Export.h>
#include <chrono>
#include <cstdint>
#include <memory>
#include <string>

#include <meridex/firmware/LinkLogger.h>
#include <meridex/frame/XmlNode.h>
#include <meridex/platform/SerialPortSource.h>

/// @file
/// @brief Loggers reached through the device profiles of the communications map.
namespace meridex::LoggerLinks {

/// The logger behind a device profile: a direct cable (`COMMPORT`, `BAUDRATE`,
/// default 9600) or a TCP or UDP link (`ADDRESS`, `PORT`; `TIMEOUT` in seconds,
/// when set, is the reply time-out). Phone modems and GPRS proxies are not
/// offered. Null (and error filled) when the link cannot be opened.
MERIDEX_EXPORT std::unique_ptr<LinkLogger> OpenProfile(const XmlNode& profile, SerialPortSource& ports,
                                                       std::string& error, LinkLogger::Options options = {});
/// The logger on serial port COM<number> as this PC numbers its ports.
MERIDEX_EXPORT std::unique_ptr<LinkLogger> OpenPort(int number, std::uint32_t baud, SerialPortSource& ports,
                                                    std::string& error, LinkLogger::Options options = {});
/// The logger at host:port over TCP.
MERIDEX_EXPORT std::unique_ptr<LinkLogger> OpenTcp(const std::string& host, std::uint16_t port, std::string& error,
                                                   LinkLogger::Options options = {});
/// The logger at host:port over UDP.
MERIDEX_EXPORT std::unique_ptr<LinkLogger> OpenUdp(const std::string& host, std::uint16_t port, std::string& error,
                                                   LinkLogger::Options options = {});
/// Splits "HOST:PORT" ("[::1]:9000" for IPv6); false when it is not one.
MERIDEX_EXPORT bool SplitHostPort(const std::string& text, std::string& host, std::uint16_t& port);

}  // namespace meridex::LoggerLinks
