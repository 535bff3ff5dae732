#pragma once

#include <algorithm>
#include <array>
#include <map>
#include <memory>
#include <utility>

#include "base/Value.h"
#include "jet/Errors.h"
#include "jet/page/PageSource.h"
#include "jet/storage/Storage.h"

namespace test {

/// A file that may be as long as the format allows; only pages that were written take memory.
class SparseFile {
public:
    SparseFile(const base::Bytes& file, std::uint64_t sizeBytes) : sizeBytes_(sizeBytes) { write(0, file); }

    std::uint64_t sizeBytes() const { return sizeBytes_; }
    std::size_t writes() const { return writes_; }

    std::unique_ptr<jet::Storage> storage() { return std::make_unique<SparseStorage>(*this); }

private:
    using Page = std::array<std::uint8_t, jet::kPageSize>;

    /// Goes through the bytes page by page.
    template <typename Bytes, typename Step>
    static void forEachPage(std::uint64_t offset, Bytes bytes, Step&& step) {
        while (!bytes.empty()) {
            const auto place = static_cast<std::size_t>(offset % jet::kPageSize);
            const auto part = bytes.first(std::min(bytes.size(), jet::kPageSize - place));
            step(static_cast<jet::PageNumber>(offset / jet::kPageSize), place, part);
            bytes = bytes.subspan(part.size());
            offset += part.size();
        }
    }

    void read(std::uint64_t offset, std::span<std::uint8_t> bytes) const {
        if (offset + bytes.size() > sizeBytes_) throw jet::deviceFailed(u"Speicher", 1);
        forEachPage(offset, bytes, [this](jet::PageNumber number, std::size_t place, std::span<std::uint8_t> part) {
            const auto page = pages_.find(number);
            if (page == pages_.end())
                std::ranges::fill(part, std::uint8_t{0});
            else
                std::copy_n(page->second.begin() + static_cast<std::ptrdiff_t>(place), part.size(), part.begin());
        });
    }

    void write(std::uint64_t offset, std::span<const std::uint8_t> bytes) {
        ++writes_;
        sizeBytes_ = std::max(sizeBytes_, offset + bytes.size());
        forEachPage(offset, bytes, [this](jet::PageNumber number, std::size_t place, auto part) {
            std::ranges::copy(part, pages_[number].begin() + static_cast<std::ptrdiff_t>(place));
        });
    }

    class SparseIo final : public jet::PageIo {
    public:
        explicit SparseIo(SparseFile& file) : file_(file) {}
        std::uint64_t sizeBytes() override { return file_.sizeBytes_; }
        void read(std::uint64_t offset, std::span<std::uint8_t> bytes) override { file_.read(offset, bytes); }
        void write(std::uint64_t offset, std::span<const std::uint8_t> bytes) override { file_.write(offset, bytes); }
        void sync() override {}
        void resize(std::uint64_t sizeBytes) override { file_.sizeBytes_ = sizeBytes; }
        bool lock(jet::LockKind, std::chrono::milliseconds) override { return true; }

    private:
        SparseFile& file_;
    };

    class SparseStorage final : public jet::Storage {
    public:
        explicit SparseStorage(SparseFile& file) : file_(file) {}
        const base::Text& path() const override { return name_; }
        base::Text fileName() const override { return name_; }
        base::Text journalPath() const override { return name_ + base::Text(jet::kJournalSuffix); }
        std::unique_ptr<jet::PageIo> openForReading() override { return std::make_unique<SparseIo>(file_); }
        jet::OpenedFile openForWriting() override { return {openForReading(), jet::Refusal::None}; }
        bool journalLies() override { return false; }
        std::unique_ptr<jet::PageIo> openJournal() override { return std::make_unique<SparseIo>(*file_.journal_); }
        jet::OpenedFile createJournal() override {
            file_.journal_ = std::make_unique<SparseFile>(base::Bytes(), 0);
            return {openJournal(), jet::Refusal::None};
        }
        jet::Refusal finishJournal() override { return jet::Refusal::None; }
        bool removeJournal() override {
            file_.journal_.reset();
            return true;
        }
        void removeNewJournal() override {}
        std::optional<jet::FileUser> originalUser() override { return std::nullopt; }

    private:
        SparseFile& file_;
        base::Text name_ = u"Probe.mdb";
    };

    std::map<jet::PageNumber, Page> pages_;
    std::uint64_t sizeBytes_;
    std::size_t writes_ = 0;
    std::unique_ptr<SparseFile> journal_;
};

}  // namespace test
