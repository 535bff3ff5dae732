#include "jet/page/Header.h"

#include <algorithm>
#include <bit>
#include <cassert>
#include <cmath>

#include "jet/Errors.h"
#include "jet/page/PageSource.h"
#include "jet/page/Rc4.h"

namespace jet {
namespace {

constexpr std::array<std::uint8_t, 4> kMaskKey = {0xC7, 0xDA, 0x39, 0x6B};
constexpr std::array<std::uint8_t, 4> kBeginning = {0x00, 0x01, 0x00, 0x00};

constexpr std::size_t kMaskOffset = 0x18;
constexpr std::size_t kMaskBytes = 128;
constexpr std::size_t kFreeMapOffset = 0x18;
constexpr std::size_t kSecondMapOffset = 0x1C;
constexpr std::size_t kSystemTablesOffset = 0x20;
constexpr std::size_t kCodePageOffset = 0x3C;
constexpr std::size_t kBuildOffset = 0x6A;
constexpr std::size_t kOrderOffset = 0x6E;
constexpr std::size_t kConstantOffset = 0x98;
constexpr std::size_t kUsers = kCommitWordsBytes / 2;

/// The whole days of the creation date, which mask the password.
std::uint32_t passwordMask(base::Date created) {
    const double days = std::trunc(created.days);
    if (!(days >= -2147483648.0 && days <= 2147483647.0))
        throw damaged(0, u"Das Erstellungsdatum ist keine Zahl von Tagen");
    return static_cast<std::uint32_t>(static_cast<std::int32_t>(days));
}

/// The half of the mask that applies to UTF-16 unit i.
std::uint16_t maskUnit(std::uint32_t mask, std::size_t i) {
    return static_cast<std::uint16_t>(i % 2 == 0 ? mask : mask >> 16U);
}

base::Text readPassword(base::ByteView page, std::uint32_t mask) {
    base::Text password;
    for (std::size_t i = 0; i < kMaxPasswordUnits; ++i) {
        const auto unit = static_cast<char16_t>(page.u16(kPasswordOffset + 2 * i) ^ maskUnit(mask, i));
        if (unit == 0) break;
        password.push_back(unit);
    }
    return password;
}

}  // namespace

bool Header::isJet4(base::ByteView beginning) {
    const auto bytes = beginning.bytes();
    if (bytes.size() < kMaskOffset) return false;
    const auto signature = bytes.subspan(kSignatureOffset, kSignature.size());
    const bool isSigned = std::equal(signature.begin(), signature.end(), kSignature.begin(),
                                     [](std::uint8_t byte, char c) { return byte == static_cast<std::uint8_t>(c); });
    return isSigned && std::equal(kBeginning.begin(), kBeginning.end(), bytes.begin()) &&
           beginning.u32(kVersionOffset) == kVersionJet4;
}

void maskHeader(std::span<std::uint8_t> page) {
    Rc4(kMaskKey).apply(page.subspan(kMaskOffset, kMaskBytes));
}

Header Header::read(base::ByteView page) {
    Header header;
    header.page_.assign(page.bytes().begin(), page.bytes().end());
    header.page_.resize(kPageSize);
    maskHeader(header.page_);
    const base::ByteView bytes{header.page_};
    header.freeMap = RowPointer::unpack(bytes.u32(kFreeMapOffset));
    header.secondMap = RowPointer::unpack(bytes.u32(kSecondMapOffset));
    for (std::size_t i = 0; i < header.systemTables.size(); ++i)
        header.systemTables[i] = bytes.u32(kSystemTablesOffset + 4 * i);
    header.codePage = bytes.u16(kCodePageOffset);
    header.databaseKey = bytes.u32(kDatabaseKeyOffset);
    header.engineBuild = bytes.u32(kBuildOffset);
    header.textOrder = {bytes.u16(kOrderOffset), bytes.u8(kOrderOffset + 3)};
    header.created = {bytes.f64(kCreatedOffset)};
    header.password = readPassword(bytes, passwordMask(header.created));
    return header;
}

Header Header::fresh(base::Date created) {
    Header header;
    header.created = created;
    header.page_.assign(kPageSize, 0);
    const std::span page{header.page_};
    std::copy(kBeginning.begin(), kBeginning.end(), page.begin());
    std::transform(kSignature.begin(), kSignature.end(), page.begin() + kSignatureOffset,
                   [](char c) { return static_cast<std::uint8_t>(c); });
    base::putU32(page, kVersionOffset, kVersionJet4);
    base::putU32(page, kConstantOffset, 1620);
    base::putU32(page, kConstantOffset + 4, 0x00302E34);  // "4.0"
    for (std::size_t user = 0; user < kUsers; ++user)
        base::putU16(page, kCommitWordsOffset + 2 * user, 0x0100);
    base::putU16(page, kCommitWordsOffset, 0x0101);
    return header;
}

void Header::write(std::span<std::uint8_t> page) const {
    assert(page.size() == kPageSize && password.size() <= kMaxPasswordUnits);
    std::fill(page.begin(), page.end(), std::uint8_t{0});
    std::copy(page_.begin(), page_.end(), page.begin());
    base::putU32(page, kFreeMapOffset, freeMap.packed());
    base::putU32(page, kSecondMapOffset, secondMap.packed());
    for (std::size_t i = 0; i < systemTables.size(); ++i)
        base::putU32(page, kSystemTablesOffset + 4 * i, systemTables[i]);
    base::putU16(page, kCodePageOffset, codePage);
    base::putU32(page, kDatabaseKeyOffset, databaseKey);
    const std::uint32_t mask = passwordMask(created);
    for (std::size_t i = 0; i < kMaxPasswordUnits; ++i) {
        const std::uint16_t unit = i < password.size() ? static_cast<std::uint16_t>(password[i]) : std::uint16_t{0};
        base::putU16(page, kPasswordOffset + 2 * i, static_cast<std::uint16_t>(unit ^ maskUnit(mask, i)));
    }
    base::putU32(page, kBuildOffset, engineBuild);
    base::putU16(page, kOrderOffset, textOrder.lcid);
    page[kOrderOffset + 3] = textOrder.version;
    base::putU64(page, kCreatedOffset, std::bit_cast<std::uint64_t>(created.days));
    maskHeader(page);
}

}  // namespace jet
