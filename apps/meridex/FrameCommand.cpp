#include "Commands.h"

namespace meridex::cli {

void AddFrameCommands(CLI::App&, int&) {}

}  // namespace meridex::cli
