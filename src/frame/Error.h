#pragma once
#include <meridex/Export.h>
#include <cstdint>
#include <exception>
#include <string>

namespace meridex {

// The one error type for the few failures that reach a caller: a number,
// the routine that raised it, and a description.
class MERIDEX_EXPORT Error : public std::exception {
public:
    Error(std::int32_t number, std::string source, std::string description);

    std::int32_t Number() const noexcept { return number_; }
    const std::string& Source() const noexcept { return source_; }
    const std::string& Description() const noexcept { return description_; }
    const char* what() const noexcept override { return what_.c_str(); }

private:
    std::int32_t number_;
    std::string source_;
    std::string description_;
    std::string what_;
};

// Error numbers the library raises.
namespace ErrorNumber {
inline constexpr std::int32_t Overflow = 6;
inline constexpr std::int32_t FileNotFound = 53;
inline constexpr std::int32_t PermissionDenied = 70;
inline constexpr std::int32_t PathFileAccess = 75;
inline constexpr std::int32_t PathNotFound = 76;
inline constexpr std::int32_t ObjectRequired = 424;
inline constexpr std::int32_t ItemNotFound = 5;  // "Invalid procedure call or argument"
// The first user-defined error code (the COM object-error base plus 0).
inline constexpr std::int32_t ObjectErrorBase = -2147221504;
}  // namespace ErrorNumber

}  // namespace meridex
