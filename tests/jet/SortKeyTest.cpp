#include <algorithm>
#include <gtest/gtest.h>
#include <iterator>
#include <string>

#include "jet/value/SortKey.h"
#include "tests/jet/Hex.h"

namespace jet {
namespace {

using base::Text;
using base::TextView;

TEST(SortKey, IsTheKeyThatTheOriginalEngineStores) {
    struct Case {
        Text text;
        std::string key;  // without the flag byte
    };
    const std::string twentySix = "02 02 02 02 02 02 02 02 02 02 02 02 02 02 02 02 02 02 02 02 02 02 02 02 02 02 ";
    for (
        const Case& c : {
            Case{u"", "01 00"},
            Case{u"Chai", "4D 57 4A 59 01 00"},
            Case{u"ümlaut", "6F 60 5E 4A 6F 6D 01 13 00"},
            Case{u"ääkkösiä", "4A 4A 5C 5C 64 6B 59 4A 01 13 13 02 02 13 02 02 13 00"},
            Case{u"AAßAA", "4A 4A 6B 6B 4A 4A 01 00"},
            Case{u"Frankfurt a.M. ", "53 69 4A 62 5C 53 6F 69 6D 07 4A 1C 60 1C 01 00"},
            Case{
                u"Jack's New England Clam Chowder",
                "5B 4A 4D 5C 6B 07 62 51 73 07 51 62 55 5E 4A 62 4F 07 4D 5E 4A 60 07 4D 57 64 73 4F 51 69 01 01 01 01 "
                "80 17 06 80 00"},
            // For the positions of what follows it, an eszett counts as two letters.
            Case{
                u"NuNuCa Nuß-Nougat-Creme",
                "62 6F 62 6F 4D 4A 07 62 6F 6B 6B 62 64 6F 55 4A 6D 4D 69 51 60 51 01 01 01 01 80 33 06 82 80 4B 06 82 "
                "00"},
            Case{
                u"Plutzer Lebensmittelgroßmärkte AG",
                "66 5E 6F 6D 78 51 69 07 5E 51 4C 51 62 6B 60 59 6D 6D 51 5E 55 69 64 6B 6B 60 4A 69 5C 6D 51 07 4A 55 "
                "01 " +
                    twentySix + "13 00"},
            Case{u"-\u00A0Á--Á\u00A0-",
                 "08 02 4A 4A 08 02 01 02 0E 0E 01 01 01 80 07 06 82 80 0F 06 82 80 0F 06 82 80 17 06 82 00"},
            Case{u"Мир", "79 43 79 3B 79 48 01 00"},
            Case{u"漢字仮名交じり文",
                 "C0 B6 AC AC A0 0D A5 47 9F BE 7F 13 7F 43 B6 F6 01 02 02 02 02 02 03 01 01 FF 02 80 FF 80 00"},
            Case{u"Müller", "60 6F 5E 5E 51 69 01 02 13 00"},
            Case{u"O'Brien", "64 4C 69 59 51 62 01 01 01 01 80 0B 06 80 00"},
            // Small kana have a flag, plain ones only between small ones. Marks come after the kana.
            Case{u"\u3041\u3042\u3041-", "7F 02 7F 02 7F 02 01 01 01 AE FF 02 80 FF 80 FF 01 80 13 06 82 00"},
            // An accent without a letter before it comes first and does not move any mark.
            Case{u"\u0308-a", "4A 01 11 01 01 01 80 07 06 82 00"},
        }) {
        EXPECT_EQ(toHex(sortKey(c.text)), c.key) << base::toUtf8(c.text);
    }
}

TEST(SortKey, TextsThatTheDatabaseCannotTellApartAreEqual) {
    const struct {
        Text a, b;
    } equal[] = {
        {u"Meier", u"MEIER"},
        {u"ÄÖÜ", u"äöü"},
        {u"Straße", u"STRASSE"},
        {u"abc", u"abc  "},
        {u"Ægir", u"aegir"},
        {u"Œuvre", u"oeuvre"},
        {u"x²", u"x2"},
        {Text(u"a\0b", 3), u"ab"},
        {u"\uFB01x", u"fix"},
        {u"", u"   "},
        {u"Müller", u"Mu\u0308ller"},
        {u"Þ", u"th"},
        {u"STRA\u1E9EE", u"STRAE"},
        {u"\uFF21", u"a"},
        {u"\u01C4", u"d\u017E"},
        {Text(255, u'x'), Text(255, u'x') + u"tail"},
        // The text is cut off first; then the blank that is now at its end is removed.
        {Text(254, u'x') + u" y", Text(254, u'x')},
    };
    for (const auto& c : equal)
        EXPECT_TRUE(textsAreEqual(c.a, c.b)) << base::toUtf8(c.a) << " / " << base::toUtf8(c.b);

    const struct {
        Text a, b;
    } different[] = {{u"Müller", u"Mueller"}, {u"Müller", u"Muller"},
                     {u"O'Brien", u"OBrien"}, {u"Karl-Heinz", u"KarlHeinz"},
                     {u" a", u"a"},           {u"a\u00A0", u"a"},
                     {u"a\t", u"a"},          {Text{0xD83D, 0xDE00}, Text{0xD83D, 0xDE01}},
                     {Text{0xD83D}, u""}};
    for (const auto& c : different)
        EXPECT_FALSE(textsAreEqual(c.a, c.b)) << base::toUtf8(c.a) << " / " << base::toUtf8(c.b);
}

TEST(SortKey, TextsAreInDictionaryOrder) {
    const TextView ordered[] = {u"",        u"1",      u"10",      u"9",       u"co",         u"coop",
                                u"co-op",   u"coopt",  u"Maier",   u"Mueller", u"Muller",     u"Müller",
                                u"Mullers", u"OBrien", u"O'Brien", u"O-Brien", u"Strass",     u"Straße",
                                u"Straßen", u"Zebra",  u"Мир",     u"漢字",    u"\U0001F600", u"\U0001F601"};
    for (std::size_t i = 1; i < std::size(ordered); ++i)
        EXPECT_EQ(compareTexts(ordered[i - 1], ordered[i]), std::strong_ordering::less) << base::toUtf8(ordered[i]);
    for (char16_t surrogate = 0xD800; surrogate < 0xDFFF; ++surrogate)
        EXPECT_EQ(compareTexts({&surrogate, 1}, Text(1, static_cast<char16_t>(surrogate + 1))),
                  std::strong_ordering::less);
    // French compares the accents from the end.
    EXPECT_EQ(compareTexts(u"coté", u"côte"), std::strong_ordering::less);
    EXPECT_EQ(compareTexts(u"coté", u"côte", {0x040C, 0}), std::strong_ordering::greater);
}

TEST(SortKey, OnlyKeysThatTheOriginalEngineIsKnownToStoreAreCertain) {
    EXPECT_TRUE(sortKeyIsCertain(u"Straße-Müller"));
    EXPECT_TRUE(sortKeyIsCertain(Text(255, u'x') + Text{0xD83D}));  // only the first 255 units count
    EXPECT_FALSE(sortKeyIsCertain(Text{u'a', 0xDE00}));
    EXPECT_FALSE(sortKeyIsCertain(Text(255, u'ü')));  // 512 bytes
    EXPECT_FALSE(sortKeyIsCertain(Text(200, u'-')));
    EXPECT_TRUE(sortKeyIsCertain(u"a", {0x040C, 0}));
    EXPECT_FALSE(sortKeyIsCertain(u"a", {0x0407, 0}));
    EXPECT_FALSE(sortKeyIsCertain(u"a", {0x0409, 1}));
    // The longest possible keys: three letters per unit, and nothing but marks.
    EXPECT_EQ(sortKey(Text(255, u'\uFB03')).size(), 255U * 3 + 2);
    EXPECT_EQ(sortKey(Text(255, u'-')).size(), 4U + 255 * 4 + 1);
}

TEST(SortKey, NoUnitPutsATerminatorIntoAKey) {
    // It would break the order of longer texts.
    for (unsigned unit = 0; unit < 0x10000; ++unit) {
        const base::Bytes key = sortKey(Text{u'a', static_cast<char16_t>(unit), u'a'});
        ASSERT_EQ(std::find(key.begin(), key.end(), 0), key.end() - 1) << unit;
    }
}

}  // namespace
}  // namespace jet
