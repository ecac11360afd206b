#include <meridex/ui/Install.h>

#include <memory>

#include <QWidget>

#include <meridex/settings/Settings.h>
#include <meridex/ui/QtUserInterface.h>
#include <meridex/ui/settings/frmProfiles.h>

namespace meridex::ui {

void InstallQtDialogs() {
    UserInterface::Install(std::make_shared<QtUserInterface>());
    Settings::setProfileEditorOpener([](Settings& settings, void* ownerWindow) {
        frmProfiles::ShowModal(settings, static_cast<QWidget*>(ownerWindow));
    });
}

}  // namespace meridex::ui
