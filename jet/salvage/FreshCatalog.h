#pragma once

#include <deque>
#include <memory>
#include <set>
#include <vector>

#include "jet/fresh/FreshFile.h"
#include "jet/salvage/RelationshipPlan.h"

namespace jet {

/// The system tables of the file that is made of a damaged one: all that every file has, the tables and relationships
/// that were made anew, and the other objects whose rows are whole. Owners and rights are those of a new file.
class FreshCatalog {
public:
    explicit FreshCatalog(FreshFile& file);

    void addTable(const TablePlan& plan, PageNumber page);
    void addRelationships(const RelationshipPlans& relationships, const std::deque<TablePlan>& plans);
    /// Queries, linked tables, forms and the like.
    void addObjects(const Salvage& salvage, SalvageReport& report);

    void finish();

private:
    bool addRow(std::vector<base::Value> row);
    void addRights(std::uint32_t id);
    std::uint32_t freeId();

    std::vector<std::unique_ptr<FreshTable>> tables_;
    std::vector<std::vector<base::Value>> objects_;
    std::set<std::uint32_t> ids_;
    std::set<std::pair<std::uint32_t, base::Bytes>> names_;
    std::uint32_t nextId_ = 0x80000000;
};

}  // namespace jet
