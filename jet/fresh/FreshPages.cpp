#include "jet/fresh/FreshPages.h"

#include "jet/Errors.h"
#include "jet/page/DataPage.h"
#include "jet/page/PageFile.h"
#include "jet/table/RowCodec.h"

namespace jet {

PageNumber FreshPages::allocate() {
    if (count_ == kMaxPages) throw failure(u"Die Datei würde größer als 2 GB.");
    return count_++;
}

void FreshPages::write(PageNumber number, std::span<const std::uint8_t> page) {
    if (number > written_) io_.resize(std::uint64_t{number} * kPageSize);
    if (databaseKey_ == 0) {
        io_.write(std::uint64_t{number} * kPageSize, page);
    } else {
        base::Bytes encoded(page.begin(), page.end());
        encodePage(encoded, number, databaseKey_);
        io_.write(std::uint64_t{number} * kPageSize, encoded);
    }
    written_ = std::max(written_, number + 1);
}

void FreshRows::open() {
    if (!page_.empty()) pages_.write(openPage_, page_);
    openPage_ = pages_.allocate();
    numbers_.push_back(openPage_);
    page_.resize(kPageSize);
    clearDataPage(page_, owner_);
}

RowPointer FreshRows::add(std::span<const std::uint8_t> row) {
    auto slot = page_.empty() ? std::nullopt : appendRow(page_, row);
    if (!slot) {
        open();
        slot = appendRow(page_, row);
    }
    if (!slot) throw failure(u"Ein Datensatz ist länger, als eine Seite aufnimmt.");
    return {openPage_, *slot};
}

RowPointer FreshRows::addAlone(std::span<const std::uint8_t> row) {
    const PageNumber number = pages_.allocate();
    numbers_.push_back(number);
    base::Bytes page(kPageSize);
    clearDataPage(page, owner_);
    if (!appendRow(page, row)) throw failure(u"Ein Datensatz ist länger, als eine Seite aufnimmt.");
    pages_.write(number, page);
    return {number, 0};
}

void FreshRows::finish() {
    if (!page_.empty()) pages_.write(openPage_, page_);
}

std::vector<PageNumber> FreshRows::numbersWithSpace() const {
    if (page_.empty()) return {};
    return {openPage_};
}

}  // namespace jet
