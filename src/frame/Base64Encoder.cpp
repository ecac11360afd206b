#include <meridex/frame/Base64Encoder.h>

#include <meridex/frame/Error.h>
#include <meridex/frame/Text.h>

namespace meridex {

Base64Encoder::Base64Encoder() {
    int i = 0;
    for (char c = 'A'; c <= 'Z'; ++c) alphabet_[i++] = c;
    for (char c = 'a'; c <= 'z'; ++c) alphabet_[i++] = c;
    for (char c = '0'; c <= '9'; ++c) alphabet_[i++] = c;
    alphabet_[62] = '+';
    alphabet_[63] = '/';
    decode_.fill(0);  // characters outside the alphabet decode as 0, never rejected
    for (int v = 0; v < 64; ++v) decode_[static_cast<unsigned char>(alphabet_[v])] = static_cast<std::uint8_t>(v);
}

std::string Base64Encoder::Encode(std::string_view text) const {
    std::string bytes = Text::ToWindows1252(text);
    const std::size_t padding = bytes.size() % 3 ? 3 - bytes.size() % 3 : 0;
    bytes.append(padding, '\0');
    std::string out;
    out.reserve(bytes.size() / 3 * 4 + bytes.size() / 54 * 2);
    std::size_t lineLength = 0;
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        if (lineLength == 72) {
            out += "\r\n";
            lineLength = 0;
        }
        const unsigned v = (static_cast<unsigned char>(bytes[i]) << 16) |
                           (static_cast<unsigned char>(bytes[i + 1]) << 8) | static_cast<unsigned char>(bytes[i + 2]);
        out += alphabet_[(v >> 18) & 63];
        out += alphabet_[(v >> 12) & 63];
        out += alphabet_[(v >> 6) & 63];
        out += alphabet_[v & 63];
        lineLength += 4;
    }
    for (std::size_t i = 0; i < padding; ++i) out[out.size() - 1 - i] = '=';
    return out;
}

std::string Base64Encoder::Decode(std::string_view text) const {
    std::string clean;
    clean.reserve(text.size());
    for (char c : text) {
        if (c != '\r' && c != '\n') clean += c;
    }
    if (clean.size() % 4 != 0) throw Error(ErrorNumber::ObjectErrorBase, "Decode", "Unable to decode string");
    std::size_t padding = 0;
    if (clean.size() >= 2 && clean.compare(clean.size() - 2, 2, "==") == 0) {
        padding = 2;
    } else if (!clean.empty() && clean.back() == '=') {
        padding = 1;
    }
    std::string bytes;
    bytes.reserve(clean.size() / 4 * 3);
    for (std::size_t i = 0; i < clean.size(); i += 4) {
        unsigned v = 0;
        for (std::size_t k = 0; k < 4; ++k) v = (v << 6) | decode_[static_cast<unsigned char>(clean[i + k])];
        bytes += static_cast<char>((v >> 16) & 0xFF);
        bytes += static_cast<char>((v >> 8) & 0xFF);
        bytes += static_cast<char>(v & 0xFF);
    }
    bytes.resize(bytes.size() - padding);
    return Text::FromWindows1252(bytes);
}

}  // namespace meridex
