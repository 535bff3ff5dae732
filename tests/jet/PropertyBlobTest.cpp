#include <gtest/gtest.h>

#include "jet/table/PropertyBlob.h"
#include "tests/jet/Hex.h"
#include "tests/jet/PagesInMemory.h"

namespace jet {
namespace {

/// The object itself has "AccessVersion", a text 08.50, and "Build" 6620.
constexpr const char* kSample =
    "4D 52 32 00"
    " 2E 00 00 00 80 00 1A 00 41 00 63 00 63 00 65 00 73 00 73 00 56 00 65 00 72 00 73 00 69 00 6F 00 6E 00"
    " 0A 00 42 00 75 00 69 00 6C 00 64 00"
    " 2A 00 00 00 00 00 06 00 00 00 00 00"
    " 12 00 00 0A 00 00 0A 00 30 00 38 00 2E 00 35 00 30 00"
    " 0C 00 00 04 01 00 04 00 DC 19 00 00";

TEST(PropertyBlob, ReadsAndWritesTheSameBytes) {
    const base::Bytes bytes = fromHex(kSample);
    PropertyBlob blob = PropertyBlob::read(bytes, {});
    ASSERT_NE(blob.find({}, u"accessversion"), nullptr);
    EXPECT_EQ(blob.find({}, u"AccessVersion")->asText(), u"08.50");
    EXPECT_EQ(toHex(blob.find({}, u"Build")->data), "DC 19 00 00");
    EXPECT_EQ(blob.find(u"Spalte", u"Build"), nullptr);
    EXPECT_EQ(blob.encode(), bytes);

    blob.unknownChunks.push_back({0x55, {1, 2, 3}});
    blob.owners.push_back({1, u"Spalte", {{u"Required", 1, 1, {1}}, {u"DefaultValue", 1, 12, fromHex("30 00")}}});
    const PropertyBlob again = PropertyBlob::read(blob.encode(), {});
    EXPECT_TRUE(again.isRequired(u"SPALTE"));
    EXPECT_FALSE(again.allowsZeroLength(u"Spalte"));
    EXPECT_EQ(again.encode(), blob.encode());
    EXPECT_TRUE(PropertyBlob::read({}, {}).owners.empty());
}

TEST(PropertyBlob, ReportsImpossibleBytes) {
    const base::Bytes sound = fromHex(kSample);
    for (std::size_t count = 1; count < sound.size(); ++count) {
        if (count == 4 || count == 50) continue;  // these cuts are between two chunks
        EXPECT_THROW(PropertyBlob::read(std::span(sound).first(count), {}), base::RuntimeError) << count;
    }
    for (const std::size_t offset : {0U, 4U, 50U, 56U, 62U, 66U, 68U}) {
        base::Bytes harmed = sound;
        harmed[offset] = 0xFF;
        EXPECT_THROW(PropertyBlob::read(harmed, {}), base::RuntimeError) << offset;
        harmed[offset] = 0;  // a size of 0 must not cause an endless loop
        errorOf([&] { PropertyBlob::read(harmed, {}); });
    }
}

}  // namespace
}  // namespace jet
