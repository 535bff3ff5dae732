#pragma once

#include <algorithm>
#include <map>
#include <utility>

#include "ado/Ado.h"
#include "base/RuntimeError.h"
#include "tests/support/FakeHost.h"

namespace test {

/// A table Benutzerkonto in memory behind the shape of ADO. Knows the statements that the tool sends and
/// notes each call in the log; record sets are snapshots, a changed row is pending until Update, and misuse
/// raises ADO's errors.
class FakeDatabase : public ado::ConnectionFactory {
public:
    using Row = std::vector<base::Value>;

    static constexpr std::int32_t kSyntaxError = -2147217900;
    static constexpr std::int32_t kLocked = -2147467259;

    explicit FakeDatabase(Log& log) : log_(log) {}

    std::vector<base::Text> columns{u"BenKTO_ID", u"BenKTO_Name", u"BenKTO_Pass", u"BenKTO_ServerPath",
                                    u"BenKTO_R_ProgUpdate"};
    std::vector<Row> rows;
    std::int32_t openFailure = 0;  ///< number of the error that opening the connection raises
    std::string lockedFrom;        ///< a call whose note begins so raises the error of a locked file
    std::int32_t nextId = 1;       ///< of the next row added by a record set; once taken it stays taken

    Row& add(std::int32_t id, base::TextView name, base::TextView path = u"C:\\Daten", base::Value pass = base::Null{},
             bool progUpdate = false) {
        nextId = std::max(nextId, id + 1);
        rows.push_back({id, base::Text(name), std::move(pass), base::Text(path), progUpdate});
        return rows.back();
    }

    std::unique_ptr<ado::Connection> createConnection() override { return std::make_unique<FakeConnection>(*this); }
    std::unique_ptr<ado::Recordset> createRecordset() override { return std::make_unique<FakeRecordset>(*this); }

private:
    class FakeConnection : public ado::Connection, public ado::Properties {
    public:
        explicit FakeConnection(FakeDatabase& database) : database_(database) {}
        ~FakeConnection() override { database_.note("connection released"); }
        base::Text Provider() const override { return provider_; }
        void setProvider(base::TextView name) override {
            provider_ = name;
            database_.note("provider " + base::toUtf8(name));
        }
        ado::Properties& Properties() override { return *this; }
        ado::Property& Item(base::TextView name) override {
            if (provider_.empty()) throw base::RuntimeError(3265, u"no provider, no properties");
            return properties_.try_emplace(base::Text(name), *this, name).first->second;
        }
        void Open(base::TextView text, base::TextView user, base::TextView password, std::int32_t options) override {
            database_.note("open connection '" + base::toUtf8(text) + base::toUtf8(user) + base::toUtf8(password) +
                           "' " + std::to_string(options));
            if (database_.openFailure != 0) throw base::RuntimeError(database_.openFailure, u"cannot be opened");
            state_ = ado::adStateOpen;
        }
        std::int32_t State() const override { return state_; }
        void Close() override {
            if (state_ == ado::adStateClosed) throw base::RuntimeError(3704, u"closed");
            state_ = ado::adStateClosed;
            database_.note("close connection");
        }
        void Execute(base::TextView statement) override {
            database_.note("execute " + base::toUtf8(statement));
            database_.execute(statement);
        }

    private:
        class FakeProperty : public ado::Property {
        public:
            FakeProperty(FakeConnection& connection, base::TextView name) : connection_(connection), name_(name) {}
            base::Value Value() const override { return value_; }
            void setValue(const base::Value& value) override {
                if (connection_.state_ == ado::adStateOpen) throw base::RuntimeError(3705, u"open already");
                value_ = value;
                connection_.database_.note(base::toUtf8(name_) + "=" + base::toUtf8(std::get<base::Text>(value)));
            }

        private:
            FakeConnection& connection_;
            base::Text name_;
            base::Value value_;
        };

        FakeDatabase& database_;
        base::Text provider_;
        std::map<base::Text, FakeProperty> properties_;
        std::int32_t state_ = ado::adStateClosed;
    };

    class FakeRecordset : public ado::Recordset, public ado::Fields {
    public:
        explicit FakeRecordset(FakeDatabase& database) : database_(database) {}
        void Open(base::TextView source, ado::Connection& connection, ado::CursorType cursor, ado::LockType lock,
                  std::int32_t options) override {
            if (connection.State() != ado::adStateOpen) throw base::RuntimeError(3709, u"connection closed");
            database_.note("open rows " + base::toUtf8(source) + " " + std::to_string(static_cast<int>(cursor)) + " " +
                           std::to_string(static_cast<int>(lock)) + " " + std::to_string(options));
            rows_ = database_.select(source);
            isReadOnly_ = lock == ado::LockType::adLockReadOnly;
            for (std::size_t i = 0; i < database_.columns.size(); ++i)
                fields_.emplace_back(*this, i);
            state_ = ado::adStateOpen;
        }
        std::int32_t State() const override { return state_; }
        std::int32_t RecordCount() const override { return static_cast<std::int32_t>(rows_.size()); }
        bool isEOF() const override { return current_ == rows_.size(); }
        void MoveNext() override {
            if (isEOF()) throw base::RuntimeError(3021, u"no current row");
            ++current_;
        }
        ado::Fields& Fields() override { return *this; }
        void AddNew() override {
            if (isReadOnly_) throw base::RuntimeError(3251, u"not updatable");
            database_.note("add row");
            current_ = rows_.size();
            rows_.push_back({database_.nextId++, base::Null{}, base::Null{}, base::Null{}, false});
            isPending_ = true;
        }
        void Update() override {
            if (isReadOnly_) throw base::RuntimeError(3251, u"not updatable");
            database_.note("update");
            if (isPending_) database_.store(rows_[current_]);
            isPending_ = false;
        }
        void Close() override {
            if (isPending_) throw base::RuntimeError(3219, u"a row is pending");
            state_ = ado::adStateClosed;
            database_.note("close rows");
        }
        std::int32_t Count() const override { return static_cast<std::int32_t>(fields_.size()); }
        ado::Field& Item(base::TextView name) override {
            const auto found = std::find(database_.columns.begin(), database_.columns.end(), name);
            if (found == database_.columns.end()) throw base::RuntimeError(3265, u"no such column");
            return fields_[static_cast<std::size_t>(found - database_.columns.begin())];
        }
        ado::Field& Item(std::int32_t index) override { return fields_.at(static_cast<std::size_t>(index)); }

