#include "Commands.h"

namespace meridex::cli {

// Filled in with the subsystem's commands.
void AddCommsCommands(CLI::App&, int&) {}

}  // namespace meridex::cli
