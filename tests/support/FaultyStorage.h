#pragma once

#include <algorithm>
#include <functional>
#include <memory>
#include <optional>
#include <random>
#include <utility>
#include <vector>

#include "base/Value.h"
#include "jet/Errors.h"
#include "jet/storage/Storage.h"
#include "jet/transaction/JournalRecord.h"

namespace test {

/// What is lost, of the bytes written but not flushed, when a machine stops.
enum class Loss {
    Nothing,  ///< only the program was killed; the machine goes on
    All,
    Some,  ///< any sector, change of length or directory entry, in any order
};

/// A file and its journal on a disk that fails. Every write, flush, change of length, creation, renaming and removal is
/// a step. A step can fail once, or the machine stops there. A stopped machine does nothing more, and `afterStop` gives
/// what is on its disk. Sectors of 512 bytes are written whole or not at all. A flush that fails leaves some sectors in
/// memory only, and the next one succeeds without writing them, as real systems do. Not imitated: a disk that claims to
/// have flushed but has not, and one that changes sectors that nobody wrote.
///
/// Without a planned fault it is a writable file in memory.
class Machine {
public:
    explicit Machine(base::Bytes file = {}, std::optional<base::Bytes> journal = std::nullopt)
        : state_(std::make_shared<State>()) {
        state_->file = std::make_shared<DiskFile>(std::move(file));
        if (journal) state_->names.journal = std::make_shared<DiskFile>(std::move(*journal));
        state_->namesOnDisk = state_->names;
    }

    const base::Bytes& file() const { return state_->file->now; }
    std::optional<base::Bytes> journal() const {
        return state_->names.journal ? std::optional(state_->names.journal->now) : std::nullopt;
    }
    /// Whether there is a journal that never got its final name.
    bool hasNewJournal() const { return state_->names.newJournal != nullptr; }
    int steps() const { return state_->steps; }
    int flushes() const { return state_->flushes; }
    int reads() const { return state_->reads; }
    std::size_t pagesRead() const { return state_->bytesRead / jet::kPageSize; }

    /// The machine stops at this step, counted from 1. If it is a write, its first half is done.
    void stopAt(int step) { state_->stopAt = step; }
    void failAt(int step) { state_->failAt = step; }
    /// As if only the program had ended: everything in memory is kept, and nothing fails any more.
    void goOn() { state_->stopAt = state_->failAt = std::nullopt; }
    enum class Refusal { None, InUse, ReadOnly };
    /// Opening the file for writing is refused; None allows it again.
    void refuseWriting(Refusal refusal) { state_->refusal = refusal; }

    std::unique_ptr<jet::Storage> storage(base::Text name = u"Konten.mdb") const {
        return std::make_unique<FaultyStorage>(state_, std::move(name));
    }

    /// Access to the file alone.
    std::unique_ptr<jet::PageIo> io() const { return storage()->openForReading(); }

    /// The machine after a restart.
    Machine afterStop(Loss loss, unsigned seed) const {
        std::mt19937 random(seed);
        Names names = loss == Loss::Nothing ? state_->names : state_->namesOnDisk;
        for (const auto& change : state_->unflushedNames) {
            if (loss == Loss::Some && random() % 2 == 0) change(names);
        }
        Machine machine(state_->file->afterStop(loss, random));
        for (const auto name : {&Names::journal, &Names::newJournal}) {
            if (names.*name)
                machine.state_->names.*name = std::make_shared<DiskFile>((names.*name)->afterStop(loss, random));
        }
        machine.state_->namesOnDisk = machine.state_->names;
        return machine;
    }

private:
    struct Step {
        std::uint64_t offset = 0;
        base::Bytes bytes;
        std::optional<std::uint64_t> newSize;
    };

    struct DiskFile {
        explicit DiskFile(base::Bytes bytes) : now(bytes), onDisk(std::move(bytes)) {}

        static void apply(base::Bytes& bytes, const Step& step) {
            if (step.newSize) bytes.resize(static_cast<std::size_t>(*step.newSize));
            const std::size_t end = static_cast<std::size_t>(step.offset) + step.bytes.size();
            if (!step.bytes.empty() && bytes.size() < end) bytes.resize(end);
            std::copy(step.bytes.begin(), step.bytes.end(), bytes.begin() + static_cast<std::ptrdiff_t>(step.offset));
        }

        void add(Step step) {
            apply(now, step);
            unflushed.push_back(std::move(step));
        }

        base::Bytes afterStop(Loss loss, std::mt19937& random) const {
            return loss == Loss::Nothing ? now : loss == Loss::All ? onDisk : withSome(random, 2);
        }

        /// What is on the disk, with some of what has not been flushed.
        /// @param lengths  on average one in this many changes of length is on the disk; 1: all are
        base::Bytes withSome(std::mt19937& random, unsigned lengths) const {
            base::Bytes bytes = onDisk;
            for (const Step& step : unflushed) {
                if (step.newSize && random() % lengths == 0) apply(bytes, step);
                const unsigned oneIn = 1 + random() % 4;
                for (std::size_t at = 0; at < step.bytes.size(); at += jet::kSectorBytes) {
                    const auto begin = step.bytes.begin() + static_cast<std::ptrdiff_t>(at);
                    const auto count = std::min(jet::kSectorBytes, step.bytes.size() - at);
                    const base::Bytes sector(begin, begin + static_cast<std::ptrdiff_t>(count));
                    if (random() % oneIn == 0) apply(bytes, {step.offset + at, sector, std::nullopt});
                }
            }
            return bytes;
        }

