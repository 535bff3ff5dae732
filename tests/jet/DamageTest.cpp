#include <algorithm>
#include <fstream>
#include <gtest/gtest.h>
#include <map>
#include <random>
#include <set>
#include <sstream>

#include "jet/check/Checker.h"
#include "jet/page/Header.h"
#include "jet/salvage/Rebuild.h"
#include "jet/table/Catalog.h"
#include "jet/table/LongValue.h"
#include "tests/fuzz/Seeds.h"
#include "tests/jet/DefinitionPlaces.h"
#include "tests/jet/EditableFile.h"
#include "tests/jet/Hex.h"
#include "tests/support/Environment.h"
#include "tests/support/MemoryIo.h"
#include "tests/support/RandomValues.h"
#include "tests/support/SampleFile.h"
#include "tests/support/SoundFile.h"

namespace jet {
namespace {

constexpr const char* kDamages =
#include "tests/jet/damages.txt"
    ;

using Lines = std::vector<std::string>;

std::string numbered(std::uint64_t number) {
    return base::toUtf8(base::decimal(number));
}

/// The value as text; of a long one only its size and a checksum.
std::string printed(const base::Value& value) {
    const auto* bytes = std::get_if<base::Bytes>(&value);
    const auto* text = std::get_if<base::Text>(&value);
    if (bytes == nullptr && (text == nullptr || text->size() < 80)) return base::toUtf8(*test::literalOf(value));
    const base::Bytes whole = bytes != nullptr ? *bytes : base::Bytes(text->begin(), text->end());
    std::uint64_t sum = 0;
    for (const std::uint8_t byte : whole)
        sum = sum * 31 % 9973 + byte;
    return "(" + numbered(whole.size()) + " " + numbered(sum) + ")";
}

/// The contents of a file as text, one line for each table, column, index, relationship, property and row.
class Contents {
public:
    explicit Contents(PageSource& source) {
        const Catalog catalog(source);
        for (const CatalogEntry& entry : catalog.entries())
            if (entry.isLocalTable()) names_[entry.id] = base::toUtf8(entry.name);
        for (const CatalogEntry& entry : catalog.entries())
            if (entry.isLocalTable()) addTable(Table(source, entry));
    }

    Lines lines;

    /// The rows of the users' tables, each with the pages that are needed to read it.
    struct KnownRow {
        std::string text;
        std::set<PageNumber> pages;
    };
    std::vector<KnownRow> rows;

    static constexpr PageNumber kLongValues = 0xFFFFFFFF;  ///< stands for all pages of long values

private:
    void add(const std::string& line) { lines.push_back(table_ + line); }

    void addTable(const Table& table) {
        table_ = base::toUtf8(table.name()) + ": ";
        const TableDefinition& definition = table.definition();
        add("last number " + numbered(definition.lastAutoNumber));
        for (const Column& column : definition.columns) {
            std::ostringstream line;
            line << "column " << base::toUtf8(column.name) << ", type " << +static_cast<std::uint8_t>(column.type)
                 << ", " << column.lengthBytes << " bytes, flags " << +column.flags << ", " << +column.precision << "/"
                 << +column.scale << ", order " << column.textOrder.lcid;
            add(line.str());
        }
        for (const LogicalIndex& index : definition.logicalIndexes)
            addIndex(definition, index);
        for (const PropertyOwner& owner : table.properties().owners)
            for (const Property& property : owner.properties)
                add("property " + base::toUtf8(owner.name + u"." + property.name) + " " + toHex(property.data));
        for (RowCursor cursor(table); cursor.next();)
            addRow(table, cursor.row());
    }

    void addIndex(const TableDefinition& definition, const LogicalIndex& logical) {
        const IndexDefinition& index = definition.indexes[logical.dataBlock];
        std::ostringstream line;
        line << (logical.kind == LogicalIndex::Kind::PrimaryKey ? "primary key " : "index ")
             << base::toUtf8(logical.name) << ", flags " << +index.flags;
        for (const IndexColumn& part : index.columns)
            line << (part.ascending ? ", " : ", falling ") << base::toUtf8(definition.columnOf(part).name);
        if (logical.kind == LogicalIndex::Kind::ForeignKey)
            line << ", side " << +static_cast<std::uint8_t>(logical.side) << " with " << names_[logical.partnerTable]
                 << ", rules " << +logical.updateRule << +logical.deleteRule;
        add(line.str());
    }

