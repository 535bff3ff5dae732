#pragma once

#include <optional>

#include "base/Text.h"
#include "jet/transaction/Database.h"
#include "tools/kontodb/CommandLine.h"
#include "tools/kontodb/Console.h"

namespace kontodb {

constexpr base::TextView kPasswordOption = u"--password";
constexpr base::TextView kPasswordFileOption = u"--password-file";

/// Opens an existing file for reading. The password is that of --password, the first line of --password-file
/// (for "-" of the standard input, asked for at a terminal), or, if neither is given and the file wants one, what is
/// typed at the terminal. A file without a password accepts any.
/// @param rule  what is done about a journal that an interrupted writing left
/// @throws UsageError if both options are given; the engine's errors of opening, among them the wrong
///         password's if there is no terminal
jet::Database openProtected(const base::Text& path, const CommandLine& line, Console& console,
                            jet::LeftJournalRule rule = jet::LeftJournalRule::Refuse);

/// The password for a new file: as above, but typed twice at the terminal if neither option is given.
/// @return nothing if none is given, or nothing is typed
/// @throws UsageError if both options are given; RuntimeError if the two that were typed differ
std::optional<base::Text> newPassword(const CommandLine& line, Console& console);
/// The password of --password, or the first line of --password-file.
/// @return nothing if neither is given
/// @throws UsageError if both are
std::optional<base::Text> givenPassword(const CommandLine& line, Console& console);

/// Asks for the password at the terminal.
/// @return nothing if there is no terminal
std::optional<base::Text> askForPassword(Console& console);

}  // namespace kontodb
