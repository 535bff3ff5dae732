#pragma once

#include <cstdint>
#include <optional>
#include <utility>

#include "base/ByteView.h"
#include "base/RuntimeError.h"
#include "base/Text.h"
#include "jet/RowPointer.h"

/// The engine's failures, with the numbers and the German wording that users of the original engine know.
namespace jet {

/// Numbers of the original engine's provider; programs test for them.
enum class ErrorNumber : std::int32_t {
    Unspecified = -2147467259,    ///< 80004005: opening, sharing, damage
    WrongPassword = -2147217843,  ///< 80040E4D
    RowChanged = -2147217864,     ///< 80040E38
    MissingTable = -2147217865,   ///< 80040E37
    RowDeleted = -2147217885,     ///< 80040E23
    NotUpdated = -2147217887,     ///< 80040E21
    ReadOnly = -2147217911,       ///< 80040E09
    TypeMismatch = -2147217913,   ///< 80040E07
    FieldTooSmall = -2147217833,  ///< 80040E57
};

/// A name as messages show it.
base::Text quoted(base::TextView name);

/// A failure without a number of its own.
base::RuntimeError failure(base::Text description);

base::RuntimeError fileNotFound(base::TextView path);
base::RuntimeError folderNotFound(base::TextView path);
/// With the number of the classic run time.
base::RuntimeError fileExists(base::TextView path);
base::RuntimeError fileInUse(base::TextView path);
base::RuntimeError accessDenied(base::TextView path);
base::RuntimeError unknownFormat(base::TextView path);
base::RuntimeError wrongPassword();
base::RuntimeError tableNotFound(base::TextView name);

/// A change that is refused because of the file or a value. It has the number and text of statements; callers who know
/// others for some reasons can tell these apart.
class WriteRefused : public base::RuntimeError {
public:
    enum class Reason { InUse, ReadOnly, ValueDoesNotFit, RuleViolated };

    WriteRefused(Reason reason, ErrorNumber number, base::Text description)
        : RuntimeError(static_cast<std::int32_t>(number), std::move(description)), reason_(reason) {}

    Reason reason() const noexcept { return reason_; }

private:
    Reason reason_;
};

/// @param user  the user who holds the file, if known; if empty, the text names the file instead
WriteRefused lockedByUser(base::TextView path, base::TextView user, base::TextView computer);
WriteRefused readOnly();
base::RuntimeError fileTooLarge();
base::RuntimeError diskFull();

/// A journal was found by somebody who may not write: the file may be half written.
base::RuntimeError journalLeft(base::TextView path, base::TextView journalPath);

/// The journal must not be applied.
/// @param why  continues the sentence "... das Journal '...' "
base::RuntimeError journalRefused(base::TextView path, base::TextView journalPath, base::TextView why);

/// The file is whole, but its journal can neither be deleted nor emptied.
base::RuntimeError journalStays(base::TextView path, base::TextView journalPath);

/// The disk or the network failed during the work.
/// @param systemError  the error number of the operating system
base::RuntimeError deviceFailed(base::TextView path, std::int64_t systemError);

/// The file breaks the rules of its format.
/// @param found  a German sentence without full stop that says what was found there
base::RuntimeError damaged(PageNumber page, base::TextView found);

/// The same for a row: the sentence names its page and slot.
base::RuntimeError damagedRow(RowPointer row, base::TextView found);

/// The text of a damage error after its opening words: "Seite 5, Zeile 3: ...".
/// @return nothing if the error is of another kind (the disk, another program)
std::optional<base::Text> damageOf(const base::RuntimeError& error);

/// Runs a decoding step. A read outside the available bytes becomes damage of that page.
template <typename Decode>
decltype(auto) onPage(PageNumber page, Decode&& decode) {
    try {
        return std::forward<Decode>(decode)();
    } catch (const base::ByteRangeError& error) {
        throw damaged(page, u"Die Daten reichen über ihr Ende hinaus (Byte " + base::decimal(error.offsetBytes) +
                                u" von " + base::decimal(error.sizeBytes) + u")");
    }
}

}  // namespace jet