    void addRow(const Table& table, const Row& row) {
        std::string line;
        std::set<PageNumber> pages(table.definition().chain.begin(), table.definition().chain.end());
        pages.insert({row.pointer.page, row.view.place().page});
        for (const Column& column : table.definition().columns) {
            const base::Value value = table.value(row.view, column);
            const bool dependsOnCreation = std::holds_alternative<base::Date>(value) || column.name == u"Owner";
            if (base::isNull(value) || (table.entry().isSystem() && dependsOnCreation)) continue;
            if (column.isLongValue()) pages.insert(kLongValues);
            line += (line.empty() ? "" : ", ") + base::toUtf8(column.name) + " " + printedIn(table, column, value);
        }
        add(line);
        if (!table.name().starts_with(u"MSys")) rows.push_back({line, pages});
    }

    /// The system tables name a table by its page, which is a new one in the rebuilt file.
    std::string printedIn(const Table& table, const Column& column, const base::Value& value) const {
        const auto* number = std::get_if<std::int32_t>(&value);
        const bool isId =
            table.name().starts_with(u"MSys") && (column.name.ends_with(u"Id") || column.name.ends_with(u"ID"));
        const auto name = isId && number != nullptr ? names_.find(static_cast<PageNumber>(*number)) : names_.end();
        return name == names_.end() ? printed(value) : name->second;
    }

    std::map<PageNumber, std::string> names_;
    std::string table_;
};

void addReport(const SalvageReport::Table& table, Lines& lines) {
    const std::string name = base::toUtf8(table.name) + " report: ";
    lines.push_back(name + numbered(table.wholeRows) + " whole, " + numbered(table.rowsWithLosses) + " with losses, " +
                    numbered(table.lostRows) + " lost");
    for (const base::Text& line : table.lines)
        lines.push_back(name + base::toUtf8(line));
}

/// Appends the lines to `text`, each after this sign. Of many lines with the same beginning only the first `limit` are
/// shown, of those about system tables only one.
void show(const Lines& lines, const std::string& sign, std::size_t limit, std::string& text) {
    const auto put = [&](const std::string& line) { text += "  " + sign + " " + line + "\n"; };
    const auto limitOf = [&](const std::string& line) { return line.starts_with("MSys") ? 1 : limit; };
    std::map<std::string, std::size_t> counts;
    for (const std::string& line : lines)
        if (++counts[line.substr(0, line.find(':'))] <= limitOf(line)) put(line);
    for (const auto& [beginning, count] : counts)
        if (count > limitOf(beginning)) put(beginning + ": " + numbered(count) + " in all");
}

/// Decimal and hexadecimal numbers become "#".
std::string withoutNumbers(const std::string& line) {
    std::string text;
    for (std::size_t at = 0; at < line.size();) {
        const std::size_t end = std::min(line.find_first_not_of("0123456789ABCDEF", at), line.size());
        const std::string run = line.substr(at, end - at);
        text += run.find_first_of("0123456789") == std::string::npos ? run : "#";
        text += line.substr(end, 1);
        at = end + 1;
    }
    return text;
}

Lines without(Lines lines, const Lines& others) {
    std::multiset<std::string> left(others.begin(), others.end());
    std::erase_if(lines, [&](const std::string& line) {
        const auto found = left.find(line);
        return found != left.end() && (left.erase(found), true);
    });
    return lines;
}

/// Applies the damages that tests/jet/damages.txt describes to a sound file.
class Damaged {
public:
    explicit Damaged(const base::Bytes& file) : bytes(file), sound_(file) {}

    /// @param offset  is added to the place
    void apply(const std::string& damage, std::size_t offset = 0) {
        std::istringstream words(damage);
        std::string first;
        words >> first;
        if (first == "password") {
            change([&](Header& header) { header.password = textFrom(words); });
        } else if (first == "given") {
            given = textFrom(words);
        } else if (first == "encoded") {
            isEncoded = true;
            bytes = test::encoded(bytes, 0x5EED1234);
        } else if (first != "none") {
            changeBytes(placeFrom(first, words) + offset, words);
        }
    }

