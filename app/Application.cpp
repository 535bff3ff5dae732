#include "app/Application.h"

#include <cassert>

#include "app/frmLogin.h"
#include "app/mPublic.h"
#include "ui/frmBenKto.h"

namespace tolv {
namespace {

Application* theApplication = nullptr;

}  // namespace

Application::Application(const platform::Services& services, ado::ConnectionFactory& connections,
                         forms::FormHost& formHost)
    : messageBoxes_(services.messageBoxes, formHost),
      folderChooser_(services.folderChooser, formHost),
      services_{services.windowMessages, services.settingsFile, services.programFolder, services.fileSystem,
                messageBoxes_,           services.mousePointer, folderChooser_,         services.regional},
      connections_(connections),
      formHost_(formHost) {
    assert(theApplication == nullptr);
    theApplication = this;
}

Application::~Application() {
    ReleaseSharedObjects();
    theApplication = nullptr;
}

Application& Application::instance() {
    assert(theApplication != nullptr);
    return *theApplication;
}

frmLogin& Application::loginDialog() {
    if (!loginDialog_) {
        loginDialog_ = std::make_unique<frmLogin>(formHost_, services_.fileSystem, services_.messageBoxes);
    }
    return *loginDialog_;
}

frmBenKto& Application::accountWindow() {
    if (!accountWindow_) accountWindow_ = std::make_unique<frmBenKto>(formHost_, services_);
    return *accountWindow_;
}

}  // namespace tolv