    private:
        class FakeField : public ado::Field {
        public:
            FakeField(FakeRecordset& recordset, std::size_t column) : recordset_(recordset), column_(column) {}
            base::Text Name() const override { return recordset_.database_.columns[column_]; }
            base::Value Value() const override {
                if (recordset_.isEOF()) throw base::RuntimeError(3021, u"no current row");
                if (recordset_.isPending_) recordset_.database_.note("read " + base::toUtf8(Name()));
                return recordset_.rows_[recordset_.current_][column_];
            }
            void setValue(const base::Value& value) override {
                if (recordset_.isReadOnly_) throw base::RuntimeError(3251, u"not updatable");
                if (recordset_.isEOF()) throw base::RuntimeError(3021, u"no current row");
                recordset_.database_.note("set " + base::toUtf8(Name()));
                const auto* number = std::get_if<std::int16_t>(&value);  // for the yes/no column
                recordset_.rows_[recordset_.current_][column_] = number != nullptr ? base::Value(*number != 0) : value;
                recordset_.isPending_ = true;
            }

        private:
            FakeRecordset& recordset_;
            std::size_t column_;
        };

        FakeDatabase& database_;
        std::vector<Row> rows_;
        std::vector<FakeField> fields_;
        std::size_t current_ = 0;
        std::int32_t state_ = ado::adStateClosed;
        bool isReadOnly_ = true;
        bool isPending_ = false;
    };

    void note(const std::string& what) {
        log_.push_back(what);
        if (!lockedFrom.empty() && what.starts_with(lockedFrom)) throw base::RuntimeError(kLocked, u"locked");
    }

    std::vector<Row> select(base::TextView statement) const {
        std::vector<Row> result = rows;
        if (statement == u"SELECT * FROM Benutzerkonto ORDER BY BenKTO_Name") {
            std::stable_sort(result.begin(), result.end(),
                             [](const Row& a, const Row& b) { return nameOf(a) < nameOf(b); });
            return result;
        }
        base::TextView rest = statement;
        if (cut(rest, u"SELECT * FROM Benutzerkonto WHERE BenKTO_ID = ")) {
            const std::int32_t id = number(rest);
            std::erase_if(result, [id](const Row& row) { return idOf(row) != id; });
            return result;
        }
        if (!cut(rest, u"SELECT * FROM Benutzerkonto WHERE BenKTO_Name = '")) fail();
        const std::size_t end = rest.find(u'\'');
        if (end == base::TextView::npos) fail();
        const base::TextView name = rest.substr(0, end);
        rest.remove_prefix(end + 1);
        const std::int32_t excludedId = cut(rest, u" AND NOT BenKTO_ID = ") ? number(std::exchange(rest, {})) : 0;
        if (!rest.empty()) fail();
        std::erase_if(result, [&](const Row& row) {
            return idOf(row) == excludedId || !base::equalsIgnoringAsciiCase(nameOf(row), name);
        });
        return result;
    }
    void execute(base::TextView statement) {
        if (cut(statement, u"DELETE FROM Benutzerkonto WHERE BenKTO_ID = ")) {
            const auto isMeant = [id = number(statement)](const Row& row) { return idOf(row) == id; };
            std::erase_if(rows, isMeant);
            return;
        }
        if (!cut(statement, u"UPDATE Benutzerkonto SET BenKTO_Pass = '")) fail();
        const base::Text pass(statement.substr(0, statement.find(u'\'')));
        statement.remove_prefix(pass.size());
        if (!cut(statement, u"' WHERE BenKTO_ID = ")) fail();
        for (Row& row : rows) {
            if (idOf(row) != number(statement)) continue;
            row[2] = pass;
        }
    }
    void store(const Row& changed) {
        const auto same = [&](const Row& row) { return idOf(row) == idOf(changed); };
        const auto found = std::find_if(rows.begin(), rows.end(), same);
        if (found != rows.end()) {
            *found = changed;
        } else {
            rows.push_back(changed);
        }
    }

    [[noreturn]] static void fail() { throw base::RuntimeError(kSyntaxError, u"syntax error"); }
    /// Takes the beginning off the text. @return false if the text does not begin so
    static bool cut(base::TextView& text, base::TextView beginning) {
        if (!text.starts_with(beginning)) return false;
        text.remove_prefix(beginning.size());
        return true;
    }
    static std::int32_t number(base::TextView digits) { return std::stoi(base::toUtf8(digits)); }
    static std::int32_t idOf(const Row& row) { return std::get<std::int32_t>(row[0]); }
    static base::Text nameOf(const Row& row) {
        const auto* name = std::get_if<base::Text>(&row[1]);
        return name != nullptr ? *name : base::Text();
    }

    Log& log_;
};

}  // namespace test
