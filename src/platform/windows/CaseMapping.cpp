#include <meridex/platform/CaseMapping.h>

#include <windows.h>

namespace meridex::CaseMapping {
namespace {

// The invariant locale's linguistic mapping, so the user's language never
// matters (no Turkish dotless i); the plain table leaves some letters out (the
// final sigma has no capital there).
char32_t Map(char32_t c, DWORD how) {
    if (c > 0x10FFFF || (c >= 0xD800 && c <= 0xDFFF)) return c;
    wchar_t in[2];
    int length = 1;
    if (c < 0x10000) {
        in[0] = static_cast<wchar_t>(c);
    } else {
        const char32_t v = c - 0x10000;
        in[0] = static_cast<wchar_t>(0xD800 + (v >> 10));
        in[1] = static_cast<wchar_t>(0xDC00 + (v & 0x3FF));
        length = 2;
    }
    wchar_t out[4] = {};
    const int got = ::LCMapStringEx(LOCALE_NAME_INVARIANT, how | LCMAP_LINGUISTIC_CASING, in, length, out, 4, nullptr, nullptr, 0);
    if (got == 1 && (out[0] < 0xD800 || out[0] > 0xDFFF)) return out[0];
    if (got == 2 && out[0] >= 0xD800 && out[0] <= 0xDBFF && out[1] >= 0xDC00 && out[1] <= 0xDFFF)
        return 0x10000 + ((static_cast<char32_t>(out[0]) - 0xD800) << 10) + (static_cast<char32_t>(out[1]) - 0xDC00);
    return c;  // a mapping that changes the length is not a simple one
}

}  // namespace

char32_t Upper(char32_t c) { return c < 0x80 ? (c >= U'a' && c <= U'z' ? c - 32 : c) : Map(c, LCMAP_UPPERCASE); }

char32_t Lower(char32_t c) { return c < 0x80 ? (c >= U'A' && c <= U'Z' ? c + 32 : c) : Map(c, LCMAP_LOWERCASE); }

}  // namespace meridex::CaseMapping
