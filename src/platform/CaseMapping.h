#pragma once

// Internal: the operating system's simple case mapping of one Unicode
// character (a character without another case maps to itself), implemented in
// each platform's folder, so that names compare as the system compares them.
namespace meridex::CaseMapping {

char32_t Upper(char32_t c);
char32_t Lower(char32_t c);

}  // namespace meridex::CaseMapping
