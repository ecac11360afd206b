#pragma once
#include <string>
#include <string_view>

namespace meridex::Wide {

// The library speaks UTF-8; the Windows API speaks UTF-16. These convert at
// that boundary. Bytes that are not UTF-8 become U+FFFD rather than failing.
std::wstring FromUtf8(std::string_view text);
std::string ToUtf8(std::wstring_view text);

}  // namespace meridex::Wide
