#pragma once

#include <string>

namespace jet {

/// Gives a file that was just made, and is its maker's alone, to those for whom the file at `path` is: owner, group,
/// mode and list of rights, as far as the system allows. Where it does not, fewer may use it, never more.
/// @param made  its descriptor
void copyRights(const std::string& path, int made);

}  // namespace jet
