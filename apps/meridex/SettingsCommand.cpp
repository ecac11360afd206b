#include "Commands.h"

namespace meridex::cli {

// Filled in with the subsystem's commands.
void AddSettingsCommand(CLI::App&, int&) {}

}  // namespace meridex::cli
