#include <meridex/frame/UserInterface.h>

#include <meridex/frame/StderrUserInterface.h>

namespace meridex {
namespace {

std::shared_ptr<UserInterface>& Installed() {
    static std::shared_ptr<UserInterface> ui = std::make_shared<StderrUserInterface>();
    return ui;
}

}  // namespace

std::shared_ptr<UserInterface> UserInterface::Current() { return Installed(); }

void UserInterface::Install(std::shared_ptr<UserInterface> ui) {
    Installed() = ui ? std::move(ui) : std::make_shared<StderrUserInterface>();
}

const std::string& UserInterface::DefaultCaption() {
    static const std::string caption = "Meridex";
    return caption;
}

}  // namespace meridex