        void flush() {
            for (const Step& step : unflushed)
                apply(onDisk, step);
            unflushed.clear();
        }

        void failToFlush(unsigned seed) {
            std::mt19937 random(seed);
            onDisk = withSome(random, 1);
            unflushed.clear();
        }

        base::Bytes now;
        base::Bytes onDisk;
        std::vector<Step> unflushed;
    };

    /// The names in the folder of the file.
    struct Names {
        std::shared_ptr<DiskFile> journal, newJournal;
    };

    struct State {
        void change(const std::function<void(Names&)>& change) {
            step();
            change(names);
            unflushedNames.push_back(change);
        }

        /// @return false if the machine stops here; a write must then do only its first half
        bool begin() {
            ++steps;
            if (stopAt && steps > *stopAt) throw jet::deviceFailed(u"Platte", 1);
            if (failAt == steps) throw jet::deviceFailed(u"Platte", 2);
            return stopAt != steps;
        }
        void step() {
            if (!begin()) throw jet::deviceFailed(u"Platte", 1);
        }

        std::shared_ptr<DiskFile> file;
        Names names, namesOnDisk;
        std::vector<std::function<void(Names&)>> unflushedNames;
        int steps = 0;
        int flushes = 0;
        int reads = 0;
        std::size_t bytesRead = 0;
        std::optional<int> stopAt, failAt;
        Refusal refusal = Refusal::None;
    };

    class FaultyIo : public jet::PageIo {
    public:
        FaultyIo(std::shared_ptr<State> state, std::shared_ptr<DiskFile> file)
            : state_(std::move(state)), file_(std::move(file)) {}

        std::uint64_t sizeBytes() override { return file_->now.size(); }
        void read(std::uint64_t offset, std::span<std::uint8_t> bytes) override {
            ++state_->reads;
            state_->bytesRead += bytes.size();
            if (offset + bytes.size() > file_->now.size()) throw jet::deviceFailed(u"Platte", 3);
            std::copy_n(file_->now.begin() + static_cast<std::ptrdiff_t>(offset), bytes.size(), bytes.begin());
        }
        void write(std::uint64_t offset, std::span<const std::uint8_t> bytes) override {
            const bool isWhole = state_->begin();
            const auto part = isWhole ? bytes : bytes.first(bytes.size() / 2 / jet::kSectorBytes * jet::kSectorBytes);
            file_->add({offset, {part.begin(), part.end()}, std::nullopt});
            if (!isWhole) throw jet::deviceFailed(u"Platte", 1);
        }
        void sync() override {
            try {
                state_->step();
            } catch (const base::RuntimeError&) {
                if (state_->failAt == state_->steps) file_->failToFlush(static_cast<unsigned>(state_->steps));
                throw;
            }
            ++state_->flushes;
            file_->flush();
        }
        void resize(std::uint64_t sizeBytes) override {
            state_->step();
            file_->add({0, {}, sizeBytes});
        }
        bool lock(jet::LockKind, std::chrono::milliseconds) override { return true; }

    private:
        std::shared_ptr<State> state_;
        std::shared_ptr<DiskFile> file_;
    };

    class FaultyStorage : public jet::Storage {
    public:
        FaultyStorage(std::shared_ptr<State> state, base::Text name)
            : state_(std::move(state)), name_(std::move(name)) {}

        const base::Text& path() const override { return name_; }
        base::Text fileName() const override { return name_; }
        base::Text journalPath() const override { return name_ + base::Text(jet::kJournalSuffix); }
        std::unique_ptr<jet::PageIo> openForReading() override { return open(state_->file); }
        std::unique_ptr<jet::PageIo> openForWriting() override {
            if (state_->refusal == Refusal::ReadOnly) throw jet::readOnly();
            return state_->refusal == Refusal::InUse ? nullptr : open(state_->file);
        }
        bool hasJournal() override { return state_->names.journal != nullptr; }
        std::unique_ptr<jet::PageIo> openJournal() override { return open(state_->names.journal); }
        std::unique_ptr<jet::PageIo> createJournal() override {
            const auto made = std::make_shared<DiskFile>(base::Bytes{});
            state_->change([made](Names& names) { names.newJournal = made; });
            return open(made);
        }
        void finishJournal() override {
            if (state_->names.journal) throw jet::deviceFailed(u"Platte", 4);
            state_->change([made = state_->names.newJournal](Names& names) {
                names.journal = made;
                if (names.newJournal == made) names.newJournal = nullptr;
            });
            try {
                state_->step();
            } catch (const base::RuntimeError&) {
                removeJournal();
                throw;
            }
            state_->namesOnDisk = state_->names;
            state_->unflushedNames.clear();
        }
        bool removeJournal() override { return remove(&Names::journal); }
        void removeNewJournal() override {
            if (state_->names.newJournal) remove(&Names::newJournal);
        }
        std::optional<jet::FileUser> originalUser() override { return std::nullopt; }

    private:
        std::unique_ptr<jet::PageIo> open(const std::shared_ptr<DiskFile>& file) const {
            return std::make_unique<FaultyIo>(state_, file);
        }

        bool remove(std::shared_ptr<DiskFile> Names::*name) {
            try {
                state_->change([name](Names& names) { names.*name = nullptr; });
            } catch (const base::RuntimeError&) {
                return false;
            }
            return true;
        }

        std::shared_ptr<State> state_;
        base::Text name_;
    };

    std::shared_ptr<State> state_;
};

}  // namespace test
