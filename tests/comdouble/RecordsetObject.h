#pragma once

#include <optional>

#include "tests/comdouble/AutomationObject.h"
#include "tests/comdouble/ConnectionObject.h"
#include "tests/comdouble/Cursor.h"
#include "tests/comdouble/Ref.h"

namespace comdouble {

/// A record set. Keeps the connection alive on which it is open.
class RecordsetObject final : public AutomationObject {
public:
    RecordsetObject();
    ~RecordsetObject() override;

    /// Drops what is pending.
    void closeWithConnection();

    /// For its fields. @throws base::RuntimeError 3704 if it is closed
    Cursor& opened();
    bool isOpen() const { return cursor_.has_value(); }

protected:
    VARIANT call(DISPID id, const Arguments& arguments) override;

private:
    void open(const Arguments& arguments);
    VARIANT ofOpened(DISPID id);
    void close();

    Ref<ConnectionObject> connection_;
    std::optional<Cursor> cursor_;
};

}  // namespace comdouble
