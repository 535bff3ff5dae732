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

/// A row before it is stored: the bytes of an old row, if any, and the new values. The complete row can be read,
/// measured and checked before its long values are written to pages.
class RowDraft final : public RowValues {
public:
    /// Starts with null in all columns.
    RowDraft(PageSource& source, const TableDefinition& table);

    /// Starts with an old row; its bytes are copied.
    RowDraft(PageSource& source, const TableDefinition& table, const RowView& old);

    RowDraft(const RowDraft&) = delete;
    RowDraft& operator=(const RowDraft&) = delete;
    RowDraft(RowDraft&&) = default;
    RowDraft& operator=(RowDraft&&) = delete;
    ~RowDraft() override = default;

    /// @param value  already of the type of the column
    void put(const Column& column, const base::Value& value);

    base::Value valueOf(const Column& column) const override;

    /// Whether any byte of the column differs from the old row. True for all columns of a new row.
    bool isChanged(const Column& column) const;
    bool isChanged() const;

    /// The row with its new values, for reading. Of a new long value it has only the part that matters for an index.
    /// Valid until the next change.
    /// @throws RuntimeError if the row is too long
    RowView preview();

    /// Writes all new long values, and removes the ones that they replace.
    /// @return the row as it is to be stored
    /// @throws RuntimeError if the row is too long; then nothing has been changed
    base::Bytes finish(LongValueStore& longValues);

    /// @throws RuntimeError if the row is too long, as finish()
    void checkLength() const;

    /// Removes the long values of the old row.
    void removeOldLongValues(LongValueStore& longValues) const;

    /// The old row; nothing for a new one.
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
    std::vector<Cell> cells_;                             ///< by column number; for long values their references
    std::map<std::uint16_t, base::Bytes> newLongValues_;  ///< by column number, in stored form
    base::Bytes preview_;
};

}  // namespace jet
