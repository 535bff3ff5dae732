#include "jet/salvage/TablePlan.h"

#include <algorithm>
#include <set>
#include <utility>

#include "base/RuntimeError.h"
#include "jet/index/IndexKey.h"
#include "jet/table/LongValue.h"
#include "jet/table/RowCodec.h"
#include "jet/value/ValueCodec.h"

namespace jet {
namespace {

constexpr std::uint16_t kMaxTextBytes = 510;
constexpr std::uint8_t kMaxDigits = 28;
/// A counter that is so much greater than the greatest number in use is taken for damaged.
constexpr std::int64_t kMaxUnusedNumbers = 1'000'000;
/// Several entries must fit on a page.
constexpr std::size_t kLongestKey = 1024;
constexpr std::uint8_t kKnownColumnFlags = 0xC7;
constexpr std::uint8_t kKnownIndexFlags =
    IndexDefinition::kUnique | IndexDefinition::kIgnoreNulls | IndexDefinition::kRequired;

std::uint64_t hashOf(std::span<const std::uint8_t> bytes) {
    std::uint64_t hash = 0xCBF29CE484222325U;
    for (const std::uint8_t byte : bytes)
        hash = (hash ^ byte) * 0x100000001B3U;
    return hash ^ (hash >> 32U);
}

bool isShortVariable(const Column& column) {
    return (column.type == ColumnType::Text || column.type == ColumnType::Binary) && !column.isFixed();
}

bool canBeIndexed(const Column& column) {
    return column.type != ColumnType::Ole && column.type != ColumnType::Block;
}

bool isCertain(const Column& column, const base::Value& value) {
    const auto* text = std::get_if<base::Text>(&value);
    return text == nullptr || sortKeyIsCertain(*text, column.textOrder);
}

/// The bytes that the value takes in the row.
std::size_t bytesInRow(const Column& column, const base::Value& value) {
    if (base::isNull(value) || column.isFixed() || column.type == ColumnType::Boolean) return 0;
    const std::size_t bytes = encodeValue(column, value).size();
    if (!column.isLongValue()) return bytes;
    return kLongValueReferenceBytes + (bytes <= kMaxInlineLongValueBytes ? bytes : 0);
}

}  // namespace

void KeyHashes::add(std::span<const std::uint8_t> key) {
    hashes_.push_back(hashOf(key));
}

void KeyHashes::sort() {
    std::ranges::sort(hashes_);
}

bool KeyHashes::hasDuplicates() const {
    return std::ranges::adjacent_find(hashes_) != hashes_.end();
}

bool KeyHashes::areAllIn(const KeyHashes& others) const {
    auto other = others.hashes_.begin();
    return std::ranges::all_of(hashes_, [&](std::uint64_t hash) {
        other = std::lower_bound(other, others.hashes_.end(), hash);
        return other != others.hashes_.end() && *other == hash;
    });
}

TablePlan::TablePlan(const TableOfSalvage& table, TextOrder order, SalvageReport::Table& report)
    : table_(&table), report_(&report) {
    report.name = table.name;
    if (table.isNameMade)
        report.lose(u"Wie die Tabelle heißt, ist nicht lesbar; sie ist nach der Seite ihres Bauplans benannt.");
    for (const base::Text& loss : table.rows.definitionLosses())
        report.lose(loss + u".");
    if (table.hasLostProperties)
        report.lose(u"Eigenschaften der Tabelle oder ihrer Spalten (Vorgaben, Regeln) sind nicht lesbar.");
    planColumns(order);
    planIndexes();
}

/// Numbers and places without the gaps that deleted and damaged columns leave.
void TablePlan::planColumns(TextOrder order) {
    const TableDefinition& found = table_->rows.definition();
    definition_.columns = found.columns;
    for (const Column& column : found.columns)
        oldNumbers_.push_back(column.number);
    std::ranges::sort(oldNumbers_);
    for (Column& column : definition_.columns) {
        const auto place = std::ranges::lower_bound(oldNumbers_, column.number);
        column.number = static_cast<std::uint16_t>(place - oldNumbers_.begin());
        planColumn(column, order);
    }
    definition_.columnsEver = static_cast<std::uint16_t>(definition_.columns.size());
    std::size_t fixedBytes = 0;
    for (std::uint16_t number = 0; number < definition_.columnsEver; ++number) {
        auto& column = *std::ranges::find(definition_.columns, number, &Column::number);
        column.variableIndex = definition_.variableColumnsEver;
        column.fixedOffset = 0;
        if (!column.isFixed() && column.type != ColumnType::Boolean) ++definition_.variableColumnsEver;
        if (!column.isFixed() || column.type == ColumnType::Boolean) continue;
        column.fixedOffset = static_cast<std::uint16_t>(fixedBytes);
        fixedBytes += column.lengthBytes;
    }
    for (const Column& column : definition_.columns) {
        if (column.isLongValue()) definition_.longValueMaps.push_back({column.number, {}, {}});
    }
}

void TablePlan::planColumn(Column& column, TextOrder order) {
    column.descriptor = {};
    column.flags = static_cast<std::uint8_t>((column.flags & kKnownColumnFlags) | Column::kUpdatable);
    const bool isSecond = std::ranges::any_of(definition_.columns, [&](const Column& other) {
        return &other < &column && other.isAutoNumber() && other.type == ColumnType::Long;
    });
    if (column.type != ColumnType::Long || isSecond)
        column.flags = static_cast<std::uint8_t>(column.flags & ~Column::kAutoNumber);
    if (isShortVariable(column) && (column.lengthBytes == 0 || column.lengthBytes > kMaxTextBytes))
        column.lengthBytes = kMaxTextBytes;
    if (column.type == ColumnType::Text && column.lengthBytes % 2 != 0) ++column.lengthBytes;
    if (column.isLongValue()) column.lengthBytes = 0;
    if (column.type == ColumnType::Numeric) {
        if (column.precision == 0 || column.precision > kMaxDigits) column.precision = kMaxDigits;
        column.scale = std::min(column.scale, column.precision);
    }
    if (column.isText() && !sortKeyIsCertain({}, column.textOrder)) column.textOrder = order;
}

void TablePlan::planIndexes() {
    const TableDefinition& found = table_->rows.definition();
    std::vector<std::size_t> newPlaces;
    for (const IndexDefinition& index : found.indexes) {
        const std::size_t before = definition_.indexes.size();
        planIndex(index);
        newPlaces.push_back(definition_.indexes.size() > before ? before : SIZE_MAX);
    }
    nameIndexes(found.logicalIndexes, newPlaces);
}

void TablePlan::planIndex(const IndexDefinition& found) {
    IndexDefinition index;
    index.flags = static_cast<std::uint8_t>(IndexDefinition::kAlways | (found.flags & kKnownIndexFlags));
    std::set<std::uint16_t> numbers;
    for (const IndexColumn& part : found.columns) {
        const auto place = std::ranges::lower_bound(oldNumbers_, part.columnNumber);
        const auto number = static_cast<std::uint16_t>(place - oldNumbers_.begin());
        index.columns.push_back({number, part.ascending});
        const bool isSound = numbers.insert(number).second && canBeIndexed(*definition_.columnNumbered(number));
        if (isSound) continue;
        report_->lose(u"Der Index '" + found.name + u"' ist nicht lesbar beschrieben.");
        return;
    }
    definition_.indexes.push_back(std::move(index));
    facts_.emplace_back();
}

/// Relationships get their names when it is known whether they hold.
void TablePlan::nameIndexes(const std::vector<LogicalIndex>& found, const std::vector<std::size_t>& newPlaces) {
    std::set<base::Bytes> names;
    bool hasPrimaryKey = false;
    for (const LogicalIndex& logical : found) {
        if (logical.kind == LogicalIndex::Kind::ForeignKey || newPlaces[logical.dataBlock] == SIZE_MAX) continue;
        if (!names.insert(sortKey(logical.name)).second) continue;
        LogicalIndex made;
        made.name = logical.name;
        made.number = static_cast<std::uint32_t>(definition_.logicalIndexes.size());
        made.dataBlock = static_cast<std::uint32_t>(newPlaces[logical.dataBlock]);
        IndexDefinition& index = definition_.indexes[made.dataBlock];
        const bool isPrimary = logical.kind == LogicalIndex::Kind::PrimaryKey && !hasPrimaryKey;
        hasPrimaryKey = hasPrimaryKey || isPrimary;
        if (isPrimary) made.kind = LogicalIndex::Kind::PrimaryKey;
        if (isPrimary || index.name.empty()) index.name = made.name;
        index.isPrimary = index.isPrimary || isPrimary;
        definition_.logicalIndexes.push_back(std::move(made));
    }
}

std::size_t TablePlan::addIndex(std::vector<IndexColumn> columns) {
    IndexDefinition index;
    index.columns = std::move(columns);
    definition_.indexes.push_back(std::move(index));
    facts_.emplace_back();
    return definition_.indexes.size() - 1;
}

void TablePlan::survey(const Visit& visit) {
    std::vector<base::Value> values;
    const auto row = [&](RowPointer place, DamagedRow& found) {
        losesValue_ = !found.lost.empty();
        for (const LostValue& lost : found.lost)
            loseValue(place, *lost.column, lost.reason);
        clean(place, found, values, true);
        ++(losesValue_ ? report_->rowsWithLosses : report_->wholeRows);
        visit(values);
        addKeys(values);
    };
    table_->rows.eachRow(row, [&](RowPointer place, const base::Text& reason) {
        ++report_->lostRows;
        report_->lose(placeText(place) + u": Der Datensatz ist nicht lesbar: " + reason + u".");
    });
    reportCounts();
    settleIndexes();
    const auto last = static_cast<std::int32_t>(table_->rows.definition().lastAutoNumber);
    const bool isLikely = last > highestNumber_ && std::int64_t{last} - highestNumber_ <= kMaxUnusedNumbers;
    definition_.lastAutoNumber = static_cast<std::uint32_t>(isLikely ? last : highestNumber_);
}

void TablePlan::eachRow(const Visit& visit) {
    std::vector<base::Value> values;
    table_->rows.eachRow([&](RowPointer place, DamagedRow& found) {
        clean(place, found, values, false);
        visit(values);
    });
}

/// Moves the values to their new numbers. What cannot be stored in the new table is lost.
void TablePlan::clean(RowPointer place, DamagedRow& row, std::vector<base::Value>& values, bool isFirst) {
    values.resize(oldNumbers_.size());
    for (std::size_t i = 0; i < oldNumbers_.size(); ++i)
        values[i] = std::move(row.values[oldNumbers_[i]]);
    for (Column& column : definition_.columns) {
        base::Value& value = values[column.number];
        if (column.type == ColumnType::Boolean && base::isNull(value)) value = false;
        if (std::holds_alternative<base::Text>(value) || column.type == ColumnType::Binary)
            cleanValue(place, column, value, isFirst);
        if (const auto* number = std::get_if<std::int32_t>(&value); number != nullptr && column.isAutoNumber())
            highestNumber_ = std::max(highestNumber_, *number);
    }
    shorten(place, values, isFirst);
}

/// A text or bytes: too long for the column, or a text that no form can store.
void TablePlan::cleanValue(RowPointer place, const Column& column, base::Value& value, bool isFirst) {
    const auto* text = std::get_if<base::Text>(&value);
    const auto* bytes = std::get_if<base::Bytes>(&value);
    base::TextView reason;
    const std::size_t size = text != nullptr ? 2 * text->size() : bytes != nullptr ? bytes->size() : 0;
    if (isShortVariable(column) && size > column.lengthBytes) {
        if (size <= kMaxTextBytes) {
            auto& longer = *std::ranges::find(definition_.columns, column.number, &Column::number);
            longer.lengthBytes = static_cast<std::uint16_t>(size);
            report_->lose(u"Die Spalte '" + column.name + u"' ist verlängert, weil ein Wert länger ist.");
        } else {
            reason = u"Er ist länger, als die Spalte erlaubt";
        }
    }
    if (text != nullptr && text->starts_with(u'\uFEFF')) {
        try {
            encodeValue(column, value);
        } catch (const base::RuntimeError&) {
            reason = u"Der Text lässt sich nicht speichern";
        }
    }
    if (reason.empty()) return;
    value = base::Null{};
    if (!isFirst) return;
    losesValue_ = true;
    loseValue(place, column, reason);
}

/// Other writers store some texts in fewer bytes than we do. If a row gets too long, the longest value goes.
void TablePlan::shorten(RowPointer place, std::vector<base::Value>& values, bool isFirst) {
    std::size_t longest = 0;
    for (const Column& column : definition_.columns)
        longest += column.isLongValue() ? kLongValueReferenceBytes + kMaxInlineLongValueBytes : column.lengthBytes + 2U;
    if (longest <= kMaxRowBytes - 64) return;
    const std::size_t outside = 2 + definition_.fixedAreaBytes() +
                                2 * (definition_.variableColumnsEver + std::size_t{2}) +
                                nullMaskBytes(definition_.columnsEver);
    while (true) {
        std::size_t bytes = outside;
        std::size_t most = 0;
        const Column* largest = nullptr;
        for (const Column& column : definition_.columns) {
            const std::size_t own = bytesInRow(column, values[column.number]);
            bytes += own;
            if (own > most) largest = &column;
            most = std::max(most, own);
        }
        if (bytes <= kMaxRowBytes || largest == nullptr) return;
        values[largest->number] = base::Null{};
        if (!isFirst) continue;
        losesValue_ = true;
        loseValue(place, *largest, u"Der Datensatz ist zu lang");
    }
}

void TablePlan::loseValue(RowPointer place, const Column& column, base::TextView reason) {
    report_->lose(placeText(place) + u", Spalte '" + column.name + u"': Der Wert ist verloren: " + base::Text(reason) +
                  u".");
}

void TablePlan::addKeys(const std::vector<base::Value>& values) {
    base::Bytes key;
    for (std::size_t i = 0; i < facts_.size(); ++i) {
        IndexFacts& facts = facts_[i];
        bool hasNull = false;
        key.clear();
        for (const IndexColumn& part : definition_.indexes[i].columns) {
            const Column& column = definition_.columnOf(part);
            const base::Value& value = values[column.number];
            hasNull = hasNull || base::isNull(value);
            facts.isUncertain = facts.isUncertain || !isCertain(column, value);
            if (!facts.isUncertain) appendKeyPart(key, column, value, part.ascending);
        }
        facts.isUncertain = facts.isUncertain || key.size() > kLongestKey;
        facts.hasNull = facts.hasNull || hasNull;
        if (!hasNull && !facts.isUncertain && definition_.indexes[i].isUnique()) facts.keys.add(key);
    }
}

/// No row is left out because of an index: the index gives way.
void TablePlan::settleIndexes() {
    for (std::size_t i = facts_.size(); i > 0; --i) {
        IndexDefinition& index = definition_.indexes[i - 1];
        IndexFacts& facts = facts_[i - 1];
        const base::Text subject = u"Der Index '" + index.name + u"' ";
        facts.keys.sort();
        const bool isRepeated = facts.keys.hasDuplicates();
        const bool isNull = facts.hasNull && (index.isRequired() || index.isPrimary);
        if (facts.isUncertain) {
            if (!index.name.empty())
                report_->lose(subject + u"fehlt: Wie Access einen der Texte einordnet, ist nicht bekannt.");
            removeIndex(i - 1);
            continue;
        }
        if (isRepeated && !index.name.empty())
            report_->lose(subject + u"ist nicht mehr eindeutig: Zwei Datensätze haben denselben Schlüssel.");
        if (isNull && !index.name.empty())
            report_->lose(subject + u"lässt jetzt Nullwerte zu: Ein Datensatz hat einen.");
        if (isRepeated) index.flags = static_cast<std::uint8_t>(index.flags & ~IndexDefinition::kUnique);
        if (isNull) index.flags = static_cast<std::uint8_t>(index.flags & ~IndexDefinition::kRequired);
        if (!isRepeated && !isNull) continue;
        index.isPrimary = false;
        for (LogicalIndex& logical : definition_.logicalIndexes) {
            if (logical.dataBlock == i - 1) logical.kind = LogicalIndex::Kind::Ordinary;
        }
    }
}

void TablePlan::removeIndex(std::size_t place) {
    definition_.indexes.erase(definition_.indexes.begin() + static_cast<std::ptrdiff_t>(place));
    facts_.erase(facts_.begin() + static_cast<std::ptrdiff_t>(place));
    std::erase_if(definition_.logicalIndexes, [&](const LogicalIndex& each) { return each.dataBlock == place; });
    for (LogicalIndex& logical : definition_.logicalIndexes) {
        if (logical.dataBlock > place) --logical.dataBlock;
    }
}

void TablePlan::removeUnnamedIndexes() {
    for (std::size_t i = definition_.indexes.size(); i > 0; --i) {
        const bool isNamed = std::ranges::any_of(definition_.logicalIndexes,
                                                 [&](const LogicalIndex& each) { return each.dataBlock == i - 1; });
        if (!isNamed) removeIndex(i - 1);
    }
    std::ranges::sort(definition_.logicalIndexes, [](const LogicalIndex& a, const LogicalIndex& b) {
        return compareTexts(a.name, b.name) == std::strong_ordering::less;
    });
}

void TablePlan::reportCounts() {
    for (const PageNumber page : table_->rows.lostPages())
        report_->lose(u"Seite " + base::decimal(page) + u": Die Datensätze der Seite sind nicht lesbar.");
    const std::size_t found = report_->wholeRows + report_->rowsWithLosses + report_->lostRows;
    const std::size_t counted = table_->rows.definition().rowCount;
    const bool hasGaps =
        report_->lostRows > 0 || !table_->rows.lostPages().empty() || !table_->rows.definitionLosses().empty();
    if (counted <= found || counted - found >= kMaxUnusedNumbers) return;
    const base::TextView why = table_->rows.goesBeyondFile() ? u"; die Datei endet vor ihren übrigen Seiten."
                               : hasGaps                     ? u"."
                                                             : u"; vielleicht war die Zahl schon vorher falsch.";
    report_->lose(u"Die Tabelle zählt " + countText(counted, u"Datensatz", u"Datensätze") + u", gefunden sind " +
                  base::decimal(found).append(why));
}

}  // namespace jet
