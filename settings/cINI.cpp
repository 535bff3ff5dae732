#include "settings/cINI.h"

namespace tolv {
namespace {

/// Size of the reply buffer in units, including the zero at the end.
constexpr std::size_t kReplySize = 255;

}  // namespace

cINI::cINI(platform::SettingsFile& settingsFile, const platform::ProgramFolder& programFolder)
    : settingsFile_(settingsFile), programFolder_(programFolder), path_(programFolder.path() + u"\\Tolv.ini") {}

base::Text cINI::GetINIString(const INIKey& key) const {
    base::Text reply(kReplySize, u' ');
    std::size_t length = 0;
    switch (key) {
        case INIKey::ProgrammVersion:
            length = settingsFile_.read(u"MAIN", u"ProgrammVersion", u"", reply, path_);
            break;
        case INIKey::BenKtoPath:
            length = settingsFile_.read(u"SETTINGS", u"BenKtoPath", programFolder_.path(), reply, path_);
            break;
    }
    return reply.substr(0, length);
}

}  // namespace tolv
