#pragma once

#include <functional>
#include <string>
#include <vector>

#include "jet/table/Table.h"
#include "jet/transaction/Database.h"

namespace jet {

/// A file in memory, to be read by the engine and changed byte by byte.
class FileAtHand : public PageSource {
public:
    explicit FileAtHand(base::Bytes file) : bytes(std::move(file)) {}

    PageNumber pageCount() const override { return static_cast<PageNumber>(bytes.size() / kPageSize); }
    PageView page(PageNumber number) override;
    std::span<std::uint8_t> at(PageNumber number) { return std::span(bytes).subspan(number * kPageSize, kPageSize); }

    std::uint32_t u32(PageNumber number, std::size_t offset) { return page(number).bytes.u32(offset); }
    std::uint16_t u16(PageNumber number, std::size_t offset) { return page(number).bytes.u16(offset); }

    base::Bytes bytes;
};

/// Something done to a sound file, and what the checker must then say.
struct Damage {
    std::string name;
    std::function<base::Text(FileAtHand&)> apply;  ///< returns a part of the finding that is wanted
};

/// A sound file with an account table (its name index has several leaves; memos of all kinds), and a second table with
/// a moved row.
base::Bytes fileToDamage();

/// For each structure of the format at least two.
std::vector<Damage> damages();

}  // namespace jet
