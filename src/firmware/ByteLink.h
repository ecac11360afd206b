#pragma once
#include <meridex/Export.h>
#include <chrono>
#include <string>
#include <string_view>

namespace meridex {

/// A byte stream to a logger: a serial port, a TCP connection or a UDP
/// exchange. The link protocol needs nothing more.
class MERIDEX_EXPORT ByteLink {
public:
    /// What a wait for bytes gave.
    enum class ReadResult { Data, Timeout, Lost };

    virtual ~ByteLink() = default;
    /// Where the link goes, for messages ("COM3 (/dev/ttyUSB0)", "TCP 127.0.0.1:9000").
    virtual std::string Description() const = 0;
    /// Sends bytes as one unit (one datagram on UDP); false when the link has gone.
    virtual bool Send(std::string_view bytes) = 0;
    /// Waits up to timeout for bytes and appends those that arrived to into.
    virtual ReadResult Receive(std::string& into, std::chrono::milliseconds timeout) = 0;
    /// Drops whatever has arrived and not been read.
    virtual void Discard() = 0;
};

}  // namespace meridex
