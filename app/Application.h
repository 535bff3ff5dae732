#pragma once

#include <memory>

#include "app/ModalBoxes.h"
#include "platform/Platform.h"

namespace ado {
class ConnectionFactory;
}
namespace forms {
class FormHost;
}

namespace tolv {

class frmBenKto;
class frmLogin;

/// What the tool needs for one run: the machine's services, the database engine and the host of its windows, passed in
/// once; and the default instances of its two forms, made at their first use. Main and the shared objects use the one
/// Application that exists:
///
///     tolv::Application application(services, connections, formHost);
///     tolv::Main();
///     // run the message loop until the last form is unloaded
///
/// Its destructor releases the shared objects that still exist, and then the forms.
class Application {
public:
    Application(const platform::Services& services, ado::ConnectionFactory& connections, forms::FormHost& formHost);
    ~Application();
    Application(const Application&) = delete;
    Application& operator=(const Application&) = delete;

    static Application& instance();

    const platform::Services& services() const { return services_; }
    ado::ConnectionFactory& connections() const { return connections_; }
    frmLogin& loginDialog();
    frmBenKto& accountWindow();

private:
    ModalMessageBoxes messageBoxes_;
    ModalFolderChooser folderChooser_;
    platform::Services services_;
    ado::ConnectionFactory& connections_;
    forms::FormHost& formHost_;
    std::unique_ptr<frmLogin> loginDialog_;
    std::unique_ptr<frmBenKto> accountWindow_;
};

}  // namespace tolv
