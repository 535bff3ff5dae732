#include "app/mPublic.h"

#include "accounts/cBenutzerkonten.h"
#include "app/Application.h"
#include "app/frmLogin.h"
#include "db/cDB.h"
#include "listutil/cFormularsteuerung.h"
#include "settings/cINI.h"
#include "ui/frmBenKto.h"

namespace tolv {

std::unique_ptr<cINI> objINI;
std::unique_ptr<cDB> objDB;
std::unique_ptr<cBenutzerkonten> objBenKto;
std::unique_ptr<cFormularsteuerung> objForm;
std::unique_ptr<platform::FileSystemObject> objFSO;
std::int16_t LoginOK = kFalse;

void Main() {
    auto& application = Application::instance();
    LoginOK = kFalse;
    application.loginDialog().Load();
    application.loginDialog().Show(forms::Form::Modality::Modal);
    if (LoginOK != kTrue) {
        ReleaseSharedObjects();
        return;
    }
    CreateSharedObjects();
    application.accountWindow().Load();
    application.accountWindow().Show(forms::Form::Modality::Modeless);
}

void CreateSharedObjects() {
    auto& application = Application::instance();
    const platform::Services& services = application.services();
    objFSO = services.fileSystem.createObject();
    objINI = std::make_unique<cINI>(services.settingsFile, services.programFolder);
    objDB = std::make_unique<cDB>(application.connections(), services.regional);
    objBenKto = std::make_unique<cBenutzerkonten>(application.connections(), services.regional, services.messageBoxes,
                                                  application.accountWindow().accountFields());
    objForm = std::make_unique<cFormularsteuerung>(services.windowMessages, services.regional);
}

void ReleaseSharedObjects() {
    objForm.reset();
    objINI.reset();
    objDB.reset();
    objBenKto.reset();
    objFSO.reset();
}

base::Text NullToText(const base::Value& value) {
    return base::isNull(value) ? base::Text() : Application::instance().services().regional.toText(value);
}

}  // namespace tolv
