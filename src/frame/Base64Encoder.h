#pragma once
#include <meridex/Export.h>
#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace meridex {

/// Base64 (standard alphabet, "=" padding, CR LF after every 72 characters).
/// Text is taken as windows-1252 bytes, so a text stored by the legacy
/// Windows host decodes to the same characters here.
class MERIDEX_EXPORT Base64Encoder {
public:
    /// Builds the alphabet and its decoding table.
    Base64Encoder();

    /// The Base64 text of text's windows-1252 bytes, with line breaks.
    std::string Encode(std::string_view text) const;
    /// The text the Base64 encodes (line breaks ignored). Throws Error(ObjectErrorBase, "Decode", "Unable to decode string") when
    /// the length without line breaks is not a multiple of 4.
    std::string Decode(std::string_view text) const;

private:
    std::array<char, 64> alphabet_{};
    std::array<std::uint8_t, 256> decode_{};
};

}  // namespace meridex
