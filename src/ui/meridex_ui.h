#pragma once
/// @file
/// @brief Every public header of the Meridex Qt dialogs.
#include <meridex/ui/Export.h>
#include <meridex/ui/Install.h>
#include <meridex/ui/QtUserInterface.h>
#include <meridex/ui/frame/CancellableDialog.h>
#include <meridex/ui/frame/ImageKeys.h>
#include <meridex/ui/settings/V4Dialogs.h>
#include <meridex/ui/settings/frmEnterPassword.h>
#include <meridex/ui/settings/frmProfiles.h>
#include <meridex/ui/settings/frmSetPassword.h>
#include <meridex/ui/settings/frmV4InputBox.h>
#include <meridex/ui/firmware/frmFirmware.h>
