#pragma once

#include "forms/FormHost.h"
#include "platform/Platform.h"

/// The machine's boxes as the tool uses them: while one is open, the windows ignore the user. The system disables a
/// box's owner, but that blocks only mouse and keyboard. Another program's request to close the window, the end of the
/// session or an automation tool could still reach the window, in the middle of a command.
namespace tolv {

class ModalMessageBoxes final : public platform::MessageBoxes {
public:
    ModalMessageBoxes(platform::MessageBoxes& boxes, forms::FormHost& host) : boxes_(boxes), host_(host) {}

    Answer show(base::TextView text, Buttons buttons, Icon icon) override {
        const forms::FormHost::OpenBox open(host_);
        return boxes_.show(text, buttons, icon);
    }

private:
    platform::MessageBoxes& boxes_;
    forms::FormHost& host_;
};

class ModalFolderChooser final : public platform::FolderChooser {
public:
    ModalFolderChooser(platform::FolderChooser& chooser, forms::FormHost& host) : chooser_(chooser), host_(host) {}

    bool choose(platform::WindowHandle owner, base::TextView title, base::Text& buffer) override {
        const forms::FormHost::OpenBox open(host_);
        return chooser_.choose(owner, title, buffer);
    }

private:
    platform::FolderChooser& chooser_;
    forms::FormHost& host_;
};

}  // namespace tolv
