#pragma once
#include <meridex/Export.h>
#include <cstdint>
#include <string_view>

/// @file
/// @brief The checksums of the logger link and of firmware files.
namespace meridex::Crc {

/// CRC-32 (IEEE 802.3, the zlib one: reflected 0xEDB88320, initial and final 0xFFFFFFFF).
/// crc carries on from an earlier part: Crc32(b, Crc32(a)) == Crc32(a + b).
MERIDEX_EXPORT std::uint32_t Crc32(std::string_view bytes, std::uint32_t crc = 0) noexcept;
/// CRC-16/CCITT-FALSE (polynomial 0x1021, initial 0xFFFF, not reflected), the check of each link frame.
MERIDEX_EXPORT std::uint16_t Crc16(std::string_view bytes, std::uint16_t crc = 0xFFFF) noexcept;

}  // namespace meridex::Crc
