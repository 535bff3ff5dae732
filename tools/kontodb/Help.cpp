#include "tools/kontodb/Help.h"

#include <algorithm>
#include <iterator>

namespace kontodb {
namespace {

struct Topic {
    base::TextView name;
    std::string_view text;
};

constexpr Topic kTopics[] = {
    {u"create", R"(kontodb create DATEI [--password KENNWORT | --password-file DATEI] [--accounts N] [--seed S]

Legt eine neue Kontendatei an. Eine Datei, die es schon gibt, bleibt unberührt.

  --password KENNWORT    schützt die Datei damit, mit --password "" gar nicht; ohne
                         Angabe wird zweimal gefragt. Wird nichts eingegeben oder kann
                         niemand gefragt werden, gilt das Kennwort, mit dem die
                         Benutzerkontenverwaltung ihre Datei öffnet
  --password-file DATEI  es steht in der ersten Zeile dieser Datei; mit - kommt es aus
                         der Standardeingabe
  --accounts N           so viele erfundene Konten; ohne Angabe keines
  --seed S               welche; gleiches S ergibt die gleiche Datei

Ihren Namen bekommt die Datei erst, wenn sie ganz ist; wird das Programm vorher
abgeschossen, bleibt höchstens DATEI-neu-1, die Sie löschen können.

Beispiel:
  kontodb create BenKTO.mdb --accounts 100
)"},
    {u"check", R"(kontodb check DATEI [--notes] [--password KENNWORT | --password-file DATEI]

Prüft die ganze Datei und nennt jeden Fehler in einer Zeile; eine Datei ohne Fehler
bekommt eine Zeile. Ergebnis 0: in Ordnung, 1: Fehler gefunden, 2: nicht zu lesen.

  --notes  zeigt auch, was auffällt und nicht schadet

Beispiel:
  kontodb check BenKTO.mdb --password-file kennwort.txt
)"},
    {u"tables", R"(kontodb tables DATEI [--json] [--password KENNWORT | --password-file DATEI]

Nennt die Tabellen der Datei und wie viele Zeilen jede hat. Verknüpfte Tabellen fehlen:
Ihre Zeilen stehen in einer anderen Datei, die vielleicht nicht zu erreichen ist.

  --json  ein Objekt je Zeile
)"},
    {u"schema", R"(kontodb schema DATEI [TABELLE] [--json | --sql] [--password KENNWORT | --password-file DATEI]

Zeigt, wie eine Tabelle gebaut ist, ohne Angabe alle: Spalten mit Typ und Größe, ob ein
Wert erforderlich ist, Vorgaben und Regeln, Indizes und Beziehungen.

  --json  ein Objekt je Tabelle und Zeile
  --sql   Anweisungen CREATE TABLE, CREATE INDEX und ALTER TABLE; Regeln stehen darin
          als Bemerkung

Beispiele:
  kontodb schema BenKTO.mdb Benutzerkonto
  kontodb schema BenKTO.mdb --sql > bauplan.sql
)"},
    {u"query", R"(kontodb query DATEI "SELECT ..." [--csv | --json] [weitere Optionen]

Gibt die Zeilen aus, die die Anweisung findet; ihre Sprache zeigt: kontodb help sql
Passwörter (BenKTO_Pass) stehen nur da, wenn die Anweisung ihre Spalte nennt, bei *
nicht.
Mit - statt der Anweisung wird sie aus der Standardeingabe gelesen (UTF-8).

  --csv            für Tabellenkalkulationen, nach RFC 4180: Zeilenende CR LF, Texte
                   in "...", wo es nötig ist; Null ist leer, ein leerer Text ""
  --separator C    mit --csv: dieses Zeichen statt des Kommas; tab für den Tabulator
  --decimal-comma  mit --csv: 12,5 statt 12.5
  --bom            mit --csv: beginnt mit dem Kennzeichen für UTF-8
  --json           ein Objekt je Zeile
  --no-header      ohne die Namen der Spalten
  --null TEXT      was für Null steht
  --password KENNWORT | --password-file DATEI

Am Bildschirm stehen die Spalten untereinander. Sonst sind die Werte durch Tabulatoren
getrennt, mit einer Kopfzeile. Null ist \N, ja/nein -1/0; Tabulator, Zeilenende und \
im Text werden \t, \n, \r und \\. Das Datum ist 2004-06-05T13:45:00 (mit --csv ohne T),
Zahlen haben einen Punkt, Bytes sind Hexziffern. Was kein gültiges Zeichen ist, wird
zu U+FFFD. Ist ein Wert beschädigt, endet die Ausgabe vor seiner Zeile und das Ergebnis
ist 2; die Zeilen davor gelten.

Beispiele:
  kontodb query BenKTO.mdb "SELECT * FROM Benutzerkonto ORDER BY BenKTO_Name"
  kontodb query BenKTO.mdb "SELECT * FROM Benutzerkonto WHERE BenKTO_Name LIKE 'M%'" --json
  kontodb query BenKTO.mdb - < anweisung.sql
Für ein deutsches Excel, zu öffnen mit einem Doppelklick:
  kontodb query BenKTO.mdb "SELECT * FROM Benutzerkonto" --csv --separator ; --decimal-comma --bom > k.csv
(in einer Shell: --separator ';')
)"},
    {u"exec",
     R"(kontodb exec DATEI ("UPDATE|DELETE|INSERT ..." | --file SQLDATEI) [--all] [--dry-run] [weitere Optionen]

Führt die Anweisung aus, ganz oder gar nicht, und gibt die Zahl der Zeilen aus, die
sie geändert, gelöscht oder eingefügt hat; ihre Sprache zeigt: kontodb help sql
Was ein unterbrochener Schreibvorgang hinterlassen hat, wird vorher zurückgenommen.

  --file SQLDATEI  führt alle Anweisungen dieser Datei aus; mit - (oder mit - statt der
                   Anweisung) die der Standardeingabe
  --all            erlaubt UPDATE und DELETE ohne WHERE, also für alle Zeilen
  --dry-run        ändert nichts und zeigt nur, wie viele Zeilen es wären und was
                   dagegen spricht
  --password KENNWORT | --password-file DATEI

Zwischen mehreren Anweisungen steht ein Semikolon; Zeilen, die mit -- beginnen, sind
Bemerkungen; der Text ist UTF-8. Die Anweisungen gelten alle zusammen oder gar nicht:
Scheitert eine, ist keine ausgeführt, und die Meldung nennt ihre Nummer. Jede sieht, was
die vorigen geändert haben. Ausgegeben wird für jede eine Zeile mit der Zahl.

Beispiele:
  kontodb exec BenKTO.mdb "DELETE FROM Benutzerkonto WHERE BenKTO_ID = 17"
  kontodb exec BenKTO.mdb --file aenderungen.sql --dry-run
)"},
    {u"import", R"(kontodb import DATEI CSV [--dry-run] [--password KENNWORT | --password-file DATEI]

Legt Konten an, für jede Zeile der CSV-Datei eines, nach den Regeln des Kontenfensters:
Name und Pfad müssen da sein, ein anderes Konto darf nicht so heißen, und jedes Konto
bekommt das Initialpasswort. Ist eine Zeile falsch, wird jede falsche genannt und nichts
geschrieben. Mit - statt CSV kommen die Zeilen aus der Standardeingabe.

  --dry-run  prüft nur und schreibt nichts

Die erste Zeile nennt die Spalten in beliebiger Folge: BenKTO_Name (oder Benutzername),
BenKTO_ServerPath (oder ServerPath) und, wenn es sein soll, BenKTO_R_ProgUpdate (oder
Programmupdate) mit 1 oder 0. BenKTO_ID und BenKTO_Pass dürfen dastehen und zählen nicht.
Gelesen wird, was query mit --csv schreibt und was Tabellenkalkulationen speichern: mit
Semikolon, Komma oder Tabulator, in UTF-8 oder Windows-1252.

Beispiele:
  kontodb import BenKTO.mdb neue.csv --dry-run
  kontodb import BenKTO.mdb neue.csv
)"},
    {u"backup", R"(kontodb backup DATEI ZIEL [--password KENNWORT | --password-file DATEI]

Macht eine genaue Kopie, auch während andere mit der Datei arbeiten: Wer mit der
Benutzerkontenverwaltung oder kontodb schreibt, wartet so lange. Die Kopie wird auf den
Datenträger geschrieben und geprüft; ihren Namen bekommt sie erst dann. Eine Datei, die
es schon gibt, bleibt unberührt. Ergebnis 1: Die Kopie ist da und hat die Fehler der
Datei. Access selbst wartet nicht; ist die Datei dort geöffnet, steht ein Hinweis da.

Beispiel:
  kontodb backup BenKTO.mdb Sicherung-2026-11-25.mdb
)"},
    {u"compact", R"(kontodb compact DATEI ZIEL [--password KENNWORT | --password-file DATEI]

Schreibt den ganzen Inhalt in eine neue Datei ohne Lücken: Tabellen mit Eigenschaften,
Regeln, Indizes und Beziehungen, Abfragen, Kennwort, Verschlüsselung und die nächsten
Autowerte. Danach werden beide Dateien gelesen und verglichen, und die neue wird geprüft;
erst dann bekommt sie ihren Namen. Die alte Datei bleibt, wie sie ist, und eine Datei,
die es schon gibt, bleibt unberührt. Was sich nicht übernehmen lässt, wird genannt, und
es entsteht nichts. Nehmen Sie die neue Datei an Stelle der alten, wenn niemand mit ihr
arbeitet; heben Sie die alte als Sicherung auf. Ist die alte beschädigt, hilft repair.

Beispiel:
  kontodb compact BenKTO.mdb BenKTO-klein.mdb
)"},
    {u"repair", R"(kontodb repair DATEI ZIEL [--password KENNWORT | --password-file DATEI]

Schreibt in eine neue Datei, was von einer beschädigten noch zu lesen ist, und nennt, was
fehlt: je Tabelle, wie viele Datensätze ganz sind, welche einen Wert verloren haben und
welche verloren sind, mit Seite, Zeile und Grund. Erfunden wird nichts: Ein verlorener
Wert ist Null, Gelöschtes bleibt gelöscht. Widerspricht ein Datensatz einem Index oder
einer Beziehung, so gilt diese Regel nicht mehr, und der Datensatz bleibt. Die
beschädigte Datei bleibt, wie sie ist, und eine Datei, die es schon gibt, unberührt.

Ein verändertes Byte in einem Wert fällt niemandem auf; spielen Sie lieber eine
Sicherung ein, wenn es eine gibt. Rechte einzelner Benutzer werden nicht übernommen.
Ergebnis 0: nichts verloren, 1: etwas verloren, 2: nicht möglich.

Beispiel:
  kontodb repair BenKTO.mdb BenKTO-gerettet.mdb
)"},
    {u"sql", R"(Die Sprache der Anweisungen

  SELECT [TOP n] * | Spalte, ... FROM Tabelle [WHERE Bedingung]
    [ORDER BY Spalte [ASC | DESC], ...]
  SELECT COUNT(*) FROM Tabelle [WHERE Bedingung]
  UPDATE Tabelle SET Spalte = Wert, ... [WHERE Bedingung]
  DELETE FROM Tabelle [WHERE Bedingung]
  INSERT INTO Tabelle [(Spalte, ...)] VALUES (Wert, ...)

Bedingungen: = <> < <= > >=, IS [NOT] NULL, BETWEEN x AND y, IN (x, y), LIKE 'Muster',
verbunden mit AND, OR, NOT und Klammern. Groß und klein gilt als gleich.

Bei LIKE steht % für beliebig viele Zeichen und _ für eines; * und ? sind Zeichen wie
andere:  WHERE BenKTO_Name LIKE 'Mei%'

TOP n gibt die ersten n Zeilen, mit ORDER BY auch alle, die der letzten davon
gleichstehen (wie in Access). COUNT(*) zählt die Zeilen.

Namen mit Leerzeichen stehen in eckigen Klammern: [Letzte Anmeldung]. Werte sind
'Text', 12.5, #12/31/2004# (Monat/Tag/Jahr), True, False, Null und {guid {...}}.

Ein Apostroph im Text wird doppelt geschrieben: 'O''Neil'.

Ist eine Anweisung falsch, zeigt ein ^ unter ihrer Zeile auf die Stelle.

In der Eingabeaufforderung und in der Shell steht die ganze Anweisung in "...".
)"},
};

constexpr std::string_view kOverview = R"(kontodb - Dateien von Access 2000 bis 2003, ohne Access

