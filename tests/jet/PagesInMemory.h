#pragma once

#include <memory>
#include <span>
#include <vector>

#include "base/RuntimeError.h"
#include "base/Value.h"
#include "jet/DataPage.h"
#include "jet/Errors.h"
#include "jet/PageSource.h"

namespace jet {

/// Pages that a test lays down one by one. Pages 0 and 1, which have a meaning of their own, are there from the start
/// and all zero.
class PagesInMemory : public PageSource {
public:
    PagesInMemory() {
        add();
        add();
    }

    PageNumber add(base::Bytes bytes = base::Bytes(kPageSize, 0)) {
        pages_.push_back(std::make_unique<base::Bytes>(std::move(bytes)));
        return static_cast<PageNumber>(pages_.size() - 1);
    }

    /// A data page with these rows.
    PageNumber addDataPage(std::uint32_t owner, const std::vector<base::Bytes>& rows) {
        const PageNumber number = add();
        clearDataPage(bytes(number), owner);
        for (const base::Bytes& row : rows)
            appendRow(bytes(number), row);
        return number;
    }

    std::span<std::uint8_t> bytes(PageNumber number) { return *pages_.at(number); }

    PageNumber pageCount() const override { return static_cast<PageNumber>(pages_.size()); }

    PageView page(PageNumber number) override {
        if (number >= pageCount()) throw damaged(number, u"Die Datei endet vorher");
        return {number, base::ByteView(bytes(number)), nullptr};
    }

private:
    std::vector<std::unique_ptr<base::Bytes>> pages_;
};

/// The description of the RuntimeError that the step ends with; "no error" if it ends well.
template <typename Step>
std::string errorOf(Step&& step) {
    try {
        step();
    } catch (const base::RuntimeError& error) {
        return error.what();
    }
    return "no error";
}

}  // namespace jet
