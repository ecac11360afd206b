#include <meridex/frame/Text.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <utility>

#include <meridex/frame/Utf8.h>
#include <meridex/platform/CaseMapping.h>

namespace meridex::Text {
namespace {

bool IsAscii(std::string_view text) {
    for (unsigned char c : text) {
        if (c >= 0x80) return false;
    }
    return true;
}

char AsciiLower(char c) { return (c >= 'A' && c <= 'Z') ? static_cast<char>(c + 32) : c; }
char AsciiUpper(char c) { return (c >= 'a' && c <= 'z') ? static_cast<char>(c - 32) : c; }

template <typename Map>
std::string MapText(std::string_view text, Map map) {
    std::string out;
    out.reserve(text.size());
    for (std::size_t pos = 0; pos < text.size();) {
        const std::size_t start = pos;
        const char32_t c = utf8::Next(text, pos);
        if (c == utf8::kInvalid) {
            out += text[start];  // bytes that are not UTF-8 pass unchanged
        } else {
            utf8::Append(out, map(c));
        }
    }
    return out;
}

// Case mapping is the operating system's, as it compares names.
char32_t Fold(char32_t c) { return CaseMapping::Lower(CaseMapping::Upper(c)); }

char32_t Upper(char32_t c) { return CaseMapping::Upper(c); }

// windows-1252 code points of bytes 0x80..0x9F (0 where the byte is unused).
constexpr std::array<char32_t, 32> kHigh = {
    0x20AC, 0,      0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0,      0x017D, 0,      0,      0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0,      0x017E, 0x0178};

}  // namespace

std::string FoldCase(std::string_view text) {
    if (IsAscii(text)) {
        std::string out(text);
        for (char& c : out) c = AsciiLower(c);
        return out;
    }
    return MapText(text, Fold);
}

std::string ToUpper(std::string_view text) {
    if (IsAscii(text)) {
        std::string out(text);
        for (char& c : out) c = AsciiUpper(c);
        return out;
    }
    return MapText(text, Upper);
}

bool EqualsIgnoreCase(std::string_view a, std::string_view b) {
    // Folding maps each character to one character, so while both texts are
    // ASCII the n-th characters meet: the first ASCII pair that differs, or an
    // ASCII text that ends before the other, decides without folding the rest.
    const std::size_t common = std::min(a.size(), b.size());
    std::size_t i = 0;
    for (; i < common; ++i) {
        const auto x = static_cast<unsigned char>(a[i]);
        const auto y = static_cast<unsigned char>(b[i]);
        if ((x | y) >= 0x80) return FoldCase(a.substr(i)) == FoldCase(b.substr(i));
        if (AsciiLower(static_cast<char>(x)) != AsciiLower(static_cast<char>(y))) return false;
    }
    return a.size() == b.size();
}

bool IsValidUtf8(std::string_view text) {
    for (std::size_t pos = 0; pos < text.size();) {
        // Eight ASCII bytes at a time: documents are mostly ASCII.
        std::uint64_t word;
        if (pos + 8 <= text.size() && (std::memcpy(&word, text.data() + pos, 8), (word & 0x8080808080808080ull) == 0)) {
            pos += 8;
        } else if (static_cast<unsigned char>(text[pos]) < 0x80) {
            ++pos;
        } else if (utf8::Next(text, pos) == utf8::kInvalid) {
            return false;
        }
    }
    return true;
}

std::string_view Trim(std::string_view text) {
    const auto blank = [](char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; };
    while (!text.empty() && blank(text.front())) text.remove_prefix(1);
    while (!text.empty() && blank(text.back())) text.remove_suffix(1);
    return text;
}

std::string_view TrimTabs(std::string_view text) {
    while (!text.empty() && text.front() == '\t') text.remove_prefix(1);
    while (!text.empty() && text.back() == '\t') text.remove_suffix(1);
    return text;
}

std::string FromWindows1252(std::string_view bytes) {
    std::string out;
    out.reserve(bytes.size());
    for (unsigned char c : bytes) {
        char32_t cp = c;
        if (c >= 0x80 && c <= 0x9F) cp = kHigh[c - 0x80] ? kHigh[c - 0x80] : c;
        utf8::Append(out, cp);
    }
    return out;
}

std::string ToWindows1252(std::string_view utf8Text) {
    std::string out;
    out.reserve(utf8Text.size());
    for (std::size_t pos = 0; pos < utf8Text.size();) {
        const std::size_t start = pos;
        const char32_t c = utf8::Next(utf8Text, pos);
        if (c == utf8::kInvalid) {
            out += utf8Text[start];  // already an 8-bit byte
        } else if (c < 0x80 || (c >= 0xA0 && c <= 0xFF)) {
            out += static_cast<char>(c);
        } else {
            char mapped = '?';
            for (std::size_t i = 0; i < kHigh.size(); ++i) {
                if (kHigh[i] == c || (kHigh[i] == 0 && c == 0x80 + i)) {
                    mapped = static_cast<char>(0x80 + i);
                    break;
                }
            }
            out += mapped;
        }
    }
    return out;
}

bool FitsWindows1252(std::string_view utf8) {
    return IsValidUtf8(utf8) && FromWindows1252(ToWindows1252(utf8)) == utf8;
}

std::string XmlWithCharacterReferences(std::string_view xml) {
    std::string out;
    out.reserve(xml.size() + xml.size() / 8);
    // Markup whose characters must stay as they are, by its opening and closing.
    static constexpr std::pair<std::string_view, std::string_view> kVerbatim[] = {
        {"<!--", "-->"}, {"<?", "?>"}, {"<![CDATA[", "]]>"}, {"<!", ">"}};
    std::size_t pos = 0;
    char quote = 0;     // inside an attribute value
    bool inTag = false;
    while (pos < xml.size()) {
        const char c = xml[pos];
        if (!inTag && c == '<') {
            bool verbatim = false;
            for (const auto& [open, close] : kVerbatim) {
                if (xml.substr(pos, open.size()) != open) continue;
                const std::size_t end = xml.find(close, pos + open.size());
                const std::size_t stop = end == std::string_view::npos ? xml.size() : end + close.size();
                out.append(xml.substr(pos, stop - pos));
                pos = stop;
                verbatim = true;
                break;
            }
            if (!verbatim) {
                inTag = true;
                out += c;
                ++pos;
            }
            continue;
        }
        if (inTag) {
            if (quote && c == quote) {
                quote = 0;
            } else if (!quote && (c == '"' || c == '\'')) {
                quote = c;
            } else if (!quote && c == '>') {
                inTag = false;
            }
        }
        if (static_cast<unsigned char>(c) < 0x80 || (inTag && !quote)) {
            out += c;
            ++pos;
            continue;
        }
        const std::size_t start = pos;
        const char32_t cp = utf8::Next(xml, pos);
        if (cp == utf8::kInvalid) {
            out.append(xml.substr(start, pos - start));
        } else {
            out += "&#" + std::to_string(static_cast<std::uint32_t>(cp)) + ";";
        }
    }
    return out;
}

}  // namespace meridex::Text
