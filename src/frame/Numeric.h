#pragma once
#include <meridex/Export.h>
#include <cstdint>
#include <string>
#include <string_view>

/// Conversions between text and numbers with the rules the stored documents
/// were written under.
namespace meridex::Numeric {

/// The leading numeric value of a text: leading blanks skipped, an optional
/// sign, digits, a decimal part and an exponent; "&H" and "&O" prefixes read
/// hexadecimal and octal. A text that does not start with a number gives 0.
MERIDEX_EXPORT double LeadingNumber(std::string_view text);
/// True when the whole text (blanks around it allowed) is a number.
MERIDEX_EXPORT bool IsNumeric(std::string_view text);
/// Rounds to the nearest 16-bit integer, halves to the even neighbour. Throws
/// Error 6 "Overflow" outside -32768..32767 (and for NaN).
MERIDEX_EXPORT std::int16_t ToInt16(double value);
/// Rounds to the nearest 32-bit integer, halves to the even neighbour; throws
/// Error 6 on overflow.
MERIDEX_EXPORT std::int32_t ToInt32(double value);
/// Plain decimal text of an integer.
MERIDEX_EXPORT std::string ToText(long long value);

}  // namespace meridex::Numeric
