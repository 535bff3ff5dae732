#include <gtest/gtest.h>

#include "jet/table/LongValue.h"
#include "tests/jet/Hex.h"
#include "tests/jet/PagesInMemory.h"

namespace jet {
namespace {

base::Bytes reference(LongValueKind kind, std::uint32_t lengthBytes, RowPointer first) {
    base::Bytes bytes;
    LongValueReference{kind, lengthBytes, first, 0}.append(bytes);
    return bytes;
}

/// A part of a chain: a pointer to the next part, then data.
base::Bytes part(RowPointer next, std::size_t dataBytes) {
    base::Bytes bytes(4 + dataBytes, 0x5A);
    base::putU32(bytes, 0, next.packed());
    return bytes;
}

TEST(LongValue, ReadsAllThreeKinds) {
    PagesInMemory source;
    EXPECT_EQ(inlineLongValue(fromHex("01 02")), fromHex("02 00 00 80 00 00 00 00 00 00 00 00 01 02"));
    EXPECT_EQ(readLongValue(source, inlineLongValue(fromHex("01 02")), {}), fromHex("01 02"));
    EXPECT_EQ(readLongValue(source, inlineLongValue({}), {}), base::Bytes{});
    EXPECT_EQ(readLongValue(source, {}, {}), base::Bytes{});

    const PageNumber shared = source.addDataPage(kLongValueOwner, {fromHex("01"), fromHex("07 08 09")});
    EXPECT_EQ(readLongValue(source, reference(LongValueKind::SingleRow, 3, {shared, 1}), {}), fromHex("07 08 09"));

    const PageNumber last = source.addDataPage(kLongValueOwner, {part({}, 10)});
    const PageNumber first = source.addDataPage(kLongValueOwner, {part({last, 0}, kLongValuePartBytes)});
    EXPECT_EQ(readLongValue(source, reference(LongValueKind::Chain, kLongValuePartBytes + 10, {first, 0}), {}),
              base::Bytes(kLongValuePartBytes + 10, 0x5A));
}

TEST(LongValue, ReportsImpossibleValues) {
    PagesInMemory source;
    const PageNumber shared = source.addDataPage(kLongValueOwner, {fromHex("01 02 03")});
    const PageNumber table = source.addDataPage(2, {fromHex("01 02 03")});
    const PageNumber last = source.addDataPage(kLongValueOwner, {part({}, 10)});
    const PageNumber first = source.addDataPage(kLongValueOwner, {part({last, 0}, 100)});
    const PageNumber loop = source.addDataPage(kLongValueOwner, {part({source.pageCount(), 0}, 100)});
    const PageNumber hollow = source.addDataPage(kLongValueOwner, {part({source.pageCount(), 0}, 0)});
    const PageNumber removed = source.add();
    clearDataPage(source.change(removed), kLongValueOwner);
    appendRow(source.change(removed), fromHex("01 02 03"), SlotState::Deleted);
    const auto single = LongValueKind::SingleRow;
    const auto chain = LongValueKind::Chain;
    struct Case {
        const char* what;
        base::Bytes stored;
    };
    const Case cases[] = {
        {"a truncated reference", fromHex("02 00 00 80 00 00 00 00")},
        {"inline, shorter than its length", fromHex("03 00 00 80 00 00 00 00 00 00 00 00 01 02")},
        {"unknown kind", fromHex("02 00 00 C0 00 00 00 00 00 00 00 00 01 02")},
        {"longer than the file", reference(chain, 0x3FFFFFFF, {first, 0})},
        {"row of another length", reference(single, 4, {shared, 0})},
        {"row that is not there", reference(single, 3, {shared, 1})},
        {"row of a table", reference(single, 3, {table, 0})},
        {"deleted row", reference(single, 3, {removed, 0})},
        {"page after the end", reference(single, 3, {source.pageCount(), 0})},
        {"no page", reference(single, 3, {})},
        {"chain that ends early", reference(chain, 111, {first, 0})},
        {"chain that goes on", reference(chain, 109, {first, 0})},
        {"chain in a loop", reference(chain, 5000, {loop, 0})},
        {"chain without data", reference(chain, 5000, {hollow, 0})},
    };
    for (const Case& each : cases)
        EXPECT_THROW(readLongValue(source, each.stored, {3, 3}), base::RuntimeError) << each.what;
}

}  // namespace
}  // namespace jet