    base::Bytes bytes;
    bool isEncoded = false;
    base::Text given;  ///< the password with which the file is to be repaired

private:
    static base::Text textFrom(std::istringstream& words) {
        std::string text;
        words >> text;
        return base::fromUtf8(text);
    }

    template <typename Change>
    void change(Change&& make) {
        Header header = Header::read(base::ByteView{std::span(bytes).first(kPageSize)});
        make(header);
        header.write(std::span(bytes).first(kPageSize));
    }

    /// "= 01 02", "^ 80", "zero 100", "cut"; before it, an offset such as "+7" or "-2".
    void changeBytes(std::size_t place, std::istringstream& words) {
        std::string word, hex;
        words >> word;
        if (word[0] == '+' || word[0] == '-') {
            place += static_cast<std::size_t>(std::stol(word));
            words >> word;
        }
        std::getline(words, hex);
        if (word == "cut") return bytes.resize(place);
        if (word == "zero") return std::fill_n(at(place), std::stoul(hex), std::uint8_t{0}), void();
        for (const std::uint8_t byte : fromHex(hex.substr(1))) {
            *at(place) = static_cast<std::uint8_t>(word == "^" ? *at(place) ^ byte : byte);
            ++place;
        }
    }
    base::Bytes::iterator at(std::size_t place) { return bytes.begin() + static_cast<std::ptrdiff_t>(place); }

    /// "page 5", or of a table: "Konten definition", "Konten column 2", "Konten row 7", ...
    std::size_t placeFrom(const std::string& first, std::istringstream& words) {
        std::size_t number = 0;
        if (first == "page") return words >> number, number * kPageSize;
        if (first == "global-map") return placeOf(bytesAt({1, 0}));
        const Table table = *openTable(sound_, base::fromUtf8(first));
        const TableDefinition& definition = table.definition();
        const std::size_t start = definition.page * kPageSize;
        std::string kind;
        words >> kind;
        if (kind == "definition") return start;
        if (kind == "map") return placeOf(bytesAt(definition.ownedPages));
        if (kind == "space") return placeOf(bytesAt(definition.pagesWithSpace));
        if (kind == "object") return placeOf(bytesAt(table.entry().row));
        if (kind == "object-slot") return slotOf(table.entry().row);
        words >> number;
        static const std::map<std::string, DefinitionPart> parts = {{"statistics", DefinitionPart::Statistics},
                                                                    {"column", DefinitionPart::Column},
                                                                    {"column-name", DefinitionPart::ColumnName},
                                                                    {"index", DefinitionPart::Index},
                                                                    {"logical", DefinitionPart::LogicalIndex},
                                                                    {"logical-name", DefinitionPart::LogicalName},
                                                                    {"maps", DefinitionPart::Maps}};
        if (const auto part = parts.find(kind); part != parts.end())
            return start + placeInDefinition(definition, part->second, number);
        if (kind == "root") return definition.indexes.at(number).rootPage * kPageSize;
        if (kind == "page") {
            PageNumber page = table.ownedPages().next(0).value();
            for (; number > 0; --number)
                page = table.ownedPages().next(page + 1).value();
            return page * kPageSize;
        }
        RowCursor cursor(table);
        for (std::size_t i = 0; i <= number; ++i)
            EXPECT_TRUE(cursor.next());
        const Row& row = cursor.row();
        if (kind == "slot") return slotOf(row.pointer);
        const auto bytesOfRow = bytesAt(row.view.place());
        if (kind == "row") return placeOf(bytesOfRow);
        if (kind == "row-end") return placeOf(bytesOfRow) + bytesOfRow.size();
        const auto stored = row.view.stored(*definition.column(textFrom(words)));
        if (kind == "value") return placeOf(stored);
        EXPECT_EQ(kind, "part");
        return placeOf(bytesAt(LongValueReference::read(stored, row.pointer).first));
    }

    std::size_t slotOf(RowPointer row) const { return row.page * kPageSize + slotPlace(row.slot); }
    std::span<const std::uint8_t> bytesAt(RowPointer row) {
        return DataPage(sound_.page(row.page)).slot(row.slot).bytes;
    }
    std::size_t placeOf(std::span<const std::uint8_t> view) const {
        return static_cast<std::size_t>(view.data() - sound_.bytes.data());
    }

