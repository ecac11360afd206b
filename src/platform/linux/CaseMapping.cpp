#include <meridex/platform/CaseMapping.h>

#include <locale.h>
#include <wctype.h>

namespace meridex::CaseMapping {
namespace {

// The C.UTF-8 locale's tables, held privately so the process locale never matters.
locale_t UnicodeLocale() {
    static const locale_t locale = newlocale(LC_CTYPE_MASK, "C.UTF-8", static_cast<locale_t>(nullptr));
    return locale;
}

}  // namespace

char32_t Upper(char32_t c) {
    locale_t locale = UnicodeLocale();
    if (!locale) return c >= U'a' && c <= U'z' ? c - 32 : c;
    return static_cast<char32_t>(towupper_l(static_cast<wint_t>(c), locale));
}

char32_t Lower(char32_t c) {
    locale_t locale = UnicodeLocale();
    if (!locale) return c >= U'A' && c <= U'Z' ? c + 32 : c;
    return static_cast<char32_t>(towlower_l(static_cast<wint_t>(c), locale));
}

}  // namespace meridex::CaseMapping
