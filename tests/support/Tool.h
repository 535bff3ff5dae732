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
    using Commands = tolv::Application::Commands;

    explicit Tool(Commands commands = Commands::Available) : application(services.all(), database, host, commands) {}

    Log log;
    FakeServices services{log};
    FakeDatabase database{log};
    FakeHost host{log};
    tolv::Application application;

    tolv::frmBenKto& window() { return application.accountWindow(); }
    /// As after the right password.
    void openAccountWindow() {
        tolv::CreateSharedObjects();
        window().Show(forms::Form::Modality::Modeless);
    }
};

}  // namespace test
