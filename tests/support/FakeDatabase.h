#pragma once

#include <map>
#include <string>
#include <utility>

#include "accounts/AccountTable.h"
#include "ado/embedded/Factory.h"
#include "app/mPublic.h"
#include "base/RuntimeError.h"
#include "jet/change/TableWriter.h"
#include "jet/sql/Execution.h"
#include "jet/sql/SelectExecutor.h"
#include "jet/transaction/Transaction.h"
#include "tests/support/FakeHost.h"
#include "tests/support/FaultyStorage.h"
#include "tests/support/SampleFile.h"
#include "tests/support/SoundFile.h"
#include "tools/kontodb/AccountFile.h"

namespace test {

/// An account file in memory, used through the embedded engine. Logs each call; a test can make calls
/// fail.
class FakeDatabase : public ado::ConnectionFactory {
public:
    using Row = std::vector<base::Value>;

    static constexpr std::int32_t kSyntaxError = -2147217900;
    static constexpr std::int32_t kLocked = -2147467259;

    explicit FakeDatabase(Log& log) : log_(log) {}
    FakeDatabase(const FakeDatabase&) = delete;
    FakeDatabase& operator=(const FakeDatabase&) = delete;
    /// Whatever was done or failed, the file must be sound.
    ~FakeDatabase() override { EXPECT_EQ(faultsIn(machine_.file(), tolv::kAdministratorPassword), ""); }

    std::string failingCall;  ///< a call whose log entry begins with this fails with kLocked

    /// The file's current rows, in the order in which they were added.
    std::vector<Row> rows() const {
        jet::Database database = open();
        auto operation = database.beginRead();
        const auto found = jet::sql::executeSelect(operation, u"SELECT * FROM Benutzerkonto");
        std::vector<Row> all(found.rowCount());
        for (std::size_t row = 0; row < all.size(); ++row)
            for (std::size_t column = 0; column < found.columnCount(); ++column)
                all[row].push_back(found.value(row, column));
        return all;
    }
    void add(std::int32_t id, base::Value name, base::Value path = base::Text(u"C:\\Daten"),
             base::Value pass = base::Null{}, bool progUpdate = false) {
        jet::Database database = open();
        jet::Transaction transaction(database);
        jet::TableWriter writer(transaction, tolv::accountTable::kTable);
        writer.insert({{{0, id}, {1, std::move(name)}, {2, std::move(pass)}, {3, std::move(path)}, {4, progUpdate}}});
        transaction.commit();
    }
    /// Executes a statement as another program would.
    void execute(base::TextView statement) {
        jet::Database database = open();
        jet::sql::execute(database, statement);
    }
    /// Removes all rows. Their numbers stay used.
    void clear() { execute(u"DELETE FROM Benutzerkonto"); }

    std::unique_ptr<ado::Connection> createConnection() override { return std::make_unique<RecordedConnection>(*this); }
    std::unique_ptr<ado::Recordset> createRecordset() override { return std::make_unique<RecordedRecordset>(*this); }

private:
    struct RecordedConnection : ado::Connection {
        explicit RecordedConnection(FakeDatabase& noted) : database(noted) {}
        RecordedConnection(const RecordedConnection&) = delete;
        RecordedConnection& operator=(const RecordedConnection&) = delete;
        ~RecordedConnection() override { database.note("connection released"); }
        base::Text Provider() const override { return engine->Provider(); }
        void setProvider(base::TextView name) override {
            database.note("provider " + base::toUtf8(name));
            engine->setProvider(name);
        }
        ado::Properties& Properties() override { return engine->Properties(); }
        void Open(base::TextView text, base::TextView user, base::TextView password, std::int32_t options) override {
            std::string note = "open ";
            for (const base::TextView name : {u"Data Source", u"Jet OLEDB:Database Password"})
                note += base::toUtf8(std::get<base::Text>(Properties().Item(name).Value())) + " ";
            note += "'" + base::toUtf8(text) + base::toUtf8(user) + base::toUtf8(password) + "' ";
            database.note(note + std::to_string(options));
            engine->Open(text, user, password, options);
        }
        std::int32_t State() const override { return engine->State(); }
        void Close() override {
            engine->Close();
            database.note("close connection");
        }
        void Execute(base::TextView statement) override {
            database.note("execute " + base::toUtf8(statement));
            engine->Execute(statement);
        }

        FakeDatabase& database;
        std::unique_ptr<ado::Connection> engine = database.engine_.createConnection();
    };

    struct RecordedRecordset : ado::Recordset, ado::Fields {
        explicit RecordedRecordset(FakeDatabase& noted) : database(noted) {}
        void Open(base::TextView source, ado::Connection& connection, ado::CursorType cursor, ado::LockType lock,
                  std::int32_t options) override {
            database.note("open rows " + base::toUtf8(source) + " " + std::to_string(static_cast<int>(cursor)) + " " +
                          std::to_string(static_cast<int>(lock)) + " " + std::to_string(options));
            engine->Open(source, *dynamic_cast<RecordedConnection&>(connection).engine, cursor, lock, options);
        }
        std::int32_t State() const override { return engine->State(); }
        std::int32_t RecordCount() const override { return engine->RecordCount(); }
        bool isEOF() const override { return engine->isEOF(); }
        void MoveNext() override { engine->MoveNext(); }
        ado::Fields& Fields() override { return *this; }
        void AddNew() override {
            database.note("add row");
            engine->AddNew();
            isPending = true;
        }
        void Update() override {
            database.note("update");
            engine->Update();
            isPending = false;
        }
        void Close() override {
            engine->Close();
            database.note("close rows");
        }
        std::int32_t Count() const override { return engine->Fields().Count(); }
        ado::Field& Item(base::TextView name) override { return recorded(engine->Fields().Item(name)); }
        ado::Field& Item(std::int32_t index) override { return recorded(engine->Fields().Item(index)); }
        ado::Field& recorded(ado::Field& field) { return fields.try_emplace(&field, *this, field).first->second; }

        /// Logs reading only while a change of the row is pending.
        struct RecordedField : ado::Field {
            RecordedField(RecordedRecordset& noted, ado::Field& field) : rows(noted), engine(field) {}
            base::Text Name() const override { return engine.Name(); }
            base::Value Value() const override {
                if (rows.isPending) rows.database.note("read " + base::toUtf8(Name()));
                return engine.Value();
            }
            void setValue(const base::Value& value) override {
                rows.database.note("set " + base::toUtf8(Name()));
                engine.setValue(value);
                rows.isPending = true;
            }

            RecordedRecordset& rows;
            ado::Field& engine;
        };

        FakeDatabase& database;
        std::unique_ptr<ado::Recordset> engine = database.engine_.createRecordset();
        std::map<ado::Field*, RecordedField> fields;
        bool isPending = false;
    };

    void note(const std::string& what) {
        log_.push_back(what);
        if (!failingCall.empty() && what.starts_with(failingCall)) throw base::RuntimeError(kLocked, u"locked");
    }

    static base::Bytes emptyFile() {
        SampleTable accounts{kontodb::accountTableDesign(), {}};
        accounts.design.columns[2].maxUnits = 255;  // so that passwords other than the tool's own fit, too
        static const base::Bytes file = sampleFile({accounts}, base::Text(tolv::kAdministratorPassword));
        return file;
    }
    jet::Database open() const {
        return jet::Database::open(machine_.storage(), tolv::kAdministratorPassword, jet::LeftJournalRule::RollBack);
    }
    Log& log_;
    Machine machine_{emptyFile()};
    ado::embedded::Factory engine_{[this](const base::Text&) { return machine_.storage(); }};
};

}  // namespace test
