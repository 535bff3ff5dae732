#include <chrono>
#include <cstdio>
#include <sys/resource.h>

#include "ado/embedded/Factory.h"
#include "app/Application.h"
#include "app/mPublic.h"
#include "jet/Storage.h"
#include "tests/support/FakeHost.h"
#include "tests/support/FakeServices.h"
#include "ui/frmBenKto.h"

/// Opens the account window on a file as after the right password, without native windows, and goes through
/// some accounts: open_window FILE. Prints milliseconds and the peak memory as JSON.
int main(int count, char** arguments) {
    using Clock = std::chrono::steady_clock;
    const auto milliseconds = [](Clock::duration time) {
        return std::chrono::duration<double, std::milli>(time).count();
    };
    if (count != 2) return 2;
    const base::Text path = base::fromUtf8(arguments[1]);

    test::Log log;
    test::FakeServices services(log);
    test::FakeHost host(log);
    ado::embedded::Factory engine([&path](const base::Text&) { return jet::fileStorage(path); });
    tolv::Application application(services.all(), engine, host);

    const auto start = Clock::now();
    tolv::CreateSharedObjects();
    application.accountWindow().Show(forms::Form::Modality::Modeless);
    const auto opened = Clock::now();

    forms::ListView& list = application.accountWindow().lvwBenKto;
    const std::size_t moves = 100;
    const auto rows = static_cast<std::size_t>(list.rowCount());
    for (std::size_t i = 0; i < moves && rows > 0; ++i)
        list.userSelectedRow((i + 1) * rows / moves - 1);
    const auto moved = Clock::now();

    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    std::printf("{\"rows\": %zu, \"open_ms\": %.2f, \"move_ms\": %.4f, \"peak_kib\": %ld}\n", rows,
                milliseconds(opened - start), milliseconds(moved - opened) / moves, usage.ru_maxrss);
    application.accountWindow().Unload();
}
