#pragma once

#include <cstddef>
#include <memory>
#include <utility>

#include "jet/page/PageSource.h"
#include "jet/storage/Storage.h"

namespace bench {

/// What was read from and written to the machine.
struct Traffic {
    std::size_t pagesRead = 0;
    std::size_t pagesWritten = 0;  ///< of the database file
    std::size_t bytesWritten = 0;  ///< to the database file and the journal
    std::size_t flushes = 0;
};

class CountingIo final : public jet::PageIo {
public:
    CountingIo(std::unique_ptr<jet::PageIo> io, Traffic& traffic, bool isDatabase)
        : io_(std::move(io)), traffic_(traffic), isDatabase_(isDatabase) {}

    std::uint64_t sizeBytes() override { return io_->sizeBytes(); }
    void read(std::uint64_t offset, std::span<std::uint8_t> bytes) override {
        traffic_.pagesRead += isDatabase_ ? bytes.size() / jet::kPageSize : 0;
        io_->read(offset, bytes);
    }
    void write(std::uint64_t offset, std::span<const std::uint8_t> bytes) override {
        traffic_.pagesWritten += isDatabase_ ? bytes.size() / jet::kPageSize : 0;
        traffic_.bytesWritten += bytes.size();
        io_->write(offset, bytes);
    }
    void sync() override {
        ++traffic_.flushes;
        io_->sync();
    }
    void resize(std::uint64_t sizeBytes) override { io_->resize(sizeBytes); }
    bool lock(jet::LockKind kind, std::chrono::milliseconds wait) override { return io_->lock(kind, wait); }

private:
    std::unique_ptr<jet::PageIo> io_;
    Traffic& traffic_;
    bool isDatabase_;
};

/// A file of this machine that counts its reads, writes and flushes.
class CountingStorage final : public jet::Storage {
public:
    /// @param traffic  must outlive this
    CountingStorage(const base::Text& path, Traffic& traffic) : file_(jet::fileStorage(path)), traffic_(traffic) {}

    const base::Text& path() const override { return file_->path(); }
    base::Text fileName() const override { return file_->fileName(); }
    base::Text journalPath() const override { return file_->journalPath(); }

    std::unique_ptr<jet::PageIo> openForReading() override { return counted(file_->openForReading(), true); }
    std::unique_ptr<jet::PageIo> openForWriting() override { return counted(file_->openForWriting(), true); }
    bool hasJournal() override { return file_->hasJournal(); }
    std::unique_ptr<jet::PageIo> openJournal() override { return counted(file_->openJournal(), false); }
    std::unique_ptr<jet::PageIo> createJournal() override { return counted(file_->createJournal(), false); }
    void finishJournal() override {
        ++traffic_.flushes;
        file_->finishJournal();
    }
    bool removeJournal() override { return file_->removeJournal(); }
    void removeNewJournal() override { file_->removeNewJournal(); }
    std::optional<jet::FileUser> originalUser() override { return file_->originalUser(); }

private:
    std::unique_ptr<jet::PageIo> counted(std::unique_ptr<jet::PageIo> io, bool isDatabase) {
        return io ? std::make_unique<CountingIo>(std::move(io), traffic_, isDatabase) : nullptr;
    }

    std::unique_ptr<jet::Storage> file_;
    Traffic& traffic_;
};

}  // namespace bench
