#pragma once
#include <string>
#include <string_view>

namespace meridex::cli {

// A JSON string literal (quotes included) for UTF-8 text.
std::string JsonString(std::string_view text);

}  // namespace meridex::cli
