#pragma once

#include <cstdint>
#include <optional>
#include <utility>

#include "base/ByteView.h"
#include "base/RuntimeError.h"
#include "base/Text.h"
#include "jet/RowPointer.h"

/// The failures of the engine, with the numbers and the German wording that users of the original engine know.
namespace jet {

/// Numbers of the original engine's provider; programs test for them.
enum class ErrorNumber : std::int32_t {
    Unspecified = -2147467259,    ///< 80004005: opening, sharing, damage
    WrongPassword = -2147217843,  ///< 80040E4D
    MissingTable = -2147217865,   ///< 80040E37
    NotUpdated = -2147217887,     ///< 80040E21
    ReadOnly = -2147217911,       ///< 80040E09
    TypeMismatch = -2147217913,   ///< 80040E07
    FieldTooSmall = -2147217833,  ///< 80040E57
};

/// A name as the messages show it.
base::Text quoted(base::TextView name);

/// A failure without a number of its own.
base::RuntimeError failure(base::Text description);

base::RuntimeError fileNotFound(base::TextView path);
base::RuntimeError folderNotFound(base::TextView path);
/// With the classic run time's number.
base::RuntimeError fileExists(base::TextView path);
base::RuntimeError fileInUse(base::TextView path);
base::RuntimeError accessDenied(base::TextView path);
base::RuntimeError unknownFormat(base::TextView path);
base::RuntimeError wrongPassword();
base::RuntimeError tableNotFound(base::TextView name);

/// Who writes: the same failure has one number for record sets and another one for statements.
enum class WriteKind { Recordset, Execute };

/// @param user  who holds the file, where it is known; otherwise the text names the file
base::RuntimeError lockedByUser(WriteKind kind, base::TextView path, base::TextView user, base::TextView computer);
base::RuntimeError readOnly(WriteKind kind);
base::RuntimeError fileTooLarge();
base::RuntimeError diskFull();

/// Somebody who may not write has found a journal: the file may be half written.
base::RuntimeError journalLeft(base::TextView path, base::TextView journalPath);

/// A journal that must not be applied.
/// @param why  goes on after "... das Journal '...' "
base::RuntimeError journalRefused(base::TextView path, base::TextView journalPath, base::TextView why);

/// The file is whole, but its journal can be neither deleted nor emptied.
base::RuntimeError journalStays(base::TextView path, base::TextView journalPath);

/// The disk or the network failed under way.
/// @param systemError  the system's own number
base::RuntimeError deviceFailed(base::TextView path, std::int64_t systemError);

/// The file is not as its format wants it.
/// @param found  a German sentence without its full stop, saying what stands there
base::RuntimeError damaged(PageNumber page, base::TextView found);

/// The same for a row: the sentence names page and slot.
base::RuntimeError damagedRow(RowPointer row, base::TextView found);

/// What a damage error says behind its opening words: "Seite 5, Zeile 3: ...".
/// @return nothing if the error is of another kind (the disk, another program)
std::optional<base::Text> damageOf(const base::RuntimeError& error);

/// Runs a piece of decoding; a read outside of the bytes at hand becomes damage of that page.
template <typename Decode>
decltype(auto) onPage(PageNumber page, Decode&& decode) {
    try {
        return std::forward<Decode>(decode)();
    } catch (const base::ByteRangeError& error) {
        throw damaged(page, u"Die Daten reichen über ihr Ende hinaus (Byte " +
                                base::decimal(static_cast<std::int64_t>(error.offsetBytes)) + u" von " +
                                base::decimal(static_cast<std::int64_t>(error.sizeBytes)) + u")");
    }
}

}  // namespace jet
