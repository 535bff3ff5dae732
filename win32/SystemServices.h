#pragma once

#include "platform/Platform.h"

/// The services of platform/, implemented with Windows. The comments there apply; those here only say what the system
/// adds. If a call has only an ANSI form, its texts are converted to and from the process's ANSI code page.
namespace win32 {

class SystemWindowMessages final : public platform::WindowMessages {
public:
    std::intptr_t send(platform::WindowHandle window, std::uint32_t message, std::uintptr_t wParam,
                       std::intptr_t lParam) override;
};

class SystemSettingsFile final : public platform::SettingsFile {
public:
    std::size_t read(base::TextView section, base::TextView key, base::TextView defaultValue, base::Text& reply,
                     base::TextView filePath) override;
};

class SystemProgramFolder final : public platform::ProgramFolder {
public:
    base::Text path() const override;
};

class SystemFileSystem final : public platform::FileSystem {
public:
    std::unique_ptr<platform::FileSystemObject> createObject() override;
};

class SystemMessageBoxes final : public platform::MessageBoxes {
public:
    Answer show(base::TextView text, Buttons buttons, Icon icon) override;
};

class SystemMousePointer final : public platform::MousePointer {
public:
    void set(Shape shape) override;

private:
    void* shownBefore_ = nullptr;  ///< the cursor to restore, while the hourglass is shown
};

class SystemFolderChooser final : public platform::FolderChooser {
public:
    bool choose(platform::WindowHandle owner, base::TextView title, base::Text& buffer) override;
};

}  // namespace win32
