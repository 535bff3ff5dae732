#include <gtest/gtest.h>

#include "base/ByteView.h"
#include "base/Text.h"

namespace base {
namespace {

TEST(Text, Utf8RoundTripsAndMalformedBytesAreReplaced) {
    const Text limits(u"\0\u0080\u0800\uFFFF\U00010000\U0010FFFF", 8);  // first and last of each UTF-8 length
    const std::string valid = "a\xC3\xBC\xE2\x82\xAC\xE6\x9D\x8E\xF0\x9F\x98\x80" + toUtf8(limits);
    EXPECT_EQ(toUtf8(fromUtf8(valid)), valid);
    EXPECT_EQ(fromUtf8(valid), u"aü€李\U0001F600" + limits);

    struct Case {
        std::string bytes;
        Text text;
    };
    for (const Case& c : {Case{"\xC3", u"\uFFFD"}, Case{"\xC0\x80", u"\uFFFD\uFFFD"},
                          Case{"\xED\xA0\x80x", u"\uFFFD\uFFFD\uFFFDx"}, Case{"\xF5\x80", u"\uFFFD\uFFFD"},
                          Case{"\xE0\x9F\xBF", Text(3, u'\uFFFD')}, Case{"\xF0\x8F\xBF\xBF", Text(4, u'\uFFFD')},
                          Case{"\xF4\x90\x80\x80", Text(4, u'\uFFFD')}, Case{"\xE2\x82z", u"\uFFFD\uFFFDz"}}) {
        EXPECT_EQ(fromUtf8(c.bytes), c.text) << c.bytes;
    }
    EXPECT_EQ(toUtf8(Text{0xD800, u'x', 0xDC00}), "\xEF\xBF\xBDx\xEF\xBF\xBD");
}

TEST(Text, Windows1252RoundTripsEveryByteAndReplacesOtherCharacters) {
    std::string all;
    for (int byte = 0; byte < 256; ++byte)
        all.push_back(static_cast<char>(byte));
    EXPECT_EQ(toWindows1252(fromWindows1252(all)), all);
    EXPECT_EQ(fromWindows1252("\x80\xFC"), u"€ü");
    EXPECT_EQ(toWindows1252(u"Łuk李€"), "?uk?\x80");
}

TEST(Text, OnlyBlanksAreTrimmed) {
    EXPECT_EQ(trimBlanks(u"  a b  "), u"a b");
    EXPECT_EQ(trimBlanks(u"   "), u"");
    EXPECT_EQ(trimBlanks(u"\t a\u00A0"), u"\t a\u00A0");
}

TEST(ByteView, ReadsOutsideTheBytesThrow) {
    const std::uint8_t bytes[] = {1, 2, 3, 0x80};
    const ByteView view{bytes};
    EXPECT_EQ(view.u16(1), 0x0302);
    EXPECT_EQ(view.i32(0), static_cast<std::int32_t>(0x80030201));
    EXPECT_THROW(view.u32(1), ByteRangeError);
    EXPECT_THROW(view.u8(4), ByteRangeError);
    EXPECT_THROW(view.slice(static_cast<std::size_t>(-1), 2), ByteRangeError);
    EXPECT_THROW(view.slice(2, static_cast<std::size_t>(-1)), ByteRangeError);
    EXPECT_EQ(view.slice(4, 0).size(), 0U);
}

}  // namespace
}  // namespace base