    EditableFile sound_;
};

class DamageTable : public testing::Test {
protected:
    /// The contents of the rebuilt file, and the report. The rebuilt file must be sound.
    static Contents rebuilt(const Damaged& damaged) {
        test::MemoryIo io(damaged.bytes), made;
        DamagedFile file(io, u"Probe.mdb", damaged.given);
        const SalvageReport report = rebuild(file, made);
        Database database = Database::open(std::make_unique<test::MemoryIo>(made.bytes()), u"Neu.mdb", file.password());
        auto fresh = database.beginRead();
        EXPECT_EQ(test::faultsIn(fresh), "");
        Contents contents(fresh);
        for (const SalvageReport::Table& table : report.tables)
            addReport(table, contents.lines);
        addReport(report.file, contents.lines);
        for (const base::Text& remark : report.remarks)
            contents.lines.push_back("remark: " + base::toUtf8(remark));
        contents.lines.push_back("file: password '" + base::toUtf8(file.password()) + "', " +
                                 (fresh.header().databaseKey == 0 ? "plain" : "encoded"));
        return contents;
    }

    /// What the checker finds ("!"), and how the rebuilt file differs from that of the undamaged file ("-", "+").
    static std::string outcomeOf(const Damaged& damaged, const Lines& undamaged, std::size_t limit) {
        std::string text;
        if (!damaged.isEncoded) {
            EditableFile file(damaged.bytes);
            Lines found;
            const CheckResult result = checkDatabase(file, file.bytes.size());
            for (const Finding& finding : result.findings.kept())
                found.push_back(base::toUtf8(finding.line()));
            if (limit == 1) std::ranges::transform(found, found.begin(), withoutNumbers);
            show(found, "!", limit, text);
        }
        try {
            const Lines lines = rebuilt(damaged).lines;
            show(without(undamaged, lines), "-", limit, text);
            show(without(lines, undamaged), "+", limit, text);
        } catch (const base::RuntimeError& error) {
            text += "  refused: " + base::toUtf8(error.description()) + "\n";
        }
        return text;
    }

    /// "each 20" before a damage means: once for each of the 20 places from there on.
    std::string outcomeOf(const Lines& damages) const {
        std::size_t count = 1;
        Lines plain;
        for (const std::string& damage : damages) {
            const bool isForEach = damage.starts_with("each ");
            std::size_t end = 0;
            if (isForEach) count = std::stoul(damage.substr(5), &end);
            plain.push_back(isForEach ? damage.substr(6 + end) : damage);
        }
        const Lines undamaged = damages[0] == "none" ? contentsOf(sound_) : soundLines_;
        std::vector<std::pair<std::string, std::string>> outcomes;  // each with the places that lead to it
        for (std::size_t i = 0; i < count; ++i) {
            Damaged damaged(sound_);
            for (std::size_t k = 0; k < plain.size(); ++k)
                damaged.apply(plain[k], plain[k] == damages[k] ? 0 : i);
            const std::string outcome = outcomeOf(damaged, undamaged, count == 1 ? 2 : 1);
            auto same = std::ranges::find(outcomes, outcome, [](const auto& each) { return each.first; });
            if (same == outcomes.end()) same = outcomes.insert(same, {outcome, ""});
            same->second += " " + numbered(i);
        }
        std::string text;
        for (const auto& [outcome, places] : outcomes) {
            if (count > 1) text.append("  @").append(places).append("\n");
            text += outcome;
        }
        return text;
    }

    static Lines contentsOf(const base::Bytes& bytes) {
        EditableFile file(bytes);
        return Contents(file).lines;
    }

