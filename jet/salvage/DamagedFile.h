#pragma once

#include <cstdint>

#include "base/Text.h"
#include "base/Value.h"
#include "jet/page/PageFile.h"
#include "jet/storage/PageIo.h"

namespace jet {

/// The pages of a file of which any byte may be wrong, and which may end in the middle of a page. Reading changes
/// nothing. Every other part of the salvage reads the file through this class only.
class DamagedFile final : public PageSource {
public:
    /// @param io        must outlive this
    /// @param password  ignored if the file has none
    /// @throws RuntimeError if the file has another format or nothing of this one, or if the password is wrong
    DamagedFile(PageIo& io, const base::Text& path, base::TextView password);

    /// Counts an incomplete last page, too.
    PageNumber pageCount() const override { return pageCount_; }
    /// An incomplete last page is filled up with zeros.
    PageView page(PageNumber number) override;

    /// How many bytes of the page the file has.
    std::size_t bytesOf(PageNumber number) const;

    /// The password of the file, as far as it is known; empty for none.
    const base::Text& password() const { return password_; }
    bool isPasswordCertain() const { return isPasswordCertain_; }
    /// 0 = the pages are not encoded.
    std::uint32_t databaseKey() const { return databaseKey_; }

private:
    static std::uint32_t keyOf(PageIo& io, base::ByteView page0, const base::Text& path);

    PageIo& io_;
    std::uint64_t sizeBytes_;
    PageNumber pageCount_;
    std::uint32_t databaseKey_ = 0;
    base::Text password_;
    bool isPasswordCertain_ = true;
    PageView incomplete_;
    std::unique_ptr<PageFile> pages_;
};

}  // namespace jet
