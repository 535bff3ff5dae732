#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>

#include "base/Text.h"
#include "base/Value.h"

/// What the tool asks of the machine, one narrow interface a service. win32/ implements them for real,
/// the tests with fakes that behave.
namespace platform {

/// A native window; 0 is none.
using WindowHandle = std::uintptr_t;

/// Window messages to native controls (SendMessageA).
class WindowMessages {
public:
    virtual ~WindowMessages() = default;
    virtual std::intptr_t send(WindowHandle window, std::uint32_t message, std::uintptr_t wParam,
                               std::intptr_t lParam) = 0;
};

/// The settings-file reader of Windows (GetPrivateProfileStringA), with its rules for blanks and quotes.
class SettingsFile {
public:
    virtual ~SettingsFile() = default;
    /// Copies the setting, or the default, to the start of reply and ends it with a zero unit.
    /// @param reply  its size is the room, the terminating zero included
    /// @return units copied, without the zero
    virtual std::size_t read(base::TextView section, base::TextView key, base::TextView defaultValue, base::Text& reply,
                             base::TextView filePath) = 0;
};

/// The folder of the running executable, without trailing separator except for a drive's root.
class ProgramFolder {
public:
    virtual ~ProgramFolder() = default;
    virtual base::Text path() const = 0;
};

/// The file-system object of the classic run time.
class FileSystemObject {
public:
    virtual ~FileSystemObject() = default;
    /// True for a file, false for a folder and for nothing.
    virtual bool FileExists(base::TextView path) const = 0;
};

class FileSystem {
public:
    virtual ~FileSystem() = default;
    virtual std::unique_ptr<FileSystemObject> createObject() = 0;
};

/// Modal message boxes under the application title, owned by the window in front.
class MessageBoxes {
public:
    enum class Buttons { Ok, YesNo };
    enum class Icon { Critical, Question, Information };
    enum class Answer { Ok, Yes, No };

    virtual ~MessageBoxes() = default;
    virtual Answer show(base::TextView text, Buttons buttons, Icon icon) = 0;
};

/// The application-wide mouse pointer.
class MousePointer {
public:
    enum class Shape { Default = 0, Hourglass = 11 };

    virtual ~MousePointer() = default;
    virtual void set(Shape shape) = 0;
};

/// The shell's folder chooser in its ANSI form.
class FolderChooser {
public:
    virtual ~FolderChooser() = default;
    /// Shows the chooser for file-system folders.
    /// @param buffer  receives the path, ended by a zero unit; left as it is when the shell gives none
    /// @return false if the user cancelled
    virtual bool choose(WindowHandle owner, base::TextView title, base::Text& buffer) = 0;
};

/// Conversions and comparisons in the user's regional format.
class Regional {
public:
    virtual ~Regional() = default;
    /// Numbers and dates in the user's format, yes/no as "Wahr" and "Falsch"; text unchanged.
    /// @throws base::RuntimeError 94 for null, 13 for a value without text form
    virtual base::Text toText(const base::Value& value) const = 0;
    /// Rounds halves to the even neighbour. @throws base::RuntimeError 13 unreadable, 6 out of range
    virtual std::int32_t toLong(base::TextView text) const = 0;
    /// The text read as a date in the user's order, as "yyyymmdd"; nothing if it is no date.
    virtual std::optional<base::Text> toSortableDate(base::TextView text) const = 0;
    /// Case-insensitive order of the user's language: negative, 0 or positive.
    virtual int compare(base::TextView a, base::TextView b) const = 0;
    /// Bytes that stand, one by one, as compare says of the texts; equal where it says 0. For many
    /// comparisons of one text.
    virtual base::Bytes sortKey(base::TextView text) const = 0;
};

/// All services together, as win32/ or a test hands them to Main. The referenced services outlive the tool.
struct Services {
    WindowMessages& windowMessages;
    SettingsFile& settingsFile;
    ProgramFolder& programFolder;
    FileSystem& fileSystem;
    MessageBoxes& messageBoxes;
    MousePointer& mousePointer;
    FolderChooser& folderChooser;
    Regional& regional;
};

}  // namespace platform
