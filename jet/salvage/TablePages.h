#pragma once

#include <cstdint>
#include <map>
#include <span>
#include <vector>

#include "jet/salvage/DamagedDefinition.h"
#include "jet/salvage/PageScan.h"

namespace jet {

/// Which pages hold rows of which table. Three structures say so: the header of the page, the table's map of owned
/// pages, and the entries of its indexes. Each may be damaged, so they are weighed against each other, and in doubt the
/// rows themselves decide: they fit the definition of their table.
///
/// A page that was freed keeps its old bytes, so the header alone is not enough if the rest is sound: such a page is
/// left out if the global map calls it free, if the table has all rows without it, or if a sound index knows no row of
/// it.
class TablePages {
public:
    /// @param tables  must outlive this
    TablePages(DamagedFile& file, const PageScan& scan, std::span<const DamagedDefinition> tables);

    /// Ascending.
    const std::vector<PageNumber>& pagesOf(std::size_t table) const { return pages_[table]; }

    /// Pages that only the table's map or its indexes name, and whose rows cannot be read.
    const std::vector<PageNumber>& lostPagesOf(std::size_t table) const { return lost_[table]; }

    /// Data pages whose owner is no known table.
    const std::vector<PageNumber>& strangePages() const { return strange_; }

private:
    static constexpr std::uint16_t kNone = 0xFFFF;

    struct Claims {
        std::vector<std::uint16_t> byHeader;  ///< table of each page, kNone for none
        std::vector<std::uint16_t> byMap;
        std::multimap<PageNumber, std::size_t> byFurtherMaps;  ///< if several maps name the page
        std::vector<bool> hasMap;                              ///< of each table
    };
    struct Entries {
        std::vector<bool> pages;  ///< those to which entries point
        bool isComplete = false;  ///< some index has every row and can be read from end to end
    };
    struct Fit {
        std::size_t good = 0;
        std::size_t bad = 0;
        bool isGood() const { return good > bad; }
    };

    void readClaims();
    void countRows();
    void settle(PageNumber page);
    void settleByMaps(PageNumber page);
    bool mayHaveRowsOf(PageNumber page, std::size_t table);
    void findStrays();
    bool isFreed(PageNumber page, std::size_t table);
    const Entries& entriesOf(std::size_t table);
    Fit fitOf(PageNumber page, std::size_t table) const;
    std::size_t rowsOn(PageNumber page) const;

    DamagedFile& file_;
    const PageScan& scan_;
    std::span<const DamagedDefinition> tables_;
    std::vector<std::vector<PageNumber>> pages_;
    std::vector<std::vector<PageNumber>> lost_;
    std::vector<PageNumber> strange_;
    Claims claims_;
    std::vector<bool> hasAllRows_;
    std::vector<std::optional<Entries>> entries_;
};

}  // namespace jet
