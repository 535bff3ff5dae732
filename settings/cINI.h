#pragma once

#include <cstdint>

#include "base/Text.h"
#include "platform/Platform.h"

namespace tolv {

/// The settings that Tolv.ini may hold.
enum class INIKey : std::int32_t {
    ProgrammVersion,  ///< [MAIN] ProgrammVersion, by default empty; nothing uses it
    BenKtoPath        ///< [SETTINGS] BenKtoPath, the account file's folder; by default the program folder
};

/// Read-only access to the settings file Tolv.ini in the program folder. A missing file, section or key is not an
/// error: the default applies.
class cINI {
public:
    /// Does not check whether the file exists.
    cINI(platform::SettingsFile& settingsFile, const platform::ProgramFolder& programFolder);

    /// The setting's value or its default; empty text for a key that is not in the table. At most 254 characters; the
    /// rest is cut off.
    base::Text GetINIString(const INIKey& key) const;

private:
    platform::SettingsFile& settingsFile_;
    const platform::ProgramFolder& programFolder_;
    base::Text path_;
};

}  // namespace tolv
