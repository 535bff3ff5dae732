#include <gtest/gtest.h>

#include "jet/value/TextCodec.h"
#include "tests/jet/Hex.h"

namespace jet {
namespace {

struct StoredText {
    base::Text text;
    std::string plain;       ///< bytes if the column does not compress
    std::string compressed;  ///< bytes if the column compresses
};

TEST(TextCodec, StoresTextAsTheOriginalEngineDoes) {
    const StoredText cases[] = {
        {u"", "", ""},
        {u"ab", "61 00 62 00", "61 00 62 00"},  // compressing two units would save nothing
        {u"abc", "61 00 62 00 63 00", "FF FE 61 62 63"},
        {u"Größe", "47 00 72 00 F6 00 DF 00 65 00", "FF FE 47 72 F6 DF 65"},
        {u"abcŁ", "61 00 62 00 63 00 41 01", "61 00 62 00 63 00 41 01"},
        {u"a\u4E00bc", "61 00 00 4E 62 00 63 00", "61 00 00 4E 62 00 63 00"},
        {base::Text(u"a\0bc", 4), "61 00 00 00 62 00 63 00", "61 00 00 00 62 00 63 00"},
        {base::Text(1, u'\xD800'), "00 D8", "00 D8"},
        // Stored plainly, the text would begin like a compressed one.
        {u"\uFEFFab\u0141", "FF FE 00 FF FE 00 61 62 00 41 01", "FF FE 00 FF FE 00 61 62 00 41 01"},
    };
    for (const StoredText& each : cases) {
        EXPECT_EQ(toHex(encodeText(each.text, false)), each.plain);
        EXPECT_EQ(toHex(encodeText(each.text, true)), each.compressed);
        for (const std::string& stored : {each.plain, each.compressed}) {
            base::Text text = u"left over";
            EXPECT_TRUE(decodeText(fromHex(stored), text)) << stored;
            EXPECT_EQ(text, each.text) << stored;
        }
    }
}

TEST(TextCodec, ReadsTextThatSwitchesItsModeAndReportsHalfUnits) {
    base::Text text;
    EXPECT_TRUE(decodeText(fromHex("FF FE 76 2E 20 00 7F 62 8D 8A"), text));
    EXPECT_EQ(text, u"v. \u627F\u8A8D");
    EXPECT_TRUE(decodeText(fromHex("FF FE 61 00 41 01 00 62 00"), text));
    EXPECT_EQ(text, u"aŁb");
    EXPECT_TRUE(decodeText(fromHex("FF FE 00 00 61"), text));
    EXPECT_EQ(text, u"a");
    EXPECT_FALSE(decodeText(fromHex("61 00 62"), text));
    EXPECT_FALSE(decodeText(fromHex("FF FE 61 00 41"), text));
}

}  // namespace
}  // namespace jet
