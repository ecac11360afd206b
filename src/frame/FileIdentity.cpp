#include <meridex/frame/FileIdentity.h>

#include <functional>
#include <string_view>

namespace meridex {

std::uint64_t FileIdentity::HashOf(const char* data, std::uint64_t size) noexcept {
    return std::hash<std::string_view>{}(std::string_view(data, static_cast<std::size_t>(size)));
}

}  // namespace meridex
