#pragma once
// Windows tests only: what differs when they run under Wine.
namespace meridex::test {

// The Wine version when the tests run under Wine, else null (real Windows).
// Wine keeps files on a Linux file system, whose creation (birth) time no
// program can set, so a creation time given to a file is not kept there.
const char* WineVersion();

}  // namespace meridex::test
