#include "forms/ListView.h"

#include <algorithm>
#include <utility>

#include "base/RuntimeError.h"
#include "forms/RowSort.h"

namespace forms {
namespace {

/// Whether the key could be mistaken for an index: an optional sign, then digits, points and commas.
bool readsAsNumber(base::TextView key) {
    key = base::trimBlanks(key);
    if (!key.empty() && (key.front() == u'+' || key.front() == u'-')) key.remove_prefix(1);
    return !key.empty() && key.find_first_not_of(u"0123456789.,") == base::TextView::npos &&
           key.find_first_of(u"0123456789") != base::TextView::npos;
}

/// The high byte of each unit before its low byte, so that the bytes sort as the units do.
base::Bytes unitBytes(base::TextView text) {
    base::Bytes bytes;
    bytes.reserve(2 * text.size());
    for (const char16_t unit : text) {
        bytes.push_back(static_cast<std::uint8_t>(unit >> 8U));
        bytes.push_back(static_cast<std::uint8_t>(unit & 0xFFU));
    }
    return bytes;
}

/// FNV-1a of the units; equal for keys that differ only in case.
std::uint32_t hashOf(base::TextView key) {
    std::uint32_t hash = 2166136261U;
    for (const char16_t unit : key)
        hash = (hash ^ base::asciiLower(unit)) * 16777619U;
    return hash;
}

}  // namespace

ListView::ListView(Form& form, base::Text name) : Control(form, kKind, std::move(name)) {}

void ListView::attachPeer(ListViewPeer& peer) {
    Control::attachPeer(peer);
    listPeer_ = &peer;
}

void ListView::detachPeer() {
    Control::detachPeer();
    listPeer_ = nullptr;
}

// Columns

const ColumnHeader& ListView::ColumnHeaders(int index) const {
    if (index < 1 || index > columnCount()) throw base::runtimeError(base::RuntimeErrorNumber::IndexOutOfBounds);
    return columns_[static_cast<std::size_t>(index - 1)];
}

void ListView::addColumn(base::Text text, int widthHimetric, ColumnHeader::Alignment alignment, base::Text tag) {
    columns_.emplace_back(columnCount() + 1, std::move(text), widthHimetric, alignment, std::move(tag));
    tellPeer(Property::Columns);
}

void ListView::setView(ViewMode view) {
    if (view == view_) return;
    view_ = view;
    tellPeer(Property::Columns);
}

void ListView::setColumnHeaderIcons(ImageList* icons) {
    if (icons == columnHeaderIcons_) return;
    columnHeaderIcons_ = icons;
    tellPeer(Property::HeaderIcons);
}

// Rows

ListItem ListView::addRow() {
    if (orderIsDue_) settleOrder();
    const auto row = static_cast<RowId>(rows_.size());
    rows_.emplace_back().place = row;
    order_.push_back(row);
    if (!sorted_) orderedCount_ = order_.size();
    tellPeer(Property::Rows);
    return itemOf(row);
}

void ListView::clearRows() {
    ++filling_;
    if (rows_.empty()) return;
    keys_.clear();
    rows_.clear();
    texts_.clear();
    order_.clear();
    orderedCount_ = 0;
    orderIsDue_ = false;
    const bool hadSelection = selected_.has_value();
    selected_.reset();
    tellPeer(Property::Rows);
    if (hadSelection) tellPeer(Property::Selection);
}

ListItem ListView::ListItems(int index) {
    if (index < 1 || index > rowCount()) throw base::runtimeError(base::RuntimeErrorNumber::IndexOutOfBounds);
    return itemOf(rowAt(static_cast<std::size_t>(index - 1)));
}

ListItem ListView::ListItems(base::TextView key) {
    const auto found = rowWithKey(key, hashOf(key));
    if (!found) throw base::runtimeError(base::RuntimeErrorNumber::ElementNotFound);
    return itemOf(*found);
}

ListView::Row& ListView::rowOf(const ListItem& item) {
    if (item.list_ != this || item.filling_ != filling_) {
        throw base::runtimeError(base::RuntimeErrorNumber::ElementNotFound);
    }
    return rows_[item.row_];
}

std::optional<ListView::RowId> ListView::rowWithKey(base::TextView key, std::uint32_t hash) const {
    return keys_.find(hash,
                      [this, key](RowId row) { return base::equalsIgnoringAsciiCase(key, rows_[row].texts.cell(0)); });
}

std::size_t ListView::placeOf(const ListItem& item) {
    const Row& row = rowOf(item);
    settleOrder();
    return row.place;
}

void ListView::setCell(const ListItem& item, std::size_t cell, base::TextView text) {
    Row& row = rowOf(item);
    if (row.texts.cell(cell) == text) return;
    if (orderIsDue_) settleOrder();  // using the text before the change
    textsChanged_ = true;
    row.texts.setCell(texts_, cell, text);
    tellPeer(Property::Rows);
}

void ListView::setKeyOf(const ListItem& item, base::TextView key) {
    Row& row = rowOf(item);
    if (row.texts.cell(0) == key) return;
    if (readsAsNumber(key)) throw base::runtimeError(base::RuntimeErrorNumber::InvalidKey);
    const std::uint32_t hash = hashOf(key);
    const auto holder = rowWithKey(key, hash);
    if (holder && *holder != item.row_) throw base::runtimeError(base::RuntimeErrorNumber::KeyNotUnique);
    const base::TextView keyBefore = row.texts.cell(0);
    if (!keyBefore.empty()) keys_.erase(hashOf(keyBefore), item.row_);
    const bool hasKey = !key.empty();
    row.texts.setCell(texts_, 0, key);  // after this `key` may be a view of texts that have moved
    if (hasKey) keys_.insert(hash, item.row_);
}

void ListView::ensureVisible(const ListItem& item) {
    const std::size_t place = placeOf(item);
    if (listPeer_ != nullptr) listPeer_->ensureVisible(place);
}

// Selection

std::optional<ListItem> ListView::SelectedItem() {
    if (!selected_) return std::nullopt;
    return itemOf(*selected_);
}

void ListView::setSelectedItem(std::optional<ListItem> item) {
    if (item) rowOf(*item);  // raises an error if the row is not of this list
    const std::optional<RowId> row = item ? std::optional<RowId>(item->row_) : std::nullopt;
    if (row == selected_) return;
    selected_ = row;
    tellPeer(Property::Selection);
}

std::optional<std::size_t> ListView::selectedPlace() {
    if (!selected_) return std::nullopt;
    settleOrder();
    return rows_[*selected_].place;
}

void ListView::userSelectedRow(std::size_t place) {
    if (place >= rows_.size()) return;
    const RowId row = rowAt(place);
    if (row == selected_ || !takesInput(Property::Selection)) return;
    selected_ = row;
    if (onItemClick) onItemClick(itemOf(row));
}

void ListView::userClickedSelectedRow() {
    if (takesInput() && selected_ && onItemClick) onItemClick(itemOf(*selected_));
}

void ListView::userEmptiedSelection() {
    tellPeer(Property::Selection);
}

void ListView::userClickedColumn(int column) {
    if (takesInput() && onColumnClick) onColumnClick(ColumnHeaders(column));
}

// Order

void ListView::setSortKey(std::int16_t sortKey) {
    if (sortKey == sortKey_) return;
    settleOrder();
    sortKey_ = sortKey;
    if (sorted_) orderLater();
}

void ListView::setSortOrder(Order order) {
    if (order == sortOrder_) return;
    if (!orderIsDue_) settleOrder();  // equal rows keep their order in both directions
    sortOrder_ = order;
    if (sorted_) orderLater();
}

void ListView::setSorted(bool sorted) {
    settleOrder();
    if (sorted && (!sorted_ || textsChanged_)) orderAnew();
    sorted_ = sorted;
}

base::TextView ListView::sortTextOf(RowId row) const {
    return rows_[row].texts.cell(static_cast<std::size_t>(sortKey_) + 1);
}

void ListView::orderAnew() {
    putInOrder(0);
    tellPeer(Property::Rows);
    if (selected_) tellPeer(Property::Selection);
}

/// Callers mostly set key and direction one after the other: sort only once for both.
void ListView::orderLater() {
    orderIsDue_ = true;
    tellPeer(Property::Rows);
}

void ListView::settleOrder() {
    if (orderIsDue_) {
        putInOrder(0);
    } else if (orderedCount_ < order_.size()) {
        putInOrder(orderedCount_);
    }
}

void ListView::putInOrder(std::size_t settledCount) {
    RowSort sort(sortOrder_ == Order::Descending);
    sort.reserve(order_.size());
    for (const RowId row : order_) {
        const base::TextView text = sortTextOf(row);
        sort.add(row, sortKeyOf ? sortKeyOf(text) : unitBytes(text));
    }
    order_ = sort.inOrder(settledCount);
    for (std::size_t place = 0; place < order_.size(); ++place)
        rows_[order_[place]].place = static_cast<std::uint32_t>(place);
    orderedCount_ = order_.size();
    orderIsDue_ = false;
    if (settledCount == 0) textsChanged_ = false;
}

ListView::RowId ListView::rowAt(std::size_t place) {
    settleOrder();
    return order_[place];
}

base::TextView ListView::cellAt(std::size_t place, int column) {
    if (place >= rows_.size() || column < 0) return {};
    return rows_[rowAt(place)].texts.cell(static_cast<std::size_t>(column) + 1);
}

void ListView::visitCells(int column, const std::function<void(base::TextView)>& visit) const {
    for (const Row& row : rows_)
        visit(row.texts.cell(static_cast<std::size_t>(column) + 1));
}

std::optional<std::size_t> ListView::findPrefix(std::size_t startPlace, base::TextView prefix, bool wrap) {
    // Neighbours often have the same beginning, and comparing in the order of a language is slow.
    std::optional<base::TextView> refused;
    const auto matches = [&](std::size_t place) {
        const base::TextView start = cellAt(place, 0).substr(0, prefix.size());
        if (start.size() < prefix.size() || start == refused) return false;
        const bool isEqual = areEqual ? areEqual(start, prefix) : start == prefix;
        if (!isEqual) refused = start;
        return isEqual;
    };
    for (std::size_t place = startPlace; place < rows_.size(); ++place) {
        if (matches(place)) return place;
    }
    if (!wrap) return std::nullopt;
    for (std::size_t place = 0; place < std::min(startPlace, rows_.size()); ++place) {
        if (matches(place)) return place;
    }
    return std::nullopt;
}

}  // namespace forms
