#pragma once

#include <cstdint>
#include <optional>

#include "base/ByteView.h"
#include "base/Text.h"
#include "jet/storage/PageIo.h"

/// What can be learned from page 0 although any of its bytes may be wrong.
namespace jet {

/// The key of the page encoding: that of the header, or one that differs from it in at most two bytes, or none. The
/// pages themselves tell whether a key is right.
/// @param page0  4096 bytes
/// @return nothing if the file has no page of this format under any of these keys
std::optional<std::uint32_t> findDatabaseKey(PageIo& io, base::ByteView page0);

/// Whether the file claims to be of another format and is not merely damaged.
bool isOfOtherFormat(base::ByteView page0);

struct PasswordAnswer {
    bool isAccepted = false;
    bool isCertain = true;  ///< false: the stored password is damaged, and the given one resembles it
    base::Text password;    ///< of the file, as far as it is known; empty for none
};

/// Compares the given password with the stored one. The mask of the stored one is the creation date, or, if that was
/// damaged, what the padding shows. A password that differs in a few units is accepted: they may be damaged, and the
/// password encodes nothing.
PasswordAnswer tryPassword(base::ByteView page0, base::TextView given);

}  // namespace jet
