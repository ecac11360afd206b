#pragma once
#include <string>
#include <string_view>
#include <utility>
#include <vector>

// Internal: the lines of the companion's ports.txt.
namespace meridex {

/// The (port name, description) pairs of a ports.txt text: each line trimmed,
/// lines that are empty or lack "|" skipped, fields after a second "|" ignored.
std::vector<std::pair<std::string, std::string>> ParsePortsList(std::string_view contents);

}  // namespace meridex
