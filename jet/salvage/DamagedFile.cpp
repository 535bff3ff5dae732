#include "jet/salvage/DamagedFile.h"

#include <algorithm>

#include "jet/Errors.h"
#include "jet/salvage/DamagedHeader.h"

namespace jet {
namespace {

base::Bytes paddedPage(PageIo& io, PageNumber number) {
    const std::uint64_t at = std::uint64_t{number} * kPageSize;
    base::Bytes page(kPageSize, 0);
    const auto there = static_cast<std::size_t>(std::min<std::uint64_t>(kPageSize, io.sizeBytes() - at));
    io.read(at, std::span(page).first(there));
    return page;
}

}  // namespace

DamagedFile::DamagedFile(PageIo& io, const base::Text& path, base::TextView password)
    : io_(io),
      sizeBytes_(std::min<std::uint64_t>(io.sizeBytes(), std::uint64_t{kMaxPages} * kPageSize)),
      pageCount_(static_cast<PageNumber>((sizeBytes_ + kPageSize - 1) / kPageSize)) {
    if (sizeBytes_ == 0) throw unknownFormat(path);
    const base::Bytes page0 = paddedPage(io, 0);
    databaseKey_ = keyOf(io, base::ByteView{page0}, path);
    const PasswordAnswer answer = tryPassword(base::ByteView{page0}, password);
    if (!answer.isAccepted) throw wrongPassword();
    password_ = answer.password;
    isPasswordCertain_ = answer.isCertain;
    pages_ = std::make_unique<PageFile>(io_, databaseKey_);
}

std::uint32_t DamagedFile::keyOf(PageIo& io, base::ByteView page0, const base::Text& path) {
    const auto key = isOfOtherFormat(page0) ? std::nullopt : findDatabaseKey(io, page0);
    if (!key) throw unknownFormat(path);
    return *key;
}

PageView DamagedFile::page(PageNumber number) {
    if (number + 1 < pageCount_ || bytesOf(number) == kPageSize) return pages_->page(number);
    if (number >= pageCount_) return pages_->page(number);  // which raises the error
    if (!incomplete_.owner) {
        const auto bytes = std::make_shared<base::Bytes>(paddedPage(io_, number));
        encodePage(*bytes, number, databaseKey_);
        std::fill(bytes->begin() + static_cast<std::ptrdiff_t>(bytesOf(number)), bytes->end(), std::uint8_t{0});
        incomplete_ = {number, base::ByteView{*bytes}, bytes};
    }
    return incomplete_;
}

std::size_t DamagedFile::bytesOf(PageNumber number) const {
    const std::uint64_t at = std::uint64_t{number} * kPageSize;
    return at >= sizeBytes_ ? 0 : static_cast<std::size_t>(std::min<std::uint64_t>(kPageSize, sizeBytes_ - at));
}

}  // namespace jet
