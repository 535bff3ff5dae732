#pragma once

#include <cstdint>
#include <memory>

#include "base/Text.h"
#include "base/Value.h"

namespace platform {
class FileSystemObject;
}

/// Start-up, and the shared objects that live while the account window is open. It has forward declarations only, so
/// every room of the tool may include it without making a circle of rooms.
namespace tolv {

class cBenutzerkonten;
class cDB;
class cFormularsteuerung;
class cINI;

/// Caption of the account window and title of every message box and of the error box.
inline constexpr base::TextView kApplicationTitle = u"Tolv-Benutzerkontenverwaltung";
/// The administrator password, which also protects the account file.
inline constexpr base::TextView kAdministratorPassword = u"HwendorpliqZ";

/// Flags are 16-bit numbers.
inline constexpr std::int16_t kTrue = -1;
inline constexpr std::int16_t kFalse = 0;

extern std::unique_ptr<cINI> objINI;                        ///< settings
extern std::unique_ptr<cDB> objDB;                          ///< the open connection
extern std::unique_ptr<cBenutzerkonten> objBenKto;          ///< account store
extern std::unique_ptr<cFormularsteuerung> objForm;         ///< list utilities
extern std::unique_ptr<platform::FileSystemObject> objFSO;  ///< shared; nothing uses it

/// kTrue once the right administrator password has been given.
extern std::int16_t LoginOK;

/// Runs the login dialog, then opens the account file and shows the account window. Returns while that window is still
/// open. A tolv::Application must exist.
void Main();
/// In the order FSO, INI, DB (which opens the account file), BenKto, Form.
void CreateSharedObjects();
/// In the order Form, INI, DB (which closes the account file), BenKto, FSO; does nothing for those that do not exist.
void ReleaseSharedObjects();

/// Null gives empty text; anything else what cDB::GiveTextBoxValueForFORM gives.
base::Text NullToText(const base::Value& value);

}  // namespace tolv
