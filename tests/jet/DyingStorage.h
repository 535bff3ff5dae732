#pragma once

#include <cstdlib>
#include <memory>
#include <utility>

#include "jet/storage/Storage.h"
#include "tests/jet/OtherProcess.h"

namespace test {

/// Real files. The process ends at a given step as if it were killed: it releases nothing. Everything that changes
/// something is a step. A write at that step writes only its first half.
class DyingStorage final : public jet::Storage {
public:
    DyingStorage(std::unique_ptr<jet::Storage> storage, int lastStep)
        : storage_(std::move(storage)), stepsLeft_(std::make_shared<int>(lastStep)) {}

    const base::Text& path() const override { return storage_->path(); }
    base::Text fileName() const override { return storage_->fileName(); }
    base::Text journalPath() const override { return storage_->journalPath(); }
    std::unique_ptr<jet::PageIo> openForReading() override { return storage_->openForReading(); }
    jet::OpenedFile openForWriting() override { return dying(storage_->openForWriting()); }
    bool journalLies() override { return storage_->journalLies(); }
    std::unique_ptr<jet::PageIo> openJournal() override { return storage_->openJournal(); }
    jet::OpenedFile createJournal() override {
        step(*stepsLeft_);
        return dying(storage_->createJournal());
    }
    bool removeJournal() override {
        step(*stepsLeft_);
        return storage_->removeJournal();
    }
    jet::Refusal finishJournal() override {
        step(*stepsLeft_);
        return storage_->finishJournal();
    }
    void removeNewJournal() override { storage_->removeNewJournal(); }
    std::optional<jet::FileUser> originalUser() override { return storage_->originalUser(); }

private:
    static bool isLast(int& stepsLeft) { return --stepsLeft == 0; }
    static void step(int& stepsLeft) {
        if (isLast(stepsLeft)) std::_Exit(OtherProcess::kDied);
    }

    class DyingIo final : public jet::PageIo {
    public:
        DyingIo(std::unique_ptr<jet::PageIo> io, std::shared_ptr<int> stepsLeft)
            : io_(std::move(io)), stepsLeft_(std::move(stepsLeft)) {}

        std::uint64_t sizeBytes() override { return io_->sizeBytes(); }
        void read(std::uint64_t offset, std::span<std::uint8_t> bytes) override { io_->read(offset, bytes); }
        void write(std::uint64_t offset, std::span<const std::uint8_t> bytes) override {
            if (isLast(*stepsLeft_)) {
                io_->write(offset, bytes.first(bytes.size() / 2));
                std::_Exit(OtherProcess::kDied);
            }
            io_->write(offset, bytes);
        }
        void sync() override {
            step(*stepsLeft_);
            io_->sync();
        }
        void resize(std::uint64_t sizeBytes) override {
            step(*stepsLeft_);
            io_->resize(sizeBytes);
        }
        bool lock(jet::LockKind kind, std::chrono::milliseconds wait) override { return io_->lock(kind, wait); }

    private:
        std::unique_ptr<jet::PageIo> io_;
        std::shared_ptr<int> stepsLeft_;
    };

    jet::OpenedFile dying(jet::OpenedFile file) const {
        if (file.io) file.io = std::make_unique<DyingIo>(std::move(file.io), stepsLeft_);
        return file;
    }

    std::unique_ptr<jet::Storage> storage_;
    std::shared_ptr<int> stepsLeft_;
};

inline std::unique_ptr<jet::Storage> dyingStorage(const base::Text& path, int lastStep) {
    return std::make_unique<DyingStorage>(jet::fileStorage(path), lastStep);
}

}  // namespace test
