/// With this engine the journeys (tests/wine/journeys.py) run a second time, through COM, with the double's classes
/// instead of the system's. It is linked before the library that otherwise chooses the engine.
///
/// The file faults.txt next to the exe names the faults to make, one on each line, in UTF-8 with a tab between words;
/// without it there are none:
///
///     MEMBER NUMBER TEXT      the call fails with an exception record, for example "Connection.Open"
///     statements COUNT        this many statements succeed before the file cannot be reached any more
///
/// A message-only window of the class "comdouble" answers WM_APP with the number of objects held, or with -1 if a
/// record was not filled in or a forbidden call was made.

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "ado/com/Factory.h"
#include "tests/comdouble/AdoDouble.h"
#include "win32/EngineChoice.h"

namespace {

constexpr int kSomethingLeft = 70;

std::int32_t held() {
    const comdouble::State& now = comdouble::state();
    return now.recordsNotFilledIn == 0 && now.breaches == 0 ? static_cast<std::int32_t>(now.held.size()) : -1;
}

LRESULT CALLBACK answerWithHeld(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    return message == WM_APP ? held() : DefWindowProcW(window, message, wParam, lParam);
}

/// The window is destroyed when the thread ends.
void makeAnsweringWindow() {
    WNDCLASSW description{};
    description.lpfnWndProc = answerWithHeld;
    description.lpszClassName = L"comdouble";
    RegisterClassW(&description);
    CreateWindowW(L"comdouble", nullptr, 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr);
}

std::filesystem::path folderOfExe() {
    wchar_t path[MAX_PATH] = L"";
    GetModuleFileNameW(nullptr, path, MAX_PATH);
    return std::filesystem::path(path).parent_path();
}

void planFaults(const std::filesystem::path& plan) {
    comdouble::Faults& faults = comdouble::state().faults;
    std::ifstream file(plan, std::ios::binary);
    for (std::string line; std::getline(file, line);) {
        std::istringstream stream(line);
        std::string member, number, description;
        std::getline(std::getline(std::getline(stream, member, '\t'), number, '\t'), description);
        if (member == "statements")
            faults.statementsUntilDeath = std::stoi(number);
        else
            faults.calls[base::fromUtf8(member)] = {.scode = static_cast<SCODE>(std::stol(number)),
                                                    .description = base::fromUtf8(description)};
    }
}

/// The factory that the tool gets. If an object is still held when it is destroyed, the exit code is kSomethingLeft.
class FactoryOverDouble final : public ado::ConnectionFactory {
public:
    FactoryOverDouble() {
        planFaults(folderOfExe() / "faults.txt");
        makeAnsweringWindow();
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
