#include "jet/fresh/FreshFile.h"

#include <utility>

namespace jet {
namespace {

/// The header of a file that nobody has used yet.
Header freshHeader(const Header& like) {
    Header header = Header::fresh(like.created);
    header.codePage = like.codePage;
    header.databaseKey = like.databaseKey;
    header.password = like.password;
    header.engineBuild = like.engineBuild;
    header.textOrder = like.textOrder;
    return header;
}

}  // namespace

FreshFile::FreshFile(PageIo& io, const Header& header)
    : io_(io), header_(freshHeader(header)), pages_(io, header.databaseKey), maps_(pages_) {
    pages_.allocate();  // header
    pages_.allocate();  // global map
    for (PageNumber& definition : header_.systemTables)
        definition = pages_.allocate();
}

std::unique_ptr<FreshTable> FreshFile::addTable(const base::Text& name, TableDefinition definition) {
    return std::make_unique<FreshTable>(pages_, maps_, name, std::move(definition));
}

void FreshFile::finish() {
    maps_.finish();
    writeGlobalMap(pages_);
    base::Bytes page(kPageSize);
    header_.write(page);
    pages_.write(0, page);
    io_.sync();
}

}  // namespace jet
