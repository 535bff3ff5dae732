#pragma once

#include "app/Application.h"
#include "app/mPublic.h"
#include "tests/support/FakeDatabase.h"
#include "tests/support/FakeHost.h"
#include "tests/support/FakeServices.h"
#include "ui/frmBenKto.h"

namespace test {

/// The whole tool on fakes, not started yet.
struct Tool {
    Log log;
    FakeServices services{log};
    FakeDatabase database{log};
    FakeHost host{log};
    tolv::Application application{services.all(), database, host};

    tolv::frmBenKto& window() { return application.accountWindow(); }
    /// The state after the right password has been typed.
    void openAccountWindow() {
        tolv::CreateSharedObjects();
        window().Show(forms::Form::Modality::Modeless);
    }
};

}  // namespace test
