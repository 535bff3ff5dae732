#pragma once

#include <memory>
#include <vector>

#include "tests/comdouble/AutomationObject.h"
#include "tests/comdouble/Ref.h"
#include "tests/comdouble/Session.h"

namespace comdouble {

class RecordsetObject;

/// A connection. Its provider is not looked at before the properties or the file are wanted; the provider's properties
/// can be put until it is open. Closing it closes its record sets and drops what is pending in them.
class ConnectionObject final : public AutomationObject {
public:
    ConnectionObject();
    ~ConnectionObject() override;

    /// The connection behind a caller's reference; null if it is none of ours.
    static ConnectionObject* of(IDispatch* object);

    /// Null while it is closed.
    const std::shared_ptr<Session>& session() const { return session_; }

    /// Record sets that are open on it; they tell their opening and their end.
    void add(RecordsetObject& recordset);
    void remove(RecordsetObject& recordset);

    /// The provider's properties, by place: the data source and the database password.
    static constexpr std::size_t kPropertyCount = 2;
    static base::TextView propertyName(std::size_t place);
    const base::Text& property(std::size_t place) const { return properties_[place]; }
    /// @throws base::RuntimeError 3705 on an open connection
    void setProperty(std::size_t place, base::Text value);
    bool hasProvider() const;

protected:
    VARIANT call(DISPID id, const Arguments& arguments) override;
    void put(DISPID id, const VARIANT& value) override;

private:
    VARIANT properties();
    void open(const Arguments& arguments);
    void close();
    VARIANT execute(const Arguments& arguments);

    base::Text provider_ = u"MSDASQL";
    base::Text properties_[kPropertyCount];
    std::shared_ptr<Session> session_;
    std::vector<RecordsetObject*> recordsets_;
};

}  // namespace comdouble
