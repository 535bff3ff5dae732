#pragma once

#include <string>
#include <vector>

#include "base/Value.h"
#include "tests/support/SampleFile.h"

namespace jet {

struct Seed {
    std::string name;
    base::Bytes file;
    base::Text table = u"Benutzerkonto";  ///< one that has an auto number
};

/// Small sound files of several shapes, made by the Creator. If the environment variable TOLV_CORPUS names a folder,
/// the files in it are added.
std::vector<Seed> seeds();

/// The table of the seed "types": a column of every type, most of them in indexes. Its names are so long that the
/// definition takes two pages.
test::SampleTable everyType();

/// The seed "related": two tables. The account table has an index of names with several leaves, and memos of all kinds.
/// The second table has a moved row, and refers to the first one. There are also a query and a hidden table of Access.
/// @param count  of accounts
base::Bytes relatedTables(std::int32_t count = 150);

/// The seed "deep": a table with indexes of three levels, in the shapes of several writers.
base::Bytes deepTrees();

/// Password of the seeds that have one.
inline constexpr base::TextView kSeedPassword = u"HwendorpliqZ";

}  // namespace jet
