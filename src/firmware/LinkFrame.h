#pragma once
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

// Frames of the logger link (docs/firmware-link-protocol.md), shared by the
// host side and the simulated logger:
//   0xA5 0x5A | type | length (16-bit LE) | payload | CRC-16 (LE) of type, length and payload
namespace meridex::LinkFrame {

inline constexpr unsigned char kSync1 = 0xA5;
inline constexpr unsigned char kSync2 = 0x5A;
inline constexpr std::size_t kHeaderSize = 5;
inline constexpr std::size_t kOverhead = kHeaderSize + 2;
inline constexpr std::size_t kMaxPayload = 8192;

// Commands (host to logger); a reply's type is the command's with 0x80 set.
enum Command : std::uint8_t {
    Identify = 0x01,
    EnterLoader = 0x02,
    Erase = 0x03,
    WriteBlock = 0x04,
    Verify = 0x05,
    Start = 0x06,
};
inline constexpr std::uint8_t kReplyBit = 0x80;
// The logger's answer to a frame it could not read (bad check, too long).
inline constexpr std::uint8_t kBadFrame = 0xFF;

// The first byte of every reply's payload.
enum Status : std::uint8_t {
    Ok = 0,
    BadBlock = 1,       // the block is not the one expected next (payload gives the expected number)
    Refused = 2,        // the logger will not do it now (erase refused, not in its loader)
    NoValidImage = 3,   // start without a complete, verified image
    TooLarge = 4,       // the image does not fit the logger's memory
    BadFrame = 5,       // the frame's check failed
    Unknown = 6,        // an unknown command
};

struct Frame {
    std::uint8_t type = 0;
    std::string payload;
};

std::string Encode(std::uint8_t type, std::string_view payload);

void PutU32(std::string& out, std::uint32_t value);
std::uint32_t GetU32(std::string_view bytes, std::size_t at);

// Collects bytes as they arrive and hands out whole frames. Bytes before a
// sync pair are skipped; a frame whose check fails is reported once as bad
// and the search goes on after its sync pair.
class Reader {
public:
    enum class Result { None, FrameReady, BadFrame };

    void Append(std::string_view bytes) { buffer_.append(bytes.data(), bytes.size()); }
    // The next frame, if the buffer holds one.
    Result Next(Frame& frame);
    void Clear() { buffer_.clear(); }
    std::size_t Buffered() const noexcept { return buffer_.size(); }

private:
    std::string buffer_;
};

}  // namespace meridex::LinkFrame