  kontodb create DATEI                     legt eine neue Kontendatei an
  kontodb check DATEI                      prüft, ob eine Datei in Ordnung ist
  kontodb tables DATEI                     nennt die Tabellen und ihre Zeilenzahlen
  kontodb schema DATEI [TABELLE]           zeigt Spalten, Indizes und Beziehungen
  kontodb query DATEI "SELECT ..."         gibt Zeilen aus
  kontodb exec DATEI "UPDATE|DELETE|INSERT ..."   ändert Zeilen
  kontodb import DATEI CSV                 legt Konten aus einer CSV-Datei an
  kontodb compact DATEI ZIEL               schreibt eine Datei neu und kleiner
  kontodb backup DATEI ZIEL                sichert eine Datei, auch während der Arbeit
  kontodb repair DATEI ZIEL                rettet, was von einer Datei zu lesen ist
  kontodb help [BEFEHL | sql]              erklärt einen Befehl oder die Anweisungen
  kontodb --version                        zeigt die Version

Optionen jedes Befehls, der eine Datei liest:
  --password KENNWORT     ihr Datenbankkennwort; ohne Angabe wird gefragt
  --password-file DATEI   steht in der ersten Zeile dieser Datei; mit - kommt es
                          aus der Standardeingabe

Was mit - beginnt, ist eine Option, außer - allein und hinter einem --.
Fehler stehen in der Fehlerausgabe: "kontodb: NUMMER: Beschreibung".
Ergebnis: 0 Erfolg, 1 Fehler in der Datei, 2 Fehler.
)";

}  // namespace

std::string_view overview() {
    return kOverview;
}

std::string_view helpOn(base::TextView topic) {
    const auto* const found = std::ranges::find(kTopics, topic, &Topic::name);
    return found == std::end(kTopics) ? std::string_view{} : found->text;
}

}  // namespace kontodb
