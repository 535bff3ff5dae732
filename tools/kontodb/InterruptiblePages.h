#pragma once

#include "jet/page/PageStore.h"
#include "tools/kontodb/Signals.h"

namespace kontodb {

/// Pages on which the work can be broken off each time it needs one.
class InterruptiblePages final : public jet::PageStore {
public:
    /// @param pages  must outlive this
    explicit InterruptiblePages(jet::PageStore& pages) : pages_(pages) {}

    jet::PageNumber pageCount() const override { return pages_.pageCount(); }
    jet::PageView page(jet::PageNumber number) override {
        Interruption::check();
        return pages_.page(number);
    }
    std::span<std::uint8_t> change(jet::PageNumber number) override {
        Interruption::check();
        return pages_.change(number);
    }
    jet::PageNumber append() override {
        Interruption::check();
        return pages_.append();
    }

private:
    jet::PageStore& pages_;
};

}  // namespace kontodb
