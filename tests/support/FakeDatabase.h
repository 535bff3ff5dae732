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

/// An account file in memory, used through the embedded engine. Notes each call in the log; calls that a test names
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

    std::int32_t openFailure = 0;  ///< number of the error that opening the connection raises
    std::string lockedFrom;        ///< a call whose note begins with this raises the error of a locked file

    /// The file's present rows, in the order in which they were added.
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
    /// Removes all rows. Their numbers stay used.
    void clear() {
        jet::Database database = open();
        jet::sql::execute(database, u"DELETE FROM Benutzerkonto");
    }

    std::unique_ptr<ado::Connection> createConnection() override {
        return std::make_unique<RecordedConnection>(*this, engine_.createConnection());
    }
    std::unique_ptr<ado::Recordset> createRecordset() override {
        return std::make_unique<RecordedRecordset>(*this, engine_.createRecordset());
    }

private:
    class RecordedConnection : public ado::Connection, public ado::Properties {
    public:
        RecordedConnection(FakeDatabase& database, std::unique_ptr<ado::Connection> engine)
            : database_(database), engine_(std::move(engine)) {}
        RecordedConnection(const RecordedConnection&) = delete;
        RecordedConnection& operator=(const RecordedConnection&) = delete;
        ~RecordedConnection() override { database_.note("connection released"); }
        base::Text Provider() const override { return engine_->Provider(); }
        void setProvider(base::TextView name) override {
            database_.note("provider " + base::toUtf8(name));
            engine_->setProvider(name);
        }
        ado::Properties& Properties() override { return *this; }
        ado::Property& Item(base::TextView name) override {
            ado::Property& property = engine_->Properties().Item(name);
            return properties_.try_emplace(base::Text(name), database_, property, name).first->second;
        }
        void Open(base::TextView text, base::TextView user, base::TextView password, std::int32_t options) override {
            database_.note("open connection '" + base::toUtf8(text) + base::toUtf8(user) + base::toUtf8(password) +
                           "' " + std::to_string(options));
            if (database_.openFailure != 0) throw base::RuntimeError(database_.openFailure, u"cannot be opened");
            engine_->Open(text, user, password, options);
        }
        std::int32_t State() const override { return engine_->State(); }
        void Close() override {
            engine_->Close();
            database_.note("close connection");
        }
        void Execute(base::TextView statement) override {
            database_.note("execute " + base::toUtf8(statement));
            engine_->Execute(statement);
        }

        ado::Connection& engine() { return *engine_; }

    private:
        class RecordedProperty : public ado::Property {
        public:
            RecordedProperty(FakeDatabase& database, ado::Property& engine, base::TextView name)
                : database_(database), engine_(engine), name_(base::toUtf8(name)) {}
            base::Value Value() const override { return engine_.Value(); }
            void setValue(const base::Value& value) override {
                engine_.setValue(value);
                database_.note(name_ + "=" + base::toUtf8(std::get<base::Text>(value)));
            }

        private:
            FakeDatabase& database_;
            ado::Property& engine_;
            std::string name_;
        };

        FakeDatabase& database_;
        std::unique_ptr<ado::Connection> engine_;
        std::map<base::Text, RecordedProperty> properties_;
    };

    class RecordedRecordset : public ado::Recordset, public ado::Fields {
    public:
        RecordedRecordset(FakeDatabase& database, std::unique_ptr<ado::Recordset> engine)
            : database_(database), engine_(std::move(engine)) {}
        void Open(base::TextView source, ado::Connection& connection, ado::CursorType cursor, ado::LockType lock,
                  std::int32_t options) override {
            database_.note("open rows " + base::toUtf8(source) + " " + std::to_string(static_cast<int>(cursor)) + " " +
                           std::to_string(static_cast<int>(lock)) + " " + std::to_string(options));
            engine_->Open(source, dynamic_cast<RecordedConnection&>(connection).engine(), cursor, lock, options);
        }
        std::int32_t State() const override { return engine_->State(); }
        std::int32_t RecordCount() const override { return engine_->RecordCount(); }
        bool isEOF() const override { return engine_->isEOF(); }
        void MoveNext() override { engine_->MoveNext(); }
        ado::Fields& Fields() override { return *this; }
        void AddNew() override {
            database_.note("add row");
            engine_->AddNew();
            isPending_ = true;
        }
        void Update() override {
            database_.note("update");
            engine_->Update();
            isPending_ = false;
        }
        void Close() override {
            engine_->Close();
            database_.note("close rows");
        }
        std::int32_t Count() const override { return engine_->Fields().Count(); }
        ado::Field& Item(base::TextView name) override { return recorded(engine_->Fields().Item(name)); }
        ado::Field& Item(std::int32_t index) override { return recorded(engine_->Fields().Item(index)); }

    private:
        class RecordedField : public ado::Field {
        public:
            RecordedField(RecordedRecordset& rows, ado::Field& engine) : rows_(rows), engine_(engine) {}
            base::Text Name() const override { return engine_.Name(); }
            base::Value Value() const override {
                if (rows_.isPending_) rows_.database_.note("read " + base::toUtf8(Name()));
                return engine_.Value();
            }
            void setValue(const base::Value& value) override {
                rows_.database_.note("set " + base::toUtf8(Name()));
                engine_.setValue(value);
                rows_.isPending_ = true;
            }

        private:
            RecordedRecordset& rows_;
            ado::Field& engine_;
        };

        ado::Field& recorded(ado::Field& field) { return fields_.try_emplace(&field, *this, field).first->second; }

        FakeDatabase& database_;
        std::unique_ptr<ado::Recordset> engine_;
        std::map<ado::Field*, RecordedField> fields_;
        bool isPending_ = false;
    };

    void note(const std::string& what) {
        log_.push_back(what);
        if (!lockedFrom.empty() && what.starts_with(lockedFrom)) throw base::RuntimeError(kLocked, u"locked");
    }

    static base::Bytes emptyFile() {
        static const base::Bytes file = [] {
            SampleTable accounts{kontodb::accountTableDesign(), {}};
            accounts.design.columns[2].maxUnits = 255;  // so that passwords other than the tool's own fit, too
            return sampleFile({accounts}, base::Text(tolv::kAdministratorPassword));
        }();
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
