#pragma once

#include <gtest/gtest.h>
#include <memory>
#include <span>
#include <utility>
#include <vector>

#include "base/Value.h"
#include "jet/fresh/Creator.h"
#include "jet/fresh/TableDesign.h"
#include "jet/page/Header.h"
#include "jet/page/PageFile.h"
#include "jet/transaction/Database.h"
#include "tests/support/FaultyStorage.h"

/// Files in memory for tests of statements and of ADO over the engine.
namespace test {

using Rows = std::vector<std::vector<base::Value>>;

struct SampleTable {
    jet::TableDesign design;
    Rows rows;
};

/// A small account table: two rows, one of which has only a name.
inline SampleTable kontoTable() {
    constexpr auto kUnique = jet::IndexDefinition::kUnique;
    SampleTable table;
    table.design.name = u"Konto";
    table.design.columns = {{.name = u"Nr", .type = jet::ColumnType::Long, .isAutoNumber = true},
                            {u"Name", jet::ColumnType::Text, 20},
                            {u"Recht", jet::ColumnType::Boolean},
                            {u"Klein", jet::ColumnType::Byte},
                            {u"Notiz", jet::ColumnType::Memo}};
    table.design.indexes = {{u"PrimaryKey", {{u"Nr"}}, true, kUnique | jet::IndexDefinition::kRequired},
                            {u"Name", {{u"Name"}}, false, kUnique}};
    table.rows = {{1, base::Text(u"Müller"), true, std::uint8_t{7}, base::Text(3000, u'ß')},
                  {2, base::Text(u"Meier"), false, base::Null{}, base::Null{}}};
    return table;
}

inline base::Bytes sampleFile(const std::vector<SampleTable>& tables, const base::Text& password = {}) {
    const Machine machine;
    const auto io = machine.io();
    jet::Creator creator(*io, password);
    for (const SampleTable& table : tables) {
        std::size_t next = 0;
        creator.addTable(table.design, [&](std::vector<base::Value>& row) {
            if (next == table.rows.size()) return false;
            row = table.rows[next++];
            return true;
        });
    }
    creator.finish();
    return machine.file();
}

/// The same file with its pages encoded.
/// @param file  a file that is not encoded
/// @param key   not 0
inline base::Bytes encoded(base::Bytes file, std::uint32_t key) {
    const auto page = [&](jet::PageNumber number) {
        return std::span(file).subspan(number * jet::kPageSize, jet::kPageSize);
    };
    jet::Header header = jet::Header::read(base::ByteView(page(0)));
    header.databaseKey = key;
    header.write(page(0));
    for (jet::PageNumber number = 0; number < file.size() / jet::kPageSize; ++number)
        jet::encodePage(page(number), number, key);
    return file;
}

inline jet::Database openSample(const base::Bytes& bytes) {
    return jet::Database::open(Machine(bytes).storage(), {});
}

}  // namespace test
