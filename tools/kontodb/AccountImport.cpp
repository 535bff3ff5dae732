#include "tools/kontodb/AccountImport.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "accounts/AccountTable.h"
#include "base/RuntimeError.h"
#include "jet/Errors.h"
#include "jet/value/SortKey.h"
#include "tools/kontodb/Progress.h"
#include "tools/kontodb/Signals.h"

namespace kontodb {
namespace {

namespace table = tolv::accountTable;

bool isOneOf(base::TextView word, std::initializer_list<base::TextView> words) {
    return std::ranges::any_of(words, [&](base::TextView each) { return base::equalsIgnoringAsciiCase(word, each); });
}

/// @return nothing if the text is neither yes nor no
std::optional<bool> yesOrNo(base::TextView text) {
    if (isOneOf(text, {u"", u"0", u"nein", u"falsch", u"false", u"no"})) return false;
    if (isOneOf(text, {u"1", u"-1", u"ja", u"wahr", u"true", u"yes"})) return true;
    return std::nullopt;
}

/// Names with the same key are the same name.
std::string keyOf(base::TextView name, const jet::Column& column) {
    const base::Bytes key = jet::sortKey(name, column.textOrder);
    return {key.begin(), key.end()};
}

const jet::Column& columnOf(const jet::TableDefinition& definition, base::TextView name) {
    const jet::Column* column = definition.column(name);
    if (column == nullptr)
        throw jet::failure(u"Der Tabelle " + base::Text(table::kTable) + u" fehlt die Spalte " + base::Text(name) +
                           u": Die Datei ist keine Kontendatei.");
    return *column;
}

std::unordered_set<std::string> namesIn(const jet::Table& accounts) {
    const jet::Column& column = columnOf(accounts.definition(), table::kName);
    std::unordered_set<std::string> keys;
    for (jet::RowCursor cursor(accounts); cursor.next();) {
        const base::Value name = accounts.value(cursor.row().view, column);
        if (const auto* text = std::get_if<base::Text>(&name)) keys.insert(keyOf(*text, column));
    }
    return keys;
}

bool isTooLong(base::TextView text, const jet::Column& column) {
    return column.type == jet::ColumnType::Text && text.size() > column.lengthBytes / 2U;
}

}  // namespace

AccountImport::AccountImport(std::vector<CsvRecord> records) : records_(std::move(records)) {
    if (records_.empty()) throw jet::failure(u"Die CSV-Datei ist leer; ihre erste Zeile nennt die Spalten.");
    const std::vector<base::Text> titles = std::move(records_.front().fields);
    records_.erase(records_.begin());
    columns_ = titles.size();
    for (std::size_t i = 0; i < titles.size(); ++i) {
        const base::TextView title = base::trimBlanks(titles[i]);
        if (isOneOf(title, {table::kId, table::kPass})) continue;
        std::size_t* place = placeOf(title);
        if (place == nullptr)
            throw jet::failure(u"Die Spalte '" + base::Text(title) + u"' gibt es nicht; möglich sind " +
                               base::Text(table::kName) + u", " + base::Text(table::kServerPath) + u" und " +
                               base::Text(table::kProgUpdate) + u".");
        if (*place != kNowhere) throw jet::failure(u"Die Spalte '" + base::Text(title) + u"' steht zweimal da.");
        *place = i;
    }
    for (const auto& [place, name] :
         {std::pair{places_.name, table::kName}, {places_.serverPath, table::kServerPath}}) {
        if (place == kNowhere) throw jet::failure(u"In der ersten Zeile fehlt die Spalte " + base::Text(name) + u".");
    }
}

std::size_t* AccountImport::placeOf(base::TextView title) {
    if (isOneOf(title, {table::kName, u"Benutzername"})) return &places_.name;
    if (isOneOf(title, {table::kServerPath, u"ServerPath"})) return &places_.serverPath;
    if (isOneOf(title, {table::kProgUpdate, u"Programmupdate"})) return &places_.programUpdate;
    return nullptr;
}

base::Text AccountImport::field(const CsvRecord& record, std::size_t place) const {
    return place < record.fields.size() ? base::Text(base::trimBlanks(record.fields[place])) : base::Text();
}

/// @return empty if there is none
base::Text AccountImport::faultOf(const CsvRecord& record, const jet::TableDefinition& definition) const {
    const auto count = [](std::size_t number) { return base::decimal(number); };
    if (record.fields.size() != columns_) return count(record.fields.size()) + u" Felder statt " + count(columns_);
    for (const auto& [place, name, what] : {std::tuple{places_.name, table::kName, u"der Benutzername"},
                                            {places_.serverPath, table::kServerPath, u"der Pfad"}}) {
        const base::Text text = field(record, place);
        const jet::Column& column = columnOf(definition, name);
        if (text.empty()) return what + base::Text(u" fehlt");
        if (isTooLong(text, column))
            return what + base::Text(u" ist länger als ") + count(column.lengthBytes / 2U) + u" Zeichen";
    }
    if (field(record, places_.name).find(u'\'') != base::Text::npos)
        return u"der Benutzername enthält einen Apostroph, den die Benutzerkontenverwaltung nicht speichern kann";
    if (const base::Text text = field(record, places_.programUpdate); !yesOrNo(text))
        return u"'" + text + u"' ist bei " + base::Text(table::kProgUpdate) + u" weder 1 noch 0";
    return {};
}

std::vector<ImportFault> AccountImport::faults(const jet::Table& accounts) const {
    const jet::Column& column = columnOf(accounts.definition(), table::kName);
    std::unordered_set<std::string> taken = namesIn(accounts);
    std::vector<ImportFault> faults;
    for (const CsvRecord& record : records_) {
        base::Text fault = faultOf(record, accounts.definition());
        const base::Text name = field(record, places_.name);
        if (fault.empty() && !taken.insert(keyOf(name, column)).second)
            fault = u"ein Konto mit dem Namen '" + name + u"' gibt es schon";
        if (!fault.empty()) faults.push_back({record.line, std::move(fault)});
    }
    return faults;
}

void AccountImport::insert(jet::TableWriter& writer, Console& console) const {
    const jet::TableDefinition& definition = writer.table().definition();
    const auto number = [&](base::TextView name) { return columnOf(definition, name).number; };
    const std::uint16_t name = number(table::kName);
    const std::uint16_t password = number(table::kPass);
    const std::uint16_t path = number(table::kServerPath);
    const std::uint16_t update = number(table::kProgUpdate);
    Progress progress(console, "Die Konten werden angelegt");
    std::size_t done = 0;
    for (const CsvRecord& record : records_) {
        Interruption::check();
        progress.at(done++, records_.size());
        try {
            writer.insert(
                std::vector<jet::Assignment>{{name, field(record, places_.name)},
                                             {password, base::Text(table::kStoredInitialPassword)},
                                             {path, field(record, places_.serverPath)},
                                             {update, yesOrNo(field(record, places_.programUpdate)).value_or(false)}});
        } catch (const base::RuntimeError& error) {
            throw base::RuntimeError(error.number(),
                                     u"Zeile " + base::decimal(record.line) + u": " + error.description());
        }
    }
}

}  // namespace kontodb
