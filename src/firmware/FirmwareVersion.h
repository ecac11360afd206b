#pragma once
#include <meridex/Export.h>
#include <string_view>

/// @file
/// @brief Ordering of firmware versions.
namespace meridex::FirmwareVersion {

/// Compares dotted versions part by part: numeric parts as numbers ("2.10" is
/// newer than "2.9"), other parts as text ignoring case; a missing part counts
/// as 0 ("2.1" equals "2.1.0"). Negative, zero or positive like strcmp.
MERIDEX_EXPORT int Compare(std::string_view a, std::string_view b);

}  // namespace meridex::FirmwareVersion
