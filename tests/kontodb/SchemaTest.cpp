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
        jet::openFile(u"b.mdb", jet::OpenMode::CreateNew)->write(0, store.file());
    }
};

TEST_F(SchemaOfFile, ShowsTablesColumnsIndexesAndRelationships) {
    expect(R"__(
$ tables b.mdb
Tabelle␉Zeilen
Besuch am Tag␉0
Konto␉2
$ tables b.mdb --json
{"table": "Besuch am Tag", "rows": 0}
{"table": "Konto", "rows": 2}
$ tables b.mdb > tty
Tabelle        Zeilen
-------------  ------
Besuch am Tag       0
Konto               2
$ schema b.mdb "besuch am tag"
Tabelle Besuch am Tag
  Konto   LONG           erforderlich
  Betrag  DECIMAL(10, 2)
  Index Konto: Konto absteigend
  Beziehung Besuch am TagKonto: Konto -> Konto (Nr); Löschen wird weitergegeben
$ schema b.mdb --sql
CREATE TABLE [Besuch am Tag] (
  [Konto] LONG NOT NULL,
  [Betrag] DECIMAL(10, 2)
);
CREATE INDEX [Konto] ON [Besuch am Tag] ([Konto] DESC);
CREATE TABLE [Konto] (
  [Nr] COUNTER,
  [Name] TEXT(20),
  [Recht] BIT,
  [Klein] BYTE,
  [Notiz] MEMO
);
CREATE UNIQUE INDEX [Name] ON [Konto] ([Name]);
CREATE UNIQUE INDEX [PrimaryKey] ON [Konto] ([Nr]) WITH PRIMARY;
ALTER TABLE [Besuch am Tag] ADD CONSTRAINT [Besuch am TagKonto] FOREIGN KEY ([Konto]) REFERENCES [Konto] ([Nr])…
$ schema b.mdb Besuch
! kontodb: -2147217865: …
! Die Tabellen einer Datei nennt: kontodb tables DATEI
)__");
    EXPECT_EQ(
        call({u"schema", u"b.mdb", u"Besuch am Tag", u"--json"}).printed,
        R"_({"table": "Besuch am Tag", "rule": null, "ruleText": null, "columns": [{"name": "Konto", "type": "LONG", )_"
        R"_("required": true, "default": null, "rule": null, "ruleText": null}, {"name": "Betrag", "type": )_"
        R"_("DECIMAL(10, 2)", "required": false, "default": null, "rule": null, "ruleText": null}], "indexes": )_"
        R"_([{"name": "Konto", "primary": false, "unique": false, "required": false, "ignoreNulls": false, )_"
        R"_("columns": [{"name": "Konto", "ascending": false}]}], "relationships": [{"name": "Besuch am TagKonto", )_"
        R"_("columns": ["Konto"], "referencedTable": "Konto", "referencedColumns": ["Nr"], "enforced": true, )_"
        "\"cascadeUpdates\": false, \"cascadeDeletes\": true}]}\n");
}

TEST(SchemaText, ShowsEachDefaultAndEachRuleOnOneLine) {
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
