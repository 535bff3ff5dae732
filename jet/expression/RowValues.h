#pragma once

#include "base/Value.h"
#include "jet/table/Table.h"

namespace jet {

/// The values of one row, as expressions ask for them.
class RowValues {
public:
    virtual ~RowValues() = default;
    virtual base::Value valueOf(const Column& column) const = 0;
};

/// The values of a row as it lies in the file, decoded when they are asked for.
class StoredValues final : public RowValues {
public:
    /// The bytes of the row must outlive the values, as must the source.
    StoredValues(PageSource& source, const RowView& row) : source_(source), row_(row) {}
    base::Value valueOf(const Column& column) const override { return jet::valueOf(source_, row_, column); }

private:
    PageSource& source_;
    RowView row_;
};

}  // namespace jet
