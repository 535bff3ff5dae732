#include "jet/transaction/Transaction.h"

#include <algorithm>
#include <cassert>

namespace jet {
namespace {

Storage& writableStorage(const std::unique_ptr<Storage>& storage) {
    if (!storage) throw readOnly();
    return *storage;
}

}  // namespace

/// A page in memory, with its old and its new bytes.
struct Transaction::ChangedPage {
    base::Bytes before;  ///< empty for an appended page
    base::Bytes after;
};

Transaction::Transaction(Database& database)
    : storage_(writableStorage(database.storage_)),
      access_(std::make_unique<WriteAccess>(storage_)),
      header_(readHeader(access_->io(), storage_.path())),
      pages_(std::make_unique<PageFile>(access_->io(), header_.databaseKey)),
      oldPageCount_(pages_->pageCount()),
      pageCount_(oldPageCount_) {
    if (access_->io().sizeBytes() != std::uint64_t{oldPageCount_} * kPageSize)
        throw damaged(oldPageCount_, u"Die Datei endet mitten in dieser Seite");
}

Transaction::~Transaction() = default;

PageView Transaction::page(PageNumber number) {
    assert(state_ == State::Open);
    const auto found = changed_.find(number);
    if (found == changed_.end()) return pages_->page(number);
    return {number, base::ByteView(found->second->after), found->second};
}

std::span<std::uint8_t> Transaction::change(PageNumber number) {
    assert(state_ == State::Open);
    auto found = changed_.find(number);
    if (found == changed_.end()) {
        const PageView view = pages_->page(number);
        const base::Bytes bytes(view.bytes.bytes().begin(), view.bytes.bytes().end());
        found = changed_.emplace(number, std::make_shared<ChangedPage>(ChangedPage{bytes, bytes})).first;
    }
    return found->second->after;
}

PageNumber Transaction::append() {
    assert(state_ == State::Open);
    if (pageCount_ >= kMaxPages) throw fileTooLarge();
    changed_[pageCount_] = std::make_shared<ChangedPage>(ChangedPage{{}, base::Bytes(kPageSize, 0)});
    return pageCount_++;
}

/// The pages to be written, in the form that they have in the file. They are encoded in place, because nobody reads
/// them any more.
std::vector<PageChange> Transaction::changes() {
    std::vector<PageChange> changes;
    for (const auto& [number, page] : changed_) {
        if (page->before == page->after) continue;
        if (!page->before.empty()) encodePage(page->before, number, header_.databaseKey);
        encodePage(page->after, number, header_.databaseKey);
        changes.push_back({number, page->before, page->after});
    }
    std::ranges::sort(changes, {}, &PageChange::number);
    return changes;
}

void Transaction::commit() {
    assert(state_ == State::Open);
    state_ = State::Writing;
    try {
        write(changes());
    } catch (...) {
        end(State::Failed);
        throw;
    }
    end(State::Committed);
}

void Transaction::drop() {
    assert(state_ == State::Open);
    end(State::Dropped);
}

void Transaction::write(const std::vector<PageChange>& changes) {
    if (changes.empty()) return;
    Journal journal(storage_);
    journal.write(access_->io(), oldPageCount_, changes);
    try {
        writePages(changes);
    } catch (...) {
        undo(journal);
        throw;
    }
    journal.remove();
}

/// Appended pages are written first. If the disk is full, no old page has been touched.
void Transaction::writePages(const std::vector<PageChange>& changes) {
    const auto firstAppended =
        std::find_if(changes.begin(), changes.end(), [](const PageChange& change) { return change.before.empty(); });
    PageIo& io = access_->io();
    const auto write = [&io](const PageChange& change) {
        io.write(std::uint64_t{change.number} * kPageSize, change.after);
    };
    std::for_each(firstAppended, changes.end(), write);
    std::for_each(changes.begin(), firstAppended, write);
    isFlushing_ = true;
    io.sync();
}

/// Only the first failure is reported. If this step fails, too, the journal stays for the next opener.
void Transaction::undo(Journal& journal) {
    try {
        journal.recover(access_->io(), isFlushing_ ? Journal::Cause::FailedFlush : Journal::Cause::FailedWrite);
    } catch (const base::RuntimeError&) {
        return;
    }
}

void Transaction::end(State state) {
    state_ = state;
    changed_.clear();
    pages_.reset();
    access_.reset();
}

}  // namespace jet
