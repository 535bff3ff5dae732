#pragma once

#include "base/Value.h"
#include "jet/table/Table.h"

namespace jet {

/// The values of one row, for the evaluation of expressions.
class RowValues {
public:
    virtual ~RowValues() = default;
    virtual base::Value valueOf(const Column& column) const = 0;
};

/// The values of a stored row. Each is decoded when it is asked for.
class StoredValues final : public RowValues {
public:
    /// The source and the bytes of the row must outlive this object.
    StoredValues(PageSource& source, const RowView& row) : source_(source), row_(row) {}
    base::Value valueOf(const Column& column) const override { return jet::valueOf(source_, row_, column); }

private:
    PageSource& source_;
    RowView row_;
};

}  // namespace jet
