#include <meridex/frame/Numeric.h>

#include <cfenv>
#include <cmath>
#include <cstdlib>

#include <meridex/frame/Error.h>
#include <meridex/frame/Text.h>

namespace meridex::Numeric {
namespace {

bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }
bool IsDigit(char c) { return c >= '0' && c <= '9'; }

// "&H" hexadecimal or "&O" octal; values that fit 16 bits read as signed
// 16-bit numbers, as the legacy host read them.
bool ReadRadix(std::string_view text, std::size_t pos, double& value) {
    if (pos + 1 >= text.size() || text[pos] != '&') return false;
    const char kind = static_cast<char>(text[pos + 1] | 0x20);
    const int base = kind == 'h' ? 16 : kind == 'o' ? 8 : 0;
    if (!base) return false;
    unsigned long long v = 0;
    for (pos += 2; pos < text.size(); ++pos) {
        const char c = static_cast<char>(text[pos] | 0x20);
        int d = IsDigit(c) ? c - '0' : (base == 16 && c >= 'a' && c <= 'f') ? c - 'a' + 10 : -1;
        if (d < 0 || d >= base) break;
        v = v * static_cast<unsigned>(base) + static_cast<unsigned>(d);
        if (v > 0xFFFFFFFFULL) v &= 0xFFFFFFFFULL;
    }
    if (v <= 0xFFFF) {
        value = static_cast<std::int16_t>(static_cast<std::uint16_t>(v));
    } else {
        value = static_cast<std::int32_t>(static_cast<std::uint32_t>(v));
    }
    return true;  // "&H" alone reads as 0
}

// Length of the longest prefix of text (from pos) that forms a decimal
// number; 0 when there is none.
std::size_t NumberLength(std::string_view text, std::size_t pos) {
    const std::size_t start = pos;
    if (pos < text.size() && (text[pos] == '+' || text[pos] == '-')) ++pos;
    std::size_t digits = 0;
    while (pos < text.size() && IsDigit(text[pos])) { ++pos; ++digits; }
    if (pos < text.size() && text[pos] == '.') {
        ++pos;
        while (pos < text.size() && IsDigit(text[pos])) { ++pos; ++digits; }
    }
    if (digits == 0) return 0;
    if (pos < text.size() && (text[pos] == 'e' || text[pos] == 'E' || text[pos] == 'd' || text[pos] == 'D')) {
        std::size_t e = pos + 1;
        if (e < text.size() && (text[e] == '+' || text[e] == '-')) ++e;
        if (e < text.size() && IsDigit(text[e])) {
            while (e < text.size() && IsDigit(text[e])) ++e;
            pos = e;
        }
    }
    return pos - start;
}

double ParseDecimal(std::string_view number) {
    std::string copy(number);
    for (char& c : copy) {
        if (c == 'd' || c == 'D') c = 'e';
    }
    return std::strtod(copy.c_str(), nullptr);
}

double RoundHalfEven(double value) {
    const int saved = std::fegetround();
    std::fesetround(FE_TONEAREST);
    const double rounded = std::nearbyint(value);
    std::fesetround(saved);
    return rounded;
}

}  // namespace

double LeadingNumber(std::string_view text) {
    // Blanks are skipped anywhere in the number, as the legacy host did.
    std::string packed;
    packed.reserve(text.size());
    for (char c : text) {
        if (!IsBlank(c)) packed += c;
    }
    double value = 0;
    if (ReadRadix(packed, 0, value)) return value;
    const std::size_t length = NumberLength(packed, 0);
    return length ? ParseDecimal(std::string_view(packed).substr(0, length)) : 0.0;
}

bool IsNumeric(std::string_view text) {
    text = Text::Trim(text);
    if (text.empty()) return false;
    if (text.size() > 2 && text[0] == '&') {
        const char kind = static_cast<char>(text[1] | 0x20);
        if (kind != 'h' && kind != 'o') return false;
        for (char c : text.substr(2)) {
            const char l = static_cast<char>(c | 0x20);
            const bool ok = kind == 'h' ? (IsDigit(c) || (l >= 'a' && l <= 'f')) : (c >= '0' && c <= '7');
            if (!ok) return false;
        }
        return true;
    }
    return NumberLength(text, 0) == text.size();
}

std::int16_t ToInt16(double value) {
    const double rounded = RoundHalfEven(value);
    if (std::isnan(rounded) || rounded < -32768.0 || rounded > 32767.0)
        throw Error(ErrorNumber::Overflow, "ToInt16", "Overflow");
    return static_cast<std::int16_t>(rounded);
}

std::int32_t ToInt32(double value) {
    const double rounded = RoundHalfEven(value);
    if (std::isnan(rounded) || rounded < -2147483648.0 || rounded > 2147483647.0)
        throw Error(ErrorNumber::Overflow, "ToInt32", "Overflow");
    return static_cast<std::int32_t>(rounded);
}

std::string ToText(long long value) { return std::to_string(value); }

}  // namespace meridex::Numeric
