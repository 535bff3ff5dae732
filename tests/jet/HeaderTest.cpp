#include <gtest/gtest.h>

#include "jet/page/Header.h"
#include "jet/page/PageSource.h"
#include "jet/page/Rc4.h"
#include "tests/jet/Hex.h"

namespace jet {
namespace {

TEST(Rc4, GivesTheKnownStream) {
    const std::string key = "Wiki";
    base::Bytes bytes = fromHex("70 65 64 69 61");  // "pedia"
    Rc4(std::span(reinterpret_cast<const std::uint8_t*>(key.data()), key.size())).apply(bytes);
    EXPECT_EQ(toHex(bytes), "10 21 BF 04 20");
}

TEST(Header, IsMaskedAndItsPasswordIsMaskedTwice) {
    Header header = Header::fresh({38143.5});  // 38143 is 0x94FF, so the mask changes every second unit only
    header.password = u"HwendorpliqZ";
    base::Bytes page(kPageSize);
    header.write(page);
    // 00 01 00 00 01 01 00 00, masked with the stream B5 6F 03 62 61 08 C2 55 ...
    EXPECT_EQ(toHex(std::span(page).subspan(0x18, 8)), "B5 6E 03 62 60 09 C2 55");
    Rc4(fromHex("C7 DA 39 6B")).apply(std::span(page).subspan(0x18, 128));
    EXPECT_EQ(toHex(std::span(page).subspan(0x42, 6)), "B7 94 77 00 9A 94");
    EXPECT_EQ(toHex(std::span(page).subspan(0x42 + 24, 4)), "FF 94 00 00");
    Rc4(fromHex("C7 DA 39 6B")).apply(std::span(page).subspan(0x18, 128));

    page[0xB00] = 0xEE;  // a byte of unknown meaning is kept
    Header read = Header::read(base::ByteView(page));
    EXPECT_EQ(read.password, u"HwendorpliqZ");
    EXPECT_EQ(read.created, base::Date{38143.5});
    base::Bytes again(kPageSize);
    read.write(again);
    EXPECT_EQ(again, page);

    read.password = base::Text(20, u'Z');  // no room for a terminator
    read.created = {45000.25};
    read.write(again);
    EXPECT_EQ(Header::read(base::ByteView(again)).password, base::Text(20, u'Z'));
}

}  // namespace
}  // namespace jet
