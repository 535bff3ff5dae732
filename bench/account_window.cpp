#include <chrono>
#include <cstdio>
#include <ctime>
#include <functional>
#include <sys/resource.h>

#include "accounts/cBenutzerkonten.h"
#include "ado/embedded/Factory.h"
#include "app/Application.h"
#include "app/mPublic.h"
#include "jet/storage/Storage.h"
#include "tests/support/FakeHost.h"
#include "tests/support/FakeServices.h"
#include "ui/frmBenKto.h"

namespace {

double milliseconds(const std::function<void()>& work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
}

}  // namespace

/// Does with the account window what a user does, without native windows: account_window FILE. Writes to the file,
/// which must have at least one account. Prints milliseconds and the peak memory as JSON.
int main(int count, char** arguments) {
    if (count != 2) return 2;
    const base::Text path = base::fromUtf8(arguments[1]);

    test::Log log;
    test::FakeServices services(log);
    test::FakeHost host(log);
    ado::embedded::Factory engine([&path](const base::Text&) { return jet::fileStorage(path); });
    tolv::Application application(services.all(), engine, host);
    tolv::frmBenKto& window = application.accountWindow();
    forms::ListView& list = window.lvwBenKto;

    const double open = milliseconds([&] {
        tolv::CreateSharedObjects();
        window.Show(forms::Form::Modality::Modeless);
    });
    const auto rows = static_cast<std::size_t>(list.rowCount());
    if (rows == 0) return 1;

    const std::size_t moves = 100;
    const double move = milliseconds([&] {
        for (std::size_t i = 0; i < moves; ++i)
            list.userSelectedRow((i + 1) * rows / moves - 1);
    });
    const std::clock_t refillStart = std::clock();
    const double refill = milliseconds([&] { tolv::objBenKto->ShowBenKto(list); });
    const double refillProcessor = 1000.0 * static_cast<double>(std::clock() - refillStart) / CLOCKS_PER_SEC;

    list.userSelectedRow(rows / 2);
    const auto save = [&](base::TextView serverPath) {
        window.txtPathGlobal.userTyped(serverPath);
        window.userPressedKey(u'S', forms::Form::kCtrlMask);
    };
    const double saved = milliseconds([&] { save(u"C:\\eins"); });
    // A list is not sorted before its order is read, which the native list does when it paints.
    const double sort = milliseconds([&] {
        list.userClickedColumn(2);
        list.cellAt(0, 1);
    });
    const double savedSorted = milliseconds([&] { save(u"C:\\zwei"); });

    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    std::printf(
        "{\"rows\": %zu, \"open\": %.2f, \"move\": %.4f, \"refill\": %.2f, \"refill_processor\": %.2f, "
        "\"sort\": %.2f, \"save\": %.2f, \"save_sorted\": %.2f, \"peak_kib\": %ld}\n",
        rows, open, move / moves, refill, refillProcessor, sort, saved, savedSorted, usage.ru_maxrss);
    window.Unload();
}
