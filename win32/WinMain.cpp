/// The program: puts the services, the database engine and the windows together and runs the tool on them.

#include "app/Application.h"
#include "app/mPublic.h"
#include "win32/EngineChoice.h"
#include "win32/ErrorBox.h"
#include "win32/NativeFormHost.h"
#include "win32/SystemHeaders.h"
#include "win32/SystemRegional.h"
#include "win32/SystemServices.h"

namespace {

/// The thread's COM, for the folder chooser and for engines that are reached through it.
class ComApartment {
public:
    ComApartment() : started_(SUCCEEDED(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED))) {}
    ComApartment(const ComApartment&) = delete;
    ComApartment& operator=(const ComApartment&) = delete;
    ~ComApartment() {
        if (started_) CoUninitialize();
    }

private:
    bool started_;
};

void runTool() {
    const ComApartment apartment;
    win32::SystemWindowMessages windowMessages;
    win32::SystemSettingsFile settingsFile;
    win32::SystemProgramFolder programFolder;
    win32::SystemFileSystem fileSystem;
    win32::SystemMessageBoxes messageBoxes;
    win32::SystemMousePointer mousePointer;
    win32::SystemFolderChooser folderChooser;
    win32::SystemRegional regional;
    const auto connections = win32::chooseEngine();
    win32::NativeFormHost host;

    tolv::Application application(
        {windowMessages, settingsFile, programFolder, fileSystem, messageBoxes, mousePointer, folderChooser, regional},
        *connections, host);
    // Caught before anything is taken down: after the error box nothing runs any more.
    win32::atBoundary([] { tolv::Main(); });
    host.run();
}

}  // namespace

int WINAPI wWinMain(HINSTANCE, HINSTANCE, PWSTR, int) {
    const INITCOMMONCONTROLSEX controls{sizeof controls, ICC_LISTVIEW_CLASSES | ICC_STANDARD_CLASSES};
    InitCommonControlsEx(&controls);
    win32::coverTermination();
    win32::atBoundary([] { runTool(); });
    return 0;
}
