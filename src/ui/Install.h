#pragma once
#include <meridex/ui/Export.h>

namespace meridex::ui {

/// The one call a Qt application makes after creating its QApplication: installs QtUserInterface
/// as the process's user interface and connects the core's dialog entries to the Qt dialogs
/// (`Settings::ShowProfileEditor` opens `frmProfiles`, its owner window taken as a QWidget*).
MERIDEX_UI_EXPORT void InstallQtDialogs();

}  // namespace meridex::ui
