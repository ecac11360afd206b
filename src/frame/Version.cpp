#include <meridex/Version.h>

namespace meridex {

const char* VersionText() noexcept { return MERIDEX_VERSION_STRING; }

}  // namespace meridex
