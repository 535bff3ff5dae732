#pragma once

#include "jet/table/TableDefinition.h"

namespace jet {

/// The parts of a definition, in the order of its joined bytes.
enum class DefinitionPart { Statistics, Column, ColumnName, Index, LogicalIndex, LogicalName, Maps, End };

/// Offset of a part in the joined bytes.
/// @param i  which part of its kind, from 0; the number of these parts gives the offset after the last
inline std::size_t placeInDefinition(const TableDefinition& definition, DefinitionPart part, std::size_t i = 0) {
    std::size_t at = DefinitionAt::kStatistics;
    const auto isPast = [&](DefinitionPart passed, const auto& all, const auto& bytesOf) {
        std::size_t number = 0;
        for (const auto& each : all) {
            if (part == passed && number++ == i) return false;
            at += bytesOf(each);
        }
        return part != passed;
    };
    const auto sized = [](std::size_t bytes) { return [bytes](const auto&) { return bytes; }; };
    const auto named = [](const auto& each) { return 2 + 2 * each.name.size(); };
    static_cast<void>(isPast(DefinitionPart::Statistics, definition.indexes, sized(kStatisticsBytes)) &&
                      isPast(DefinitionPart::Column, definition.columns, sized(Column::kDescriptorBytes)) &&
                      isPast(DefinitionPart::ColumnName, definition.columns, named) &&
                      isPast(DefinitionPart::Index, definition.indexes, sized(IndexDefinition::kBytes)) &&
                      isPast(DefinitionPart::LogicalIndex, definition.logicalIndexes, sized(LogicalIndex::kBytes)) &&
                      isPast(DefinitionPart::LogicalName, definition.logicalIndexes, named) &&
                      isPast(DefinitionPart::Maps, definition.longValueMaps, sized(kLongValueMapsBytes)));
    return at;
}

}  // namespace jet
