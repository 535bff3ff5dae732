#pragma once

#include <cstdint>
#include <memory>

#include "base/Text.h"
#include "base/Value.h"

/// The part of ADO that the tool uses: a connection with provider properties, record sets opened with a statement's
/// text, fields by name. These are pure interfaces; the ConnectionFactory decides which engine is behind them.
///
/// Names are ADO's own. Every operation may throw base::RuntimeError with ADO's or the provider's number: 3021 no
/// current row, 3251 not updatable, 3265 no such name, 3704 closed, 3705 already open, 3706 no such provider. All
/// objects must be used on the thread that made them.
namespace ado {

/// States of connections and record sets. They form a bit mask; the tool uses only these.
inline constexpr std::int32_t adStateClosed = 0;
inline constexpr std::int32_t adStateOpen = 1;

/// No options given.
inline constexpr std::int32_t adOptionUnspecified = -1;

enum class CursorType : std::int32_t { adOpenForwardOnly = 0, adOpenKeyset = 1, adOpenDynamic = 2, adOpenStatic = 3 };
enum class LockType : std::int32_t {
    adLockReadOnly = 1,
    adLockPessimistic = 2,
    adLockOptimistic = 3,
    adLockBatchOptimistic = 4
};

/// A property of a provider, such as "Data Source".
class Property {
public:
    virtual ~Property() = default;
    virtual base::Value Value() const = 0;
    /// @throws 3705 if the connection is open
    virtual void setValue(const base::Value& value) = 0;
};

class Properties {
public:
    virtual ~Properties() = default;
    /// @param name  ASCII case is ignored
    /// @throws 3265 if the provider has no property with this name
    virtual Property& Item(base::TextView name) = 0;
};

/// One column of a record set; its value is always that of the current row.
class Field {
public:
    virtual ~Field() = default;
    virtual base::Text Name() const = 0;
    /// @throws 3021 if there is no current row
    virtual base::Value Value() const = 0;
    /// Converts to the column's type. @throws 3021, 3251
    virtual void setValue(const base::Value& value) = 0;
};

class Fields {
public:
    virtual ~Fields() = default;
    virtual std::int32_t Count() const = 0;
    /// Valid until the record set is closed. @throws 3265 if there is no column with this name
    virtual Field& Item(base::TextView name) = 0;
    /// @param index  from 0. @throws 3265 if there is no such column
    virtual Field& Item(std::int32_t index) = 0;
};

class Connection {
public:
    virtual ~Connection() = default;
    virtual base::Text Provider() const = 0;
    /// Must be called first: the provider's own properties exist only afterwards.
    virtual void setProvider(base::TextView name) = 0;
    virtual ado::Properties& Properties() = 0;
    virtual void Open(base::TextView connectionString, base::TextView userId, base::TextView password,
                      std::int32_t options) = 0;
    virtual std::int32_t State() const = 0;
    /// @throws 3704 on a closed connection
    virtual void Close() = 0;
    /// Runs a statement that returns no rows.
    virtual void Execute(base::TextView commandText) = 0;
};

class Recordset {
public:
    virtual ~Recordset() = default;
    /// @throws 3705 if the record set is already open
    virtual void Open(base::TextView source, Connection& connection, CursorType cursorType, LockType lockType,
                      std::int32_t options) = 0;
    virtual std::int32_t State() const = 0;
    virtual std::int32_t RecordCount() const = 0;
    virtual bool isEOF() const = 0;  // ADO's EOF; that name is a macro of the C library
    /// @throws 3021 if the current row is already after the last one
    virtual void MoveNext() = 0;
    virtual ado::Fields& Fields() = 0;
    /// Starts a pending row. @throws 3251 if the lock type is read-only
    virtual void AddNew() = 0;
    /// Stores the pending row or the changed fields of the current one.
    virtual void Update() = 0;
    /// @throws an error if a row is pending; nothing is written then
    virtual void Close() = 0;
};

/// Makes ADO's objects. Only the choice of the factory decides which engine is used.
class ConnectionFactory {
public:
    virtual ~ConnectionFactory() = default;
    virtual std::unique_ptr<Connection> createConnection() = 0;
    virtual std::unique_ptr<Recordset> createRecordset() = 0;
};

}  // namespace ado
