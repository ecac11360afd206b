#include "LibraryDialogs.h"

#include <meridex/settings/Settings.h>

namespace meridex::desk {

void LibraryDialogs::ShowProfileEditor(Settings& settings, QWidget* owner) {
    settings.ShowProfileEditor(owner);
}

}  // namespace meridex::desk
