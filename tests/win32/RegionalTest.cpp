#include <compare>
#include <gtest/gtest.h>
#include <vector>

#include "tests/support/Expect.h"
#include "win32/SystemRegional.h"

namespace {

using test::errorOf;
using win32::SystemRegional;

// These tests need the German locale, in which ./test runs them.

TEST(SystemRegional, ReadsWholeNumbersAsTheUsersLanguageWritesThem) {
    const SystemRegional regional;
    const struct {
        const char16_t* text;
        std::int32_t number;
    } cases[] = {{u"0042", 42}, {u" 42 ", 42}, {u"+5", 5},     {u"-2,5", -2},    {u"1,5", 2},
                 {u"2,5", 2},   {u"3,5", 4},   {u"1e3", 1000}, {u"1.234", 1234}, {u"2147483647,4", 2147483647}};
    for (const auto& c : cases)
        EXPECT_EQ(regional.toLong(c.text), c.number) << base::toUtf8(c.text);
    for (const auto* unreadable : {u"", u" ", u"abc", u"1 2", u"Wahr"})
        EXPECT_EQ(errorOf([&] { regional.toLong(unreadable); }), 13) << base::toUtf8(unreadable);
    for (const auto* tooLarge : {u"3000000000", u"2147483647,5"})
        EXPECT_EQ(errorOf([&] { regional.toLong(tooLarge); }), 6) << base::toUtf8(tooLarge);
}

TEST(SystemRegional, ReadsDatesInTheUsersOrderAndRefusesOtherTexts) {
    const SystemRegional regional;
    EXPECT_EQ(regional.toSortableDate(u"24.12.2023"), u"20231224");
    EXPECT_EQ(regional.toSortableDate(u"12.24.2023"), u"20231224");
    EXPECT_EQ(regional.toSortableDate(u"01.02.2023"), u"20230201");
    for (const auto* none : {u"31.02.2023", u"29.02.2023", u"13.13.2023", u"2023122401", u"Benutzer 1", u""})
        EXPECT_EQ(regional.toSortableDate(none), std::nullopt) << base::toUtf8(none);
}

TEST(SystemRegional, GivesValuesTheTextThatTheUserWouldWrite) {
    const SystemRegional regional;
    const std::pair<base::Value, const char16_t*> cases[] = {
        {true, u"Wahr"},
        {false, u"Falsch"},
        {std::int32_t{-7}, u"-7"},
        {std::uint8_t{255}, u"255"},
        {1.5, u"1,5"},
        {0.1 + 0.2, u"0,3"},
        {1e20, u"1E+20"},
        {base::Currency{125000}, u"12,5"},
        {base::Decimal{true, 2, {1234, 0, 0, 0}}, u"-12,34"},
        {base::Date{45284.0}, u"24.12.2023"},
        {base::Text(u"Grünhuber & Söhne "), u"Grünhuber & Söhne "},
        {base::Guid{{0x67, 0x45, 0x23, 0x01, 0xAB, 0x89, 0xEF, 0xCD, 1, 2, 3, 4, 5, 6, 7, 8}},
         u"{01234567-89AB-CDEF-0102-030405060708}"},
    };
    for (const auto& [value, text] : cases)
        EXPECT_EQ(base::toUtf8(regional.toText(value)), base::toUtf8(text));
    EXPECT_EQ(errorOf([&] { regional.toText(base::Null{}); }), 94);
    EXPECT_EQ(errorOf([&] { regional.toText(base::Bytes{1}); }), 13);
}

TEST(SystemRegional, ComparesInTheOrderOfTheLanguageIgnoringCase) {
    const SystemRegional regional;
    EXPECT_EQ(regional.compare(u"MÜLLER", u"müller"), 0);
    EXPECT_LT(regional.compare(u"Öl", u"Pol"), 0);
    EXPECT_LT(regional.compare(u"a", u"B"), 0);
    EXPECT_LT(regional.compare(u"", u"a"), 0);
    EXPECT_GT(regional.compare(u"a", {}), 0);
    EXPECT_EQ(regional.compare({}, {}), 0);
}

TEST(SystemRegional, SortKeysHaveTheOrderInWhichTheTextsCompare) {
    const SystemRegional regional;
    std::vector<base::Text> texts{u"", base::Text(u"a\0b", 3), base::Text(3000, u'ß')};
    const base::Text listed =
        u"a|A|ä|Ae|Öl|Pol|Müller|MÜLLER|Mueller|Muller| a|a |a-b|ab|O'Neil|Straße|Strasse|STRASSE|9|10|C:\\A|C:\\a\\b|"
        u"\\\\server\\x|№ 5|Иванов|иванов|名前|\U0001F600|a_b|a.b|coté|côte|cote|(x)|x|x1|";
    for (std::size_t start = 0, end = 0; (end = listed.find(u'|', start)) != base::Text::npos; start = end + 1)
        texts.push_back(listed.substr(start, end - start));
    for (const base::Text& a : texts) {
        for (const base::Text& b : texts) {
            EXPECT_TRUE((regional.sortKey(a) <=> regional.sortKey(b)) == (regional.compare(a, b) <=> 0))
                << base::toUtf8(a) << " and " << base::toUtf8(b);
        }
    }
}

}  // namespace
