#pragma once

#include "jet/page/PageStore.h"
#include "tools/kontodb/Signals.h"

namespace kontodb {

/// Pages of a transaction. Each access ends with Interrupted if the user has ended the program.
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
