#include "DialogCommand.h"

namespace meridex::dialogs {

std::vector<DialogCommand>& Commands() {
    static std::vector<DialogCommand> commands;
    return commands;
}

}  // namespace meridex::dialogs
