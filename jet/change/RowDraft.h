#pragma once

#include <map>
#include <optional>
#include <span>
#include <vector>

#include "base/Value.h"
#include "jet/change/LongValueStore.h"
#include "jet/expression/RowValues.h"
#include "jet/page/PageSource.h"
#include "jet/table/RowCodec.h"

namespace jet {

/// A row in the making: the bytes of an old one, or none, and values put over them. It can be looked at, measured and
/// checked as a whole while none of its long values has been given a page yet.
class RowDraft final : public RowValues {
public:
    /// A row with null in all columns.
    RowDraft(PageSource& source, const TableDefinition& table);

    /// An old row; its bytes are copied.
    RowDraft(PageSource& source, const TableDefinition& table, const RowView& old);

    RowDraft(const RowDraft&) = delete;
    RowDraft& operator=(const RowDraft&) = delete;
    RowDraft(RowDraft&&) = default;
    RowDraft& operator=(RowDraft&&) = delete;
    ~RowDraft() override = default;

    /// @param value  as the column holds it
    void put(const Column& column, const base::Value& value);

    base::Value valueOf(const Column& column) const override;

    /// Whether any byte of the column differs from the old row. True for all columns of a new one.
    bool isChanged(const Column& column) const;
    bool isChanged() const;

    /// The row for those who look at its values: of a long value that has no page yet there is as much as counts for
    /// an index. Valid until the next change.
    /// @throws RuntimeError if the row is too long
    RowView preview();

    /// Gives all new long values a place, and removes those that they replace.
    /// @return the row as it is to be stored
    /// @throws RuntimeError if the row is too long; then nothing has been changed
    base::Bytes finish(LongValueStore& longValues);

    /// Checks what finish() would.
    void checkLength() const;

    /// Removes the long values of the old row.
    void removeOldLongValues(LongValueStore& longValues) const;

    /// The old row's bytes.
    std::optional<RowView> old() const { return old_; }

private:
    base::Bytes oldLongValue(const Column& column) const;
    void removeOldLongValue(LongValueStore& longValues, const Column& column) const;
    std::size_t bytesWith(std::size_t mostInRow) const;
    std::size_t mostInRow() const;

    PageSource& source_;
    const TableDefinition& table_;
    base::Bytes oldBytes_;
    std::optional<RowView> old_;
    std::vector<Cell> cells_;                             ///< by column number; of long values the references
    std::map<std::uint16_t, base::Bytes> newLongValues_;  ///< by column number, in stored form
    base::Bytes preview_;
};

}  // namespace jet
