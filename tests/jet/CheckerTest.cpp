#include <algorithm>
#include <gtest/gtest.h>
#include <set>
#include <sstream>

#include "jet/check/Checker.h"
#include "tests/fuzz/Seeds.h"
#include "tests/jet/CheckerDamages.h"

namespace jet {
namespace {

CheckResult check(FileAtHand& file) {
    return checkDatabase(file, file.bytes.size());
}

std::string linesOf(const CheckResult& result) {
    std::ostringstream lines;
    for (const Finding& finding : result.findings.kept())
        lines << base::toUtf8(finding.line()) << "\n";
    return lines.str();
}

bool hasFault(const CheckResult& result, base::TextView part) {
    const auto& all = result.findings.kept();
    return std::any_of(all.begin(), all.end(), [&](const Finding& finding) {
        return finding.kind == Finding::Kind::Fault && finding.line().find(part) != base::Text::npos;
    });
}

TEST(Checker, FindsNothingInSoundFiles) {
    FileAtHand file(relatedTables());
    const CheckResult result = check(file);
    EXPECT_EQ(linesOf(result), "");
    EXPECT_EQ(result.counts.tables, 6U);
    EXPECT_EQ(result.counts.longValues, 4U + 2U) << "memos, and the properties of two tables";
    for (const Seed& seed : seeds()) {
        if (seed.name.find('.') != std::string::npos) continue;  // made by other programs
        FileAtHand other(seed.file);
        EXPECT_EQ(linesOf(check(other)), "") << seed.name;
    }
}

TEST(Checker, FindsEachDamageAndNamesItsPlace) {
    const base::Bytes sound = relatedTables();
    const auto all = damages();
    EXPECT_GE(all.size(), 20U);
    for (const Damage& damage : all) {
        FileAtHand file(sound);
        const base::Text wanted = damage.apply(file);
        ASSERT_NE(file.bytes, sound) << damage.name;
        const CheckResult result = check(file);
        EXPECT_TRUE(hasFault(result, wanted)) << damage.name << ": wanted " << base::toUtf8(wanted) << "\n"
                                              << linesOf(result);
    }
}

TEST(Checker, GoesOnAfterAFault) {
    FileAtHand file(relatedTables());
    // Each damage is in another structure.
    std::vector<base::Text> wanted;
    for (const Damage& damage : damages()) {
        if (damage.name == "a commit word of 0" || damage.name == "a relationship that is not described" ||
            damage.name == "two rows share a memo" || damage.name == "bits behind the null mask") {
            wanted.push_back(damage.apply(file));
        }
    }
    ASSERT_EQ(wanted.size(), 4U);
    const CheckResult result = check(file);
    for (const base::Text& each : wanted)
        EXPECT_TRUE(hasFault(result, each)) << base::toUtf8(each) << "\n" << linesOf(result);
}

/// Known leftovers of other writers. Each is reported, and none is a fault.
TEST(Checker, ReportsHarmlessOdditiesAsNotes) {
    FileAtHand file(relatedTables());
    const PageNumber konten = openTable(file, u"Konten")->definition().page;
    base::putU32(file.at(konten), 16, 402);
    base::putU32(file.at(konten), 20, 17);  // last auto number
    base::putU32(file.at(3), 16, 1);        // row count of a system table
    // The data of a moved row to which no row points.
    const PageNumber page = *openTable(file, u"Zweite")->ownedPages().next(0);
    const base::Bytes row(DataPage(file.page(page)).slot(0).bytes.begin(),
                          DataPage(file.page(page)).slot(0).bytes.end());
    appendRow(file.at(page), row, SlotState::Hidden);
    // The map of free pages begins only at page 8. It calls the last page used, although nothing uses it.
    file.bytes.resize(file.bytes.size() + kPageSize);
    const auto map = DataPage(file.page(1)).slot(0).bytes;
    const auto bits = file.bytes.begin() + (map.data() - file.bytes.data()) + 5;
    const PageNumber last = file.pageCount() - 1;
    bits[last / 8] &= static_cast<std::uint8_t>(~(1U << (last % 8)));
    std::shift_left(bits, bits + 64, 1);
    base::putU32(file.bytes, static_cast<std::size_t>(bits - file.bytes.begin()) - 4, 8);
    const CheckResult result = check(file);
    EXPECT_TRUE(result.isSound()) << linesOf(result);
    EXPECT_EQ(result.findings.noteCount(), 6U) << linesOf(result);
}

TEST(Checker, KeepsABoundedNumberOfFindings) {
    FileAtHand file(relatedTables());
    for (std::size_t user = 0; user < 256; ++user)
        base::putU16(file.at(0), 0xE00 + 2 * user, 0);
    const PageNumber leaf = openTable(file, u"Konten")->definition().indexes[0].rootPage;
    std::fill_n(file.at(leaf).begin(), kPageSize, std::uint8_t{0});
    const CheckResult result = check(file);
    EXPECT_GT(result.findings.faultCount(), 256U);
    EXPECT_LE(result.findings.kept().size(), 2 * Findings::kMaxKept);
    EXPECT_LT(result.findings.faultCount(), 300U) << "a lost tree is told in a few sentences";
}

}  // namespace
}  // namespace jet
