#pragma once
#include "DeskDialogs.h"

namespace meridex::desk {

/// The desk's dialogs as the library offers them: `Settings::ShowProfileEditor`.
class LibraryDialogs : public DeskDialogs {
public:
    void ShowProfileEditor(Settings& settings, QWidget* owner) override;
};

}  // namespace meridex::desk
