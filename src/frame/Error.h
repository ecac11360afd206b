#pragma once
#include <meridex/Export.h>
#include <cstdint>
#include <exception>
#include <string>

namespace meridex {

/// The one error type for the few failures that reach a caller: a number,
/// the routine that raised it, and a description.
class MERIDEX_EXPORT Error : public std::exception {
public:
    /// An error with its number (see ErrorNumber), raising routine and description.
    Error(std::int32_t number, std::string source, std::string description);

    /// The error number.
    std::int32_t Number() const noexcept { return number_; }
    /// The routine that raised it.
    const std::string& Source() const noexcept { return source_; }
    /// What went wrong, for a person.
    const std::string& Description() const noexcept { return description_; }
    /// "Error NUMBER (SOURCE): DESCRIPTION".
    const char* what() const noexcept override { return what_.c_str(); }

private:
    std::int32_t number_;
    std::string source_;
    std::string description_;
    std::string what_;
};

/// Error numbers the library raises.
namespace ErrorNumber {
inline constexpr std::int32_t Overflow = 6;            ///< A number outside the range it must fit.
inline constexpr std::int32_t FileNotFound = 53;       ///< No file at the path given.
inline constexpr std::int32_t PermissionDenied = 70;   ///< The system refused access.
inline constexpr std::int32_t PathFileAccess = 75;     ///< A file or folder could not be read or written.
inline constexpr std::int32_t PathNotFound = 76;       ///< A path that leads nowhere or names no folder to make.
inline constexpr std::int32_t ObjectRequired = 424;    ///< Something the call needs is missing (nothing loaded, no such group).
inline constexpr std::int32_t ItemNotFound = 5;  ///< An argument that names nothing ("Invalid procedure call or argument").
/// The first user-defined error code (the COM object-error base plus 0).
inline constexpr std::int32_t ObjectErrorBase = -2147221504;
}  // namespace ErrorNumber

}  // namespace meridex
