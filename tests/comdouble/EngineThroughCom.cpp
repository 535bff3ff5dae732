/// The engine of the tool that the journeys go through a second time: reached through COM, with the double's classes
/// in the place of the system's. Linked before the library that would choose an engine.
///
/// What is to go wrong stands in a file beside the exe (FaultPlan.h). How many objects are held, a message-only window
/// of the class "comdouble" tells whoever sends it a WM_APP: -1 if besides somebody owes a record or has made a call
/// that no caller may make.

#include <cstdlib>

#include "ado/com/Factory.h"
#include "tests/comdouble/AdoDouble.h"
#include "tests/comdouble/FaultPlan.h"
#include "win32/EngineChoice.h"

namespace {

constexpr int kSomethingLeft = 70;

std::int32_t held() {
    const comdouble::State& now = comdouble::state();
    return now.recordsNotFilledIn == 0 && now.breaches == 0 ? static_cast<std::int32_t>(now.held.size()) : -1;
}

LRESULT CALLBACK tellHeld(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    return message == WM_APP ? held() : DefWindowProcW(window, message, wParam, lParam);
}

/// Gone with the thread.
void makeTellingWindow() {
    WNDCLASSW description{};
    description.lpfnWndProc = tellHeld;
    description.lpszClassName = L"comdouble";
    RegisterClassW(&description);
    CreateWindowW(L"comdouble", nullptr, 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr);
}

std::filesystem::path folderOfExe() {
    wchar_t path[MAX_PATH] = L"";
    GetModuleFileNameW(nullptr, path, MAX_PATH);
    return std::filesystem::path(path).parent_path();
}

/// What the tool gets. With the end of its last user nothing may be held any more; the exit code tells.
class FactoryOverDouble final : public ado::ConnectionFactory {
public:
    FactoryOverDouble() {
        comdouble::state().faults = comdouble::faultsOf(folderOfExe() / "faults.txt");
        makeTellingWindow();
    }
    FactoryOverDouble(const FactoryOverDouble&) = delete;
    FactoryOverDouble& operator=(const FactoryOverDouble&) = delete;
    ~FactoryOverDouble() override {
        if (held() != 0) std::_Exit(kSomethingLeft);
    }

    std::unique_ptr<ado::Connection> createConnection() override { return factory_.createConnection(); }
    std::unique_ptr<ado::Recordset> createRecordset() override { return factory_.createRecordset(); }

private:
    comdouble::Registration registration_;
    ado::com::Factory factory_{{comdouble::kConnectionClass, comdouble::kRecordsetClass}};
};

}  // namespace

std::unique_ptr<ado::ConnectionFactory> win32::chooseEngine() {
    return std::make_unique<FactoryOverDouble>();
}
