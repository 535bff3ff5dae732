#pragma once

#include <algorithm>
#include <memory>
#include <vector>

#include "base/Value.h"
#include "jet/Errors.h"
#include "jet/page/PageStore.h"

namespace test {

/// A file's pages in memory, which the tested code may change. As in a transaction, views taken before the first change
/// of a page keep the old bytes.
class MemoryPageStore : public jet::PageStore {
public:
    explicit MemoryPageStore(const base::Bytes& file) {
        for (std::size_t at = 0; at < file.size(); at += jet::kPageSize) {
            const auto begin = file.begin() + static_cast<std::ptrdiff_t>(at);
            pages_.push_back({std::make_shared<base::Bytes>(begin, begin + jet::kPageSize), false});
        }
    }

    jet::PageNumber pageCount() const override { return static_cast<jet::PageNumber>(pages_.size()); }

    jet::PageView page(jet::PageNumber number) override {
        if (number >= pageCount()) throw jet::damaged(number, u"Die Datei endet vorher");
        const std::shared_ptr<base::Bytes>& bytes = pages_[number].bytes;
        return {number, base::ByteView(*bytes), bytes};
    }

    std::span<std::uint8_t> change(jet::PageNumber number) override {
        if (number >= pageCount()) throw jet::damaged(number, u"Die Datei endet vorher");
        Page& page = pages_[number];
        if (!page.isChanged) page = {std::make_shared<base::Bytes>(*page.bytes), true};
        return *page.bytes;
    }

    jet::PageNumber append() override {
        pages_.push_back({std::make_shared<base::Bytes>(jet::kPageSize), true});
        return pageCount() - 1;
    }

    /// Adds zero pages, which share their memory until they are changed.
    void extendTo(jet::PageNumber pageCount) {
        pages_.resize(pageCount, {std::make_shared<base::Bytes>(jet::kPageSize), false});
    }

    base::Bytes file() const {
        base::Bytes all;
        for (const Page& page : pages_)
            all.insert(all.end(), page.bytes->begin(), page.bytes->end());
        return all;
    }

    std::size_t changedPages() const {
        return static_cast<std::size_t>(
            std::count_if(pages_.begin(), pages_.end(), [](const Page& page) { return page.isChanged; }));
    }

    /// Resets the number of changed pages to 0.
    void settle() {
        for (Page& page : pages_)
            page.isChanged = false;
    }

private:
    struct Page {
        std::shared_ptr<base::Bytes> bytes;
        bool isChanged;
    };
    std::vector<Page> pages_;
};

}  // namespace test
