#pragma once

#include <memory>

#include "base/Text.h"
#include "jet/fresh/FreshMaps.h"
#include "jet/fresh/FreshPages.h"
#include "jet/fresh/FreshTable.h"
#include "jet/page/Header.h"
#include "jet/storage/PageIo.h"
#include "jet/table/TableDefinition.h"

namespace jet {

/// A new file without any contents of its own: the caller adds all tables, the four system tables too.
///
///     FreshFile file(io, header);               // header of another file: password, encoding and order of text stay
///     number = file.reserveDefinition();        // for each table but the system tables, which have 2 to 5;
///                                               // ObjectNumbers puts the new numbers where the old ones were
///     auto table = file.addTable(name, definition);
///     table->addRow(values); ...                // or addStoredRow() and buildIndex(), which change no bit
///     table->finish();
///     file.finish();
///
/// A table needs no design if its definition was read from a file: the definition has all but the properties, and those
/// are a value of its row of MSysObjects, which objectRow() takes. A missing system table is made of
/// systemTableDesigns(). For files that owe nothing to another file there is the Creator.
class FreshFile {
public:
    /// @param io      an empty file; must outlive this. The file is not sound before finish().
    /// @param header  its creation date, code page, password, encoding, engine build and order of text are taken over
    FreshFile(PageIo& io, const Header& header);

    /// The first page of the definition of a table that will be added. It is also the number of the table in
    /// MSysObjects.
    PageNumber reserveDefinition() { return pages_.allocate(); }

    /// The usage maps of the next tables begin on a new page. Otherwise all tables share them.
    void startMapPage() { maps_.startPage(); }

    /// @param definition  its `page` is reserved, or a system table's
    std::unique_ptr<FreshTable> addTable(const base::Text& name, TableDefinition definition);

    /// Writes the rest and waits until everything is on the disk. All tables must be finished.
    void finish();

private:
    PageIo& io_;
    Header header_;
    FreshPages pages_;
    FreshMaps maps_;
};

}  // namespace jet
