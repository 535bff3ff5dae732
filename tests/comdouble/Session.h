#pragma once

#include "base/Text.h"
#include "jet/Database.h"

namespace comdouble {

/// An open file, as long as it is within reach.
class Session {
public:
    /// @throws base::RuntimeError as jet::Database::open
    Session(const base::Text& path, base::TextView password);

    /// For a statement or a change: what the faults count.
    /// @throws base::RuntimeError -2147467259 once the file is out of reach
    jet::Database& forStatement();

    /// For fetching a row of a record set that is open.
    /// @throws as forStatement()
    jet::Database& forFetch();

private:
    jet::Database database_;
    bool isOutOfReach_ = false;
};

}  // namespace comdouble