    const base::Bytes sound_ = relatedTables(60);
    const Lines soundLines_ = rebuilt(Damaged(sound_)).lines;
};

/// Each paragraph of damages.txt has a title, damages ("*"), and their exact outcome. If TOLV_DAMAGES names a file, the
/// table with the actual outcomes is written there.
TEST_F(DamageTable, EachDamageHasExactlyTheOutcomeInTheTable) {
    std::istringstream table(kDamages);
    std::ostringstream out;
    std::string line, title, expected;
    Lines damages;
    while (std::getline(table, line)) {
        if (line.starts_with("  * ")) damages.push_back(line.substr(4));
        const bool isExpected = line.starts_with("  ") && !line.starts_with("  * ");
        if (isExpected) expected += line + "\n";
        if (line.empty() && !damages.empty()) {
            SCOPED_TRACE(title);
            const std::string outcome = outcomeOf(damages);
            EXPECT_EQ(outcome, expected);
            out << outcome;
            damages.clear();
            expected.clear();
        }
        if (!line.starts_with("  ")) title = line;
        if (!isExpected) out << line << "\n";
    }
    if (const char* path = std::getenv("TOLV_DAMAGES")) std::ofstream(path) << "R\"table(" << out.str() << ")table\"\n";
}

/// Damages some pages at random, never the first, and sometimes cuts the file off. @return the damaged pages
std::set<PageNumber> harm(base::Bytes& file, std::mt19937& random) {
    const base::Bytes sound = file;
    const auto below = [&](std::size_t limit) { return static_cast<std::size_t>(random() % limit); };
    if (below(8) == 0) file.resize(file.size() / 4 + below(file.size() * 3 / 4));
    for (std::size_t pages = 1 + below(5); pages > 0; --pages) {
        const auto page = std::span(file).subspan((1 + below(file.size() / kPageSize - 1)) * kPageSize, kPageSize);
        if (below(8) == 0) std::ranges::fill(page, std::uint8_t{0});
        for (std::size_t changes = 1 + below(60); changes > 0; --changes)
            page[below(below(2) == 0 ? 100 : kPageSize)] = static_cast<std::uint8_t>(below(256));
    }
    std::set<PageNumber> harmed;
    for (std::size_t at = 0; at < sound.size(); ++at)
        if (at >= file.size() || file[at] != sound[at]) harmed.insert(static_cast<PageNumber>(at / kPageSize));
    return harmed;
}

/// TOLV_SALVAGE gives more copies, TOLV_RANDOM_SEED other ones, and TOLV_CORPUS adds files by other programs.
TEST_F(DamageTable, RowsOnUndamagedPagesAreRecoveredAndNoOthers) {
    const std::uint32_t count = test::environmentNumber("TOLV_SALVAGE", 60);
    const std::uint32_t randomSeed = test::environmentNumber("TOLV_RANDOM_SEED", 1);
    std::mt19937 random(randomSeed);
    std::size_t required = 0;
    for (const Seed& seed : seeds()) {
        if (seed.name.find("V1997") != std::string::npos) continue;
        EditableFile sound(seed.file);
        const Contents truth(sound);
        for (std::uint32_t copy = 0; copy < count / 5; ++copy) {
            SCOPED_TRACE(seed.name + ", random seed " + std::to_string(randomSeed) + ", copy " + std::to_string(copy));
            Damaged damaged(seed.file);
            damaged.given = Header::read(sound.page(0).bytes).password;
            if (copy % 3 == 0) damaged.apply("encoded");
            std::set<PageNumber> harmed = harm(damaged.bytes, random);
            const auto isHarmedOf = [&](std::uint32_t owner) {
                return std::ranges::any_of(harmed,
                                           [&](PageNumber page) { return sound.u32(page, kOwnerOffset) == owner; });
            };
            // If its catalog row is damaged, a hidden table of Access looks like one of the user.
            bool mayHaveOthers = isHarmedOf(CatalogEntry::kDefinitionOfCatalog);
            if (isHarmedOf(kLongValueOwner)) harmed.insert(Contents::kLongValues);
            Lines wanted, all, found;
            for (const Contents::KnownRow& row : truth.rows) {
                const bool isHarmed =
                    std::ranges::any_of(row.pages, [&](PageNumber page) { return harmed.contains(page); });
                mayHaveOthers = mayHaveOthers || isHarmed;
                all.push_back(row.text);
                if (!isHarmed) wanted.push_back(row.text);
            }
            for (const Contents::KnownRow& row : rebuilt(damaged).rows)
                found.push_back(row.text);
            EXPECT_EQ(without(wanted, found), Lines());
            EXPECT_TRUE(mayHaveOthers || without(found, all).empty());
            required += wanted.size();
        }
    }
    EXPECT_GT(required, 30U * count);
}

}  // namespace
}  // namespace jet
