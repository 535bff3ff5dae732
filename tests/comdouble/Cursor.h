#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <vector>

#include "base/Text.h"
#include "base/Value.h"
#include "jet/RowPointer.h"
#include "jet/TableWriter.h"
#include "jet/Transaction.h"
#include "jet/sql/ResultSet.h"
#include "tests/comdouble/Session.h"

namespace comdouble {

/// The rows of a SELECT as the provider's server-side cursor gives them:
///
///     read-only lock     a snapshot
///     pessimistic lock   a keyset: which rows belong to it is settled at the opening, their values are those of the
///                        moment in which a row becomes the current one
///
/// A row of a keyset that somebody has deleted cannot be read; changing one that somebody has changed since it became
/// the current one is refused, at the first assignment and at update().
class Cursor {
public:
    enum class Lock { ReadOnly, Pessimistic };

    /// @throws base::RuntimeError: the errors of the statement, or that it is none that gives rows
    Cursor(std::shared_ptr<Session> session, base::TextView source, Lock lock);

    std::int64_t recordCount() const { return static_cast<std::int64_t>(count()); }
    bool isEof() const { return !isNewPending() && current_ >= reachable(); }
    bool isPending() const { return isNewPending() || !assignments_.empty(); }
    bool isNewPending() const { return started_.has_value(); }

    std::size_t columnCount() const { return rows_.columnCount(); }
    const jet::Column& column(std::size_t place) const { return rows_.column(place); }

    /// Stores a pending row first. @throws base::RuntimeError 3021 behind the last row
    void moveNext();
    /// @throws base::RuntimeError 3021, or that somebody has deleted the row
    base::Value value(std::size_t place) const;
    /// @throws base::RuntimeError 3251, 3021, the column's refusals, that somebody has changed or deleted the row
    void assign(std::size_t place, const base::Value& value);
    /// Stores a pending row first. @throws base::RuntimeError 3251, and what the engine says
    void addNew();
    /// If it throws, nothing is stored and the row stays pending.
    void update();

private:
    std::size_t count() const { return keys_.size(); }
    std::size_t reachable() const;
    void requireUpdatable() const;
    void fetch();
    jet::sql::ResultSet imageOf(jet::PageSource& source, const jet::Row& row) const;
    void requireUnchanged();
    void requireSame(const jet::Table& table, const jet::Row& now) const;
    jet::RowPointer store(jet::TableWriter& writer) const;

    std::shared_ptr<Session> session_;
    base::Text table_;
    Lock lock_;
    jet::sql::ResultSet rows_;
    std::vector<jet::RowPointer> keys_;
    std::size_t current_ = 0;
    std::optional<jet::sql::ResultSet> image_;  ///< the current row as it was when it became that; none if deleted
    std::optional<jet::RowOfValues> started_;   ///< a new row before anything was assigned
    std::vector<jet::Assignment> assignments_;
};

}  // namespace comdouble
