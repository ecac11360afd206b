#include <meridex/firmware/LinkFrame.h>

#include <meridex/firmware/Crc.h>

namespace meridex::LinkFrame {

void PutU32(std::string& out, std::uint32_t value) {
    for (int i = 0; i < 4; ++i) out.push_back(static_cast<char>((value >> (8 * i)) & 0xFF));
}

std::uint32_t GetU32(std::string_view bytes, std::size_t at) {
    std::uint32_t value = 0;
    for (int i = 3; i >= 0; --i) value = (value << 8) | static_cast<unsigned char>(bytes[at + i]);
    return value;
}

std::string Encode(std::uint8_t type, std::string_view payload) {
    std::string frame;
    frame.reserve(payload.size() + kOverhead);
    frame.push_back(static_cast<char>(kSync1));
    frame.push_back(static_cast<char>(kSync2));
    frame.push_back(static_cast<char>(type));
    frame.push_back(static_cast<char>(payload.size() & 0xFF));
    frame.push_back(static_cast<char>((payload.size() >> 8) & 0xFF));
    frame.append(payload.data(), payload.size());
    std::uint16_t crc = Crc::Crc16(std::string_view(frame).substr(2));
    frame.push_back(static_cast<char>(crc & 0xFF));
    frame.push_back(static_cast<char>(crc >> 8));
    return frame;
}

Reader::Result Reader::Next(Frame& frame) {
    {
        std::size_t start = 0;
        while (start + 1 < buffer_.size() && !(static_cast<unsigned char>(buffer_[start]) == kSync1 &&
                                               static_cast<unsigned char>(buffer_[start + 1]) == kSync2))
            ++start;
        // Keep a lone first sync byte: its pair may be on the way.
        if (start + 1 >= buffer_.size()) {
            bool keepLast = !buffer_.empty() && static_cast<unsigned char>(buffer_.back()) == kSync1;
            buffer_.erase(0, keepLast ? buffer_.size() - 1 : buffer_.size());
            return Result::None;
        }
        buffer_.erase(0, start);
        if (buffer_.size() < kHeaderSize) return Result::None;
        std::size_t length = static_cast<unsigned char>(buffer_[3]) | (static_cast<unsigned char>(buffer_[4]) << 8);
        if (length > kMaxPayload) {
            buffer_.erase(0, 2);
            return Result::BadFrame;
        }
        if (buffer_.size() < length + kOverhead) return Result::None;
        std::uint16_t expected = Crc::Crc16(std::string_view(buffer_).substr(2, length + 3));
        std::uint16_t got = static_cast<unsigned char>(buffer_[length + 5]) |
                            (static_cast<unsigned char>(buffer_[length + 6]) << 8);
        if (expected != got) {
            buffer_.erase(0, 2);
            return Result::BadFrame;
        }
        frame.type = static_cast<std::uint8_t>(buffer_[2]);
        frame.payload.assign(buffer_, kHeaderSize, length);
        buffer_.erase(0, length + kOverhead);
        return Result::FrameReady;
    }
}

}  // namespace meridex::LinkFrame
