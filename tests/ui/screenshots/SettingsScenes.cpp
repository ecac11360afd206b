// The settings dialogs: the three small dialogs and the profile editor, unlocked and locked.
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QTreeWidget>

#include <meridex/frame/RecordingUserInterface.h>
#include <meridex/settings/Settings.h>
#include <meridex/settings/V4StandardProfiles.h>
#include <meridex/ui/settings/frmEnterPassword.h>
#include <meridex/ui/settings/frmProfiles.h>
#include <meridex/ui/settings/frmSetPassword.h>
#include <meridex/ui/settings/frmV4InputBox.h>

#include "Scene.h"

using namespace meridex;
using namespace meridex::ui;

namespace {

// A settings document as a field office keeps it: the three standard profiles and two crews.
std::unique_ptr<Settings> SampleSettings(bool unlocked) {
    auto s = std::make_unique<Settings>();
    s->Profiles().Add(V4StandardProfiles::GetDefaultAdministratorProfile());
    s->Profiles().Add(V4StandardProfiles::GetDefaultProfile());
    s->Profiles().Add(V4StandardProfiles::GetDefaultLockdownProfile());
    for (const char* crew : {"North Crew", "Hydrometric Survey"}) {
        const Profile profile = V4StandardProfiles::GetDefaultProfile();
        profile.setKey(crew);
        s->Profiles().Add(profile);
    }
    s->setCurrentProfile(s->Profiles().Item("North Crew"));
    s->SetBoolean("PROFILES_UNLOCKED", unlocked, true);
    return s;
}

// An editor that owns the settings it shows.
class SceneEditor : public frmProfiles {
public:
    explicit SceneEditor(bool unlocked)
        : frmProfiles(std::make_shared<RecordingUserInterface>()), settings_(SampleSettings(unlocked)) {
        setV4Settings(settings_.get());
    }

private:
    std::unique_ptr<Settings> settings_;
};

std::unique_ptr<QWidget> Editor(bool unlocked) { return std::make_unique<SceneEditor>(unlocked); }

}  // namespace

MERIDEX_SCENE("frmProfiles") { return Editor(true); }

MERIDEX_SCENE("frmProfiles-locked") { return Editor(false); }

MERIDEX_SCENE("frmV4InputBox") {
    auto form = std::make_unique<frmV4InputBox>();
    form->setWindowTitle("New Profile");
    form->lblPrompt->setText("Enter new profile name");
    form->txtInput->setText("Night Shift");
    return form;
}

MERIDEX_SCENE("frmSetPassword") {
    auto form = std::make_unique<frmSetPassword>();
    form->txtPassword->setText("secret");
    form->txtPassword2->setText("secre");
    return form;
}

MERIDEX_SCENE("frmEnterPassword") {
    auto form = std::make_unique<frmEnterPassword>();
    form->txtPassword->setText("secret");
    return form;
}
