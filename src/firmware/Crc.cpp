#include <meridex/firmware/Crc.h>

#include <array>

namespace meridex::Crc {
namespace {

constexpr std::array<std::uint32_t, 256> MakeCrc32Table() {
    std::array<std::uint32_t, 256> table{};
    for (std::uint32_t n = 0; n < 256; ++n) {
        std::uint32_t c = n;
        for (int k = 0; k < 8; ++k) c = (c & 1) ? 0xEDB88320u ^ (c >> 1) : c >> 1;
        table[n] = c;
    }
    return table;
}

constexpr std::array<std::uint16_t, 256> MakeCrc16Table() {
    std::array<std::uint16_t, 256> table{};
    for (std::uint32_t n = 0; n < 256; ++n) {
        std::uint16_t c = static_cast<std::uint16_t>(n << 8);
        for (int k = 0; k < 8; ++k) c = static_cast<std::uint16_t>((c & 0x8000) ? (c << 1) ^ 0x1021 : c << 1);
        table[n] = c;
    }
    return table;
}

constexpr auto kCrc32Table = MakeCrc32Table();
constexpr auto kCrc16Table = MakeCrc16Table();

}  // namespace

std::uint32_t Crc32(std::string_view bytes, std::uint32_t crc) noexcept {
    crc = ~crc;
    for (unsigned char b : bytes) crc = kCrc32Table[(crc ^ b) & 0xFF] ^ (crc >> 8);
    return ~crc;
}

std::uint16_t Crc16(std::string_view bytes, std::uint16_t crc) noexcept {
    for (unsigned char b : bytes)
        crc = static_cast<std::uint16_t>((crc << 8) ^ kCrc16Table[((crc >> 8) ^ b) & 0xFF]);
    return crc;
}

}  // namespace meridex::Crc
