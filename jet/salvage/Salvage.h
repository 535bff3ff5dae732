#pragma once

#include <vector>

#include "jet/salvage/SalvagedCatalog.h"
#include "jet/salvage/TablePages.h"

/// What can still be read of a damaged file: its tables and their rows. Pages are found by their kind and owner, by
/// maps and by indexes, so a row is found even if what should lead to it is damaged. Nothing is invented: a value that
/// cannot be read is null and reported, and what was deleted stays deleted. The format has no checksums, so a changed
/// byte inside a value goes unnoticed. Time and memory grow with the size of the file.
namespace jet {

struct TableOfSalvage {
    base::Text name;
    bool isNameMade = false;  ///< "Tabelle_S123": the catalog does not tell the name of the table on page 123
    std::uint32_t flags = 0;  ///< in the catalog
    PropertyBlob properties;
    bool hasLostProperties = false;
    SalvagedTable rows;
};

class Salvage {
public:
    /// @param file  must outlive this
    explicit Salvage(DamagedFile& file);

    /// All tables except the four system tables, by their pages.
    const std::vector<TableOfSalvage>& tables() const { return tables_; }
    const std::vector<SalvagedRelationship>& relationships() const { return relationships_; }
    const std::vector<SalvagedObject>& objects() const { return objects_; }

    /// How many objects the catalog has by its own count. If fewer were found, tables may be lost without a trace.
    std::size_t countedObjects() const { return countedObjects_; }

    /// The rows of MSysQueries, by the column numbers of a fresh file.
    const std::vector<std::vector<base::Value>>& queryRows() const { return queryRows_; }

    struct LostTable {
        base::Text name;
        PageNumber page = 0;
        std::size_t rows = 0;  ///< that cannot be read without the definition
    };
    /// Tables that the catalog names and whose definitions cannot be read.
    const std::vector<LostTable>& lostTables() const { return lostTables_; }

    struct LostRow {
        RowPointer row;
        base::Text reason;
    };
    /// Rows of the catalog and of the relationships that cannot be read whole.
    const std::vector<LostRow>& lostSystemRows() const { return lostSystemRows_; }

private:
    std::vector<DamagedDefinition> findDefinitions();
    void addDefinitions(std::vector<DamagedDefinition>& definitions, const std::vector<SalvagedObject>& objects);
    void readCatalog(const TablePages& pages, const std::vector<DamagedDefinition>& definitions);
    bool isInUse(const DamagedDefinition& definition, bool hasRows) const;
    void addTable(DamagedDefinition definition, std::vector<PageNumber> pages, std::vector<PageNumber> lostPages);
    const SalvagedObject* objectOf(PageNumber page) const;
    bool isNameFree(base::TextView name) const;
    void findLostTables();

    DamagedFile& file_;
    PageScan scan_;
    std::vector<TableOfSalvage> tables_;
    std::vector<SalvagedRelationship> relationships_;
    std::vector<SalvagedObject> objects_;
    std::vector<std::vector<base::Value>> queryRows_;
    std::set<std::uint32_t> objectsWithRights_;
    std::size_t countedObjects_ = 0;
    bool isCatalogWhole_ = false;
    std::vector<LostTable> lostTables_;
    std::vector<LostRow> lostSystemRows_;
};

}  // namespace jet
