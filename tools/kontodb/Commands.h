#pragma once

#include <span>

#include "base/Text.h"
#include "tools/kontodb/Console.h"

/// The commands of kontodb, one file each. A command prints its result and raises what goes wrong:
/// UsageError if it was called wrongly, base::RuntimeError for everything else.
namespace kontodb {

constexpr int kExitSuccess = 0;
constexpr int kExitFaultsFound = 1;
constexpr int kExitError = 2;

/// @param arguments  those after the command's name
int create(std::span<const base::Text> arguments, Console& console);
int check(std::span<const base::Text> arguments, Console& console);
int exec(std::span<const base::Text> arguments, Console& console);
int import(std::span<const base::Text> arguments, Console& console);
int backup(std::span<const base::Text> arguments, Console& console);
int compact(std::span<const base::Text> arguments, Console& console);
int repair(std::span<const base::Text> arguments, Console& console);
int tables(std::span<const base::Text> arguments, Console& console);
int schema(std::span<const base::Text> arguments, Console& console);
int query(std::span<const base::Text> arguments, Console& console);

/// Runs the command that the first argument names and turns what it raises into a message on the error
/// output: "kontodb: NUMBER: description".
/// @param arguments  those of the program, without its own name
/// @return the exit code
int run(std::span<const base::Text> arguments, Console& console);

}  // namespace kontodb
