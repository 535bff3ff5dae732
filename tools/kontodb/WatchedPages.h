#pragma once

#include <vector>

#include "jet/page/PageSource.h"
#include "tools/kontodb/Progress.h"
#include "tools/kontodb/Signals.h"

namespace kontodb {

/// Pages of a file that is read as a whole. Each page throws Interrupted if the program was told to end, and the
/// progress counts the pages that have been read at least once.
class WatchedPages final : public jet::PageSource {
public:
    /// @param pages, progress  must outlive this
    WatchedPages(jet::PageSource& pages, Progress& progress)
        : pages_(pages), progress_(progress), isRead_(pages.pageCount()) {}

    jet::PageNumber pageCount() const override { return pages_.pageCount(); }
    jet::PageView page(jet::PageNumber number) override {
        Interruption::check();
        if (number < isRead_.size() && !isRead_[number]) {
            isRead_[number] = true;
            progress_.at(++readPages_, isRead_.size());
        }
        return pages_.page(number);
    }

private:
    jet::PageSource& pages_;
    Progress& progress_;
    std::vector<bool> isRead_;
    std::uint64_t readPages_ = 0;
};

}  // namespace kontodb
