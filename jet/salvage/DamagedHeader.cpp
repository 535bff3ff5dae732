#include "jet/salvage/DamagedHeader.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "base/Value.h"
#include "jet/page/Header.h"
#include "jet/page/PageFile.h"

namespace jet {
namespace {

constexpr std::uint32_t kLatestVersion = 6;
/// So many bytes of the signature may be damaged. The signatures of other formats differ in more.
constexpr std::ptrdiff_t kDamagedBytes = 2;
constexpr std::size_t kShortestSignature = 13;  ///< letters and blanks

/// The pages that show whether a key is right.
constexpr PageNumber kWitnesses = 64;

base::Bytes unmasked(base::ByteView page0) {
    base::Bytes bytes(page0.bytes().begin(), page0.bytes().end());
    maskHeader(bytes);
    return bytes;
}

std::uint32_t keyIn(base::ByteView page0) {
    return base::ByteView{unmasked(page0)}.u32(kDatabaseKeyOffset);
}

bool beginsLikeAPage(std::span<const std::uint8_t> page) {
    return page[0] >= 1 && page[0] <= 5 && page[1] == 1;
}

/// The first pages after the header, encoded as they are in the file.
std::vector<base::Bytes> readWitnesses(PageIo& io) {
    std::vector<base::Bytes> pages;
    for (PageNumber number = 1; number <= kWitnesses; ++number) {
        const std::uint64_t at = std::uint64_t{number} * kPageSize;
        if (at + kPageSize > io.sizeBytes()) break;
        io.read(at, pages.emplace_back(kPageSize));
    }
    return pages;
}

/// Whether enough pages begin as pages do when they are decoded. A wrong key gives such a beginning once in 13,000
/// pages.
bool fits(const std::vector<base::Bytes>& witnesses, std::uint32_t key) {
    std::size_t good = 0;
    for (std::size_t i = 0; i < witnesses.size(); ++i) {
        base::Bytes page(witnesses[i].begin(), witnesses[i].begin() + 2);
        encodePage(page, static_cast<PageNumber>(i + 1), key);
        if (beginsLikeAPage(page)) ++good;
    }
    return good >= 2 && good * 16 >= witnesses.size();
}

/// Calls attempt(key) for all keys that differ from this one in one or two bytes, until it returns true.
template <typename Attempt>
std::optional<std::uint32_t> neighbourOf(std::uint32_t key, Attempt&& attempt) {
    for (unsigned first = 0; first < 32; first += 8) {
        for (unsigned second = first; second < 32; second += 8) {
            for (std::uint32_t change = 1; change < 0x10000; ++change) {
                if (second == first && change > 0xFF) break;
                const std::uint32_t changed = key ^ ((change & 0xFFU) << first) ^ ((change >> 8U) << second);
                if (attempt(changed)) return changed;
            }
        }
    }
    return std::nullopt;
}

using Units = std::array<std::uint16_t, kMaxPasswordUnits>;

/// The value that most of the units at even or odd positions have: where the password has ended, the mask itself.
std::uint16_t mostFrequent(const Units& units, std::size_t from) {
    std::uint16_t best = 0;
    std::ptrdiff_t most = 0;
    for (std::size_t i = from; i < units.size(); i += 2) {
        std::ptrdiff_t count = 0;
        for (std::size_t k = from; k < units.size(); k += 2)
            count += units[k] == units[i] ? 1 : 0;
        if (count > most) {
            most = count;
            best = units[i];
        }
    }
    return best;
}

Units withoutMask(Units units, std::uint16_t even, std::uint16_t odd) {
    for (std::size_t i = 0; i < units.size(); ++i)
        units[i] = static_cast<std::uint16_t>(units[i] ^ (i % 2 == 0 ? even : odd));
    return units;
}

base::Text textOf(const Units& units) {
    const auto end = std::ranges::find(units, std::uint16_t{0});
    return {units.begin(), end};
}

PasswordAnswer compare(const Units& stored, base::TextView given) {
    const base::Text exact = textOf(stored);
    if (exact.empty() || exact == given) return {true, true, exact};
    Units wanted{};
    std::copy_n(given.begin(), std::min(given.size(), wanted.size()), wanted.begin());
    std::ptrdiff_t different = 0;
    for (std::size_t i = 0; i < std::min(stored.size(), std::max(exact.size(), given.size())); ++i)
        different += stored[i] != wanted[i] ? 1 : 0;
    const bool isNear = different <= 1 + static_cast<std::ptrdiff_t>(given.size() / 4);
    return {isNear, false, base::Text(given.substr(0, kMaxPasswordUnits))};
}

}  // namespace

std::optional<std::uint32_t> findDatabaseKey(PageIo& io, base::ByteView page0) {
    const auto witnesses = readWitnesses(io);
    const std::uint32_t stored = keyIn(page0);
    for (const std::uint32_t key : {stored, std::uint32_t{0}}) {
        if (fits(witnesses, key)) return key;
    }
    for (std::size_t i = 0; i < std::min<std::size_t>(witnesses.size(), 4); ++i) {
        const auto opens = [&](std::uint32_t key) {
            std::array<std::uint8_t, 2> beginning{witnesses[i][0], witnesses[i][1]};
            encodePage(beginning, static_cast<PageNumber>(i + 1), key);
            return beginsLikeAPage(beginning) && fits(witnesses, key);
        };
        if (const auto key = neighbourOf(stored, opens)) return key;
    }
    return std::nullopt;
}

bool isOfOtherFormat(base::ByteView page0) {
    if (Header::isJet4(page0)) return false;
    const auto signature = page0.slice(kSignatureOffset, kSignature.size()).bytes();
    std::ptrdiff_t different = 0;
    std::size_t letters = 0;
    for (std::size_t i = 0; i < kSignature.size(); ++i) {
        different += signature[i] != static_cast<std::uint8_t>(kSignature[i]) ? 1 : 0;
        letters += signature[i] >= 0x20 && signature[i] < 0x7F ? 1 : 0;
    }
    if (different > kDamagedBytes && letters >= kShortestSignature) return true;
    // The version of another format of the same maker, under an undamaged signature.
    const std::uint32_t version = page0.u32(kVersionOffset);
    return different == 0 && version != kVersionJet4 && version <= kLatestVersion;
}

PasswordAnswer tryPassword(base::ByteView page0, base::TextView given) {
    const base::Bytes bytes = unmasked(page0);
    const base::ByteView view{bytes};
    Units units{};
    for (std::size_t i = 0; i < units.size(); ++i)
        units[i] = view.u16(kPasswordOffset + 2 * i);
    PasswordAnswer answer;
    const double days = std::trunc(view.f64(kCreatedOffset));
    if (days >= 0 && days < 0xFFFF) {
        answer = compare(withoutMask(units, static_cast<std::uint16_t>(days), 0), given);
        if (answer.isAccepted) return answer;
    }
    answer = compare(withoutMask(units, mostFrequent(units, 0), mostFrequent(units, 1)), given);
    if (answer.password.empty() && !given.empty() && !Header::isJet4(page0))
        return {true, false, base::Text(given.substr(0, kMaxPasswordUnits))};
    return answer;
}

}  // namespace jet
