#pragma once

#include <string>
#include <vector>

#include "base/Value.h"

namespace jet {

struct Seed {
    std::string name;
    base::Bytes file;
};

/// Small sound files of several shapes, made by the Creator. If the environment variable TOLV_CORPUS names a folder,
/// the files in it are added.
std::vector<Seed> seeds();

/// Password of the seeds that have one.
inline constexpr base::TextView kSeedPassword = u"HwendorpliqZ";

}  // namespace jet
