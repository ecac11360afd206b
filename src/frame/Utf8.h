#pragma once
// Internal UTF-8 decoding shared by the text helpers and the XML views.
#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>

namespace meridex::utf8 {

inline constexpr char32_t kInvalid = 0xFFFFFFFF;

// A UTF-8 path as a file system path, and back. A plain std::string would be
// taken in the platform's narrow encoding, which on Windows is not UTF-8.
inline std::filesystem::path ToPath(std::string_view text) {
    return std::filesystem::path(std::u8string(text.begin(), text.end()));
}
inline std::string FromPath(const std::filesystem::path& path) {
    const std::u8string text = path.u8string();
    return std::string(text.begin(), text.end());
}

// Decodes the character at text[pos] and advances pos past it. A byte that
// does not start a well-formed sequence (overlong forms and surrogates
// included) gives kInvalid and advances by one byte.
inline char32_t Next(std::string_view text, std::size_t& pos) {
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned char c = byte(pos);
    if (c < 0x80) {
        ++pos;
        return c;
    }
    std::size_t len;
    char32_t cp;
    char32_t min;
    if ((c & 0xE0) == 0xC0) {
        len = 2; cp = c & 0x1F; min = 0x80;
    } else if ((c & 0xF0) == 0xE0) {
        len = 3; cp = c & 0x0F; min = 0x800;
    } else if ((c & 0xF8) == 0xF0) {
        len = 4; cp = c & 0x07; min = 0x10000;
    } else {
        ++pos;
        return kInvalid;
    }
    if (pos + len > text.size()) {
        ++pos;
        return kInvalid;
    }
    for (std::size_t i = 1; i < len; ++i) {
        const unsigned char cc = byte(pos + i);
        if ((cc & 0xC0) != 0x80) {
            ++pos;
            return kInvalid;
        }
        cp = (cp << 6) | (cc & 0x3F);
    }
    if (cp < min || cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF)) {
        ++pos;
        return kInvalid;
    }
    pos += len;
    return cp;
}

inline void Append(std::string& out, char32_t cp) {
    if (cp < 0x80) {
        out += static_cast<char>(cp);
    } else if (cp < 0x800) {
        out += static_cast<char>(0xC0 | (cp >> 6));
        out += static_cast<char>(0x80 | (cp & 0x3F));
    } else if (cp < 0x10000) {
        out += static_cast<char>(0xE0 | (cp >> 12));
        out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (cp & 0x3F));
    } else {
        out += static_cast<char>(0xF0 | (cp >> 18));
        out += static_cast<char>(0x80 | ((cp >> 12) & 0x3F));
        out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (cp & 0x3F));
    }
}

}  // namespace meridex::utf8
