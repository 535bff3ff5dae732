#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>

#include "base/Text.h"
#include "base/Value.h"

/// What the tool needs from the machine, one narrow interface for each service. win32/ holds the real ones,
/// tests/support fakes that behave like them.
namespace platform {

/// A native window; 0 means no window.
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
    /// Copies the setting, or the default if there is none, to the start of reply and adds a zero unit.
    /// @param reply  its size is the space available, including the zero at the end
    /// @return units copied, without the zero
    virtual std::size_t read(base::TextView section, base::TextView key, base::TextView defaultValue, base::Text& reply,
                             base::TextView filePath) = 0;
};

/// The folder of the running executable, without a separator at the end unless it is the root of a drive.
class ProgramFolder {
public:
    virtual ~ProgramFolder() = default;
    virtual base::Text path() const = 0;
};

/// The file-system object of the classic run time.
class FileSystemObject {
public:
    virtual ~FileSystemObject() = default;
    /// True for a file; false for a folder, or if nothing has this path.
    virtual bool FileExists(base::TextView path) const = 0;
};

class FileSystem {
public:
    virtual ~FileSystem() = default;
    virtual std::unique_ptr<FileSystemObject> createObject() = 0;
};

/// Modal message boxes under the application title, owned by the active window.
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
    /// @param buffer  receives the path, ended by a zero unit; unchanged if the shell gives no path
    /// @return false if the user cancelled
    virtual bool choose(WindowHandle owner, base::TextView title, base::Text& buffer) = 0;
};

/// Conversions and comparisons in the user's regional format.
class Regional {
public:
    virtual ~Regional() = default;
    /// Numbers and dates in the user's format, yes/no as "Wahr" and "Falsch"; text unchanged.
    /// @throws base::RuntimeError 94 for null, 13 for a value that has no text form
    virtual base::Text toText(const base::Value& value) const = 0;
    /// Rounds halves to the even neighbour. @throws base::RuntimeError 13 if the text is not a number, 6 out of range
    virtual std::int32_t toLong(base::TextView text) const = 0;
    /// The text as "yyyymmdd", read as a date in the user's order; nothing if it is not a date.
    virtual std::optional<base::Text> toSortableDate(base::TextView text) const = 0;
    /// Case-insensitive order of the user's language: negative if a comes first, 0 if equal, positive if b comes first.
    virtual int compare(base::TextView a, base::TextView b) const = 0;
    /// A sort key: comparing the bytes of two keys gives the same order as compare gives for the texts, and equal keys
    /// where compare gives 0. Faster if one text is compared many times.
    virtual base::Bytes sortKey(base::TextView text) const = 0;
};

/// All services together. win32/ or a test hands them to Main; the services must outlive the tool.
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
