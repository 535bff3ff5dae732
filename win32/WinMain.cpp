/// The program: connects the services, the database engine and the windows, and runs the tool with them.

#include "app/Application.h"
#include "app/mPublic.h"
#include "win32/EngineChoice.h"
#include "win32/ErrorBox.h"
#include "win32/NativeFormHost.h"
#include "win32/SystemHeaders.h"
#include "win32/SystemRegional.h"
#include "win32/SystemServices.h"

namespace {

/// Starts COM for the thread: the folder chooser needs it, and engines that are reached through COM.
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
    // An error must be caught before anything is destroyed: after the error box no code may run.
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
