#pragma once

#include <string>

namespace jet {

/// Gives a new file, which only its maker can use, the rights of the file at `path`: owner, group, mode and list of
/// rights, as far as the system allows. If the system does not allow it all, fewer users have access, never more.
/// @param made  descriptor of the new file
void copyRights(const std::string& path, int made);

}  // namespace jet
