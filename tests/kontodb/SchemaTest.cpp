#include "jet/storage/PageIo.h"
#include "tests/kontodb/Command.h"
#include "tests/support/MemoryPageStore.h"
#include "tests/support/RelatedTables.h"
#include "tests/support/SampleFile.h"
#include "tools/kontodb/TableSchema.h"

namespace kontodb {
namespace {

class SchemaOfFile : public Command {
protected:
    SchemaOfFile() {
        test::SampleTable visits;
        visits.design.name = u"Besuch am Tag";
        jet::ColumnDesign amount{u"Betrag", jet::ColumnType::Numeric};
        amount.precision = 10;
        amount.scale = 2;
        jet::ColumnDesign account{u"Konto", jet::ColumnType::Long};
        account.isRequired = true;
        visits.design.columns = {account, amount};
        visits.design.indexes = {{u"Konto", {{u"Konto", false}}}};
        test::MemoryPageStore store(test::sampleFile({test::kontoTable(), visits}));
        test::relate(store, u"Besuch am Tag", u"Konto", u"Konto", u"Nr", 0, test::kCascade);
        jet::openFile(file_, jet::OpenMode::CreateNew)->write(0, store.file());
    }

    std::string printed(std::vector<Text> arguments) const {
        arguments.insert(arguments.begin() + 1, file_);
        const Outcome outcome = call(arguments);
        EXPECT_EQ(outcome.exitCode, kExitSuccess) << outcome.errors;
        return outcome.printed;
    }

    Text file_ = path(u"Besuche.mdb");
};

TEST_F(SchemaOfFile, NamesTheTablesAndTheirRows) {
    EXPECT_EQ(printed({u"tables"}), "Tabelle\tZeilen\nBesuch am Tag\t0\nKonto\t2\n");
    EXPECT_EQ(printed({u"tables", u"--json"}),
              "{\"table\": \"Besuch am Tag\", \"rows\": 0}\n{\"table\": \"Konto\", \"rows\": 2}\n");
    FakeConsole console;
    console.isScreen = true;
    EXPECT_EQ(run(std::vector<Text>{u"tables", file_}, console), kExitSuccess);
    EXPECT_EQ(console.printed,
              "Tabelle        Zeilen\n-------------  ------\nBesuch am Tag       0\nKonto               2\n");
}

TEST_F(SchemaOfFile, ShowsHowATableIsBuilt) {
    EXPECT_EQ(printed({u"schema", u"besuch am tag"}),
              "Tabelle Besuch am Tag\n"
              "  Konto   LONG           erforderlich\n"
              "  Betrag  DECIMAL(10, 2)\n"
              "  Index Konto: Konto absteigend\n"
              "  Beziehung Besuch am TagKonto: Konto -> Konto (Nr); Löschen wird weitergegeben\n");
    EXPECT_EQ(printed({u"schema", u"--sql"}),
              "CREATE TABLE [Besuch am Tag] (\n  [Konto] LONG NOT NULL,\n  [Betrag] DECIMAL(10, 2)\n);\n"
              "CREATE INDEX [Konto] ON [Besuch am Tag] ([Konto] DESC);\n"
              "CREATE TABLE [Konto] (\n  [Nr] COUNTER,\n  [Name] TEXT(20),\n  [Recht] BIT,\n  [Klein] BYTE,\n"
              "  [Notiz] MEMO\n);\n"
              "CREATE UNIQUE INDEX [Name] ON [Konto] ([Name]);\n"
              "CREATE UNIQUE INDEX [PrimaryKey] ON [Konto] ([Nr]) WITH PRIMARY;\n"
              "ALTER TABLE [Besuch am Tag] ADD CONSTRAINT [Besuch am TagKonto] FOREIGN KEY ([Konto]) REFERENCES "
              "[Konto] ([Nr]) ON DELETE CASCADE;\n");
    EXPECT_EQ(
        printed({u"schema", u"Besuch am Tag", u"--json"}),
        R"_({"table": "Besuch am Tag", "rule": null, "ruleText": null, "columns": [{"name": "Konto", "type": "LONG", )_"
        R"_("required": true, "default": null, "rule": null, "ruleText": null}, {"name": "Betrag", "type": )_"
        R"_("DECIMAL(10, 2)", "required": false, "default": null, "rule": null, "ruleText": null}], "indexes": )_"
        R"_([{"name": "Konto", "primary": false, "unique": false, "required": false, "ignoreNulls": false, )_"
        R"_("columns": [{"name": "Konto", "ascending": false}]}], "relationships": [{"name": "Besuch am TagKonto", )_"
        R"_("columns": ["Konto"], "referencedTable": "Konto", "referencedColumns": ["Nr"], "enforced": true, )_"
        "\"cascadeUpdates\": false, \"cascadeDeletes\": true}]}\n");
    const Outcome missing = call({u"schema", file_, u"Besuch"});
    EXPECT_EQ(missing.exitCode, kExitError);
    EXPECT_TRUE(missing.errors.ends_with("\nDie Tabellen einer Datei nennt: kontodb tables DATEI\n")) << missing.errors;
}

TEST(SchemaText, HoldsDefaultsAndRulesInOneLineEach) {
    TableSchema table;
    table.name = u"T";
    table.rule = u"[a]>[b]";
    table.columns = {{u"a", "LONG", false, u"7", u">0\nOr Is Null", u"Zu klein."}};
    EXPECT_EQ(schemaForPeople(table),
              "Tabelle T\n  a  LONG           Vorgabe 7, Regel >0 Or Is Null (Zu klein.)\n  Regel [a]>[b]\n");
    EXPECT_EQ(schemaAsSql(table),
              "CREATE TABLE [T] (\n  [a] LONG DEFAULT 7\n);\n-- [T]: Regel [a]>[b]\n"
              "-- [a]: Regel >0 Or Is Null (Zu klein.)\n");
}

}  // namespace
}  // namespace kontodb
