#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <unordered_set>
#include <vector>

#include "jet/change/TableWriter.h"
#include "jet/table/TableDefinition.h"
#include "tools/kontodb/Console.h"
#include "tools/kontodb/CsvText.h"

namespace kontodb {

/// A line that cannot become an account.
struct ImportFault {
    std::size_t line = 0;
    base::Text reason;
};

/// Makes new accounts of the records of a table, by the rules of the account window: name and path are trimmed and must
/// be there, no other account may have the name as the database compares names, and the initial password is stored.
class AccountImport {
public:
    /// @param records  the first one names the columns, by the names of the table or of the window, in any order. The
    ///                 number and the password of an account are ignored.
    /// @throws base::RuntimeError if there is none, or a column is unknown, missing or there twice
    explicit AccountImport(std::vector<CsvRecord> records);

    std::size_t count() const { return records_.size(); }

    /// All records that break a rule, in their order.
    /// @param table  the accounts that are there
    std::vector<ImportFault> faults(const jet::Table& table) const;

    /// Adds all accounts. There must be no faults.
    /// @throws RuntimeError of the engine, with the line before its description; Interrupted
    void insert(jet::TableWriter& writer, Console& console) const;

private:
    /// Where the columns are in a record.
    struct Places {
        std::size_t name = kNowhere;
        std::size_t serverPath = kNowhere;
        std::size_t programUpdate = kNowhere;
    };
    static constexpr std::size_t kNowhere = ~std::size_t{0};

    std::size_t* placeOf(base::TextView title);
    base::Text field(const CsvRecord& record, std::size_t place) const;
    base::Text faultOf(const CsvRecord& record, const jet::TableDefinition& definition) const;

    std::vector<CsvRecord> records_;
    Places places_;
    std::size_t columns_ = 0;
};

}  // namespace kontodb
