#include "jet/storage/LockFile.h"

namespace jet {
namespace {

base::Text decodeName(std::string_view field) {
    field = field.substr(0, field.find('\0'));
    return base::Text(base::trimBlanks(base::fromWindows1252(field)));
}

}  // namespace

base::Text lockFilePath(base::TextView databasePath) {
    const auto dot = databasePath.find_last_of(u"./\\");
    const bool hasEnding = dot != base::TextView::npos && databasePath[dot] == u'.';
    return base::Text(hasEnding ? databasePath.substr(0, dot) : databasePath) + u".ldb";
}

FileUser decodeUserSlot(std::string_view slot) {
    constexpr std::size_t kNameBytes = kUserSlotBytes / 2;
    return {decodeName(slot.substr(0, kNameBytes)), decodeName(slot.substr(kNameBytes, kNameBytes))};
}

}  // namespace jet
