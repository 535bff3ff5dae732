#include "tests/comdouble/Session.h"

#include "jet/Storage.h"
#include "tests/comdouble/Refusal.h"
#include "tests/comdouble/State.h"

namespace comdouble {

Session::Session(const base::Text& path, base::TextView password)
    : database_(jet::Database::open(jet::fileStorage(path), password, jet::LeftJournalRule::RollBack)) {}

jet::Database& Session::forStatement() {
    auto& left = state().faults.statementsUntilDeath;
    if (left && *left <= 0) isOutOfReach_ = true;
    if (left && *left > 0) --*left;
    return forFetch();
}

jet::Database& Session::forFetch() {
    if (isOutOfReach_) throw outOfReach();
    return database_;
}

}  // namespace comdouble
