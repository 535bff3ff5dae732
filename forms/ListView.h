#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

#include "base/Text.h"
#include "base/Value.h"
#include "forms/ColumnHeader.h"
#include "forms/Control.h"
#include "forms/KeyIndex.h"
#include "forms/ListItem.h"
#include "forms/RowTexts.h"

namespace forms {

class ImageList;

/// A list of rows in columns; at most one row is selected. Made for 1,000,000 rows.
///
/// Order. Rows stay in the order in which they were added until Sorted is set; setting it sorts them at once, by their
/// texts at that moment. While it is set, another SortKey or SortOrder sorts them again, and added rows are put in
/// their places once, when the order is next read. Changing a text never moves a row that already has its place. Rows
/// that compare equal keep their former order.
///
/// Selection. Nothing is selected until code or the user selects a row, and after Clear. The user cannot empty the
/// selection. ItemClick comes once for each row that the user moves to or clicks, even if it was selected already, and
/// never for a selection by code.
///
/// Peers are told Rows at every change of a row, a million times in a refill. A peer only notes that it is out of date,
/// and catches up when it paints, is told Selection, or gets a native message that needs the rows.
class ListView : public Control {
public:
    static constexpr Kind kKind = Kind::ListView;

    enum class ViewMode : std::int16_t { Icon = 0, SmallIcon = 1, List = 2, Report = 3 };
    enum class Order : std::int16_t { Ascending = 0, Descending = 1 };

    ListView(Form& form, base::Text name);

    std::function<void(ListItem item)> onItemClick;
    std::function<void(const ColumnHeader& header)> onColumnClick;

    /// Sort key: its bytes sort as the texts do. If not set, texts are sorted by the values of their units.
    std::function<base::Bytes(base::TextView)> sortKeyOf;
    /// Whether a text matches what the user types. If not set, all units must be the same.
    std::function<bool(base::TextView, base::TextView)> areEqual;

    // Columns.
    int columnCount() const { return static_cast<int>(columns_.size()); }
    /// @param index  from 1. @throws base::RuntimeError 35600 if there is no such column
    const ColumnHeader& ColumnHeaders(int index) const;
    void addColumn(base::Text text, int widthHimetric,
                   ColumnHeader::Alignment alignment = ColumnHeader::Alignment::Left, base::Text tag = {});

    ViewMode View() const { return view_; }
    void setView(ViewMode view);

    /// The pictures of the column headers; null if there are none.
    ImageList* ColumnHeaderIcons() const { return columnHeaderIcons_; }
    void setColumnHeaderIcons(ImageList* icons);

    // Rows.
    int rowCount() const { return static_cast<int>(rows_.size()); }
    /// Appends a row without texts, key or tag.
    ListItem addRow();
    void clearRows();
    /// @param index  from 1, in the current order. @throws base::RuntimeError 35600 if there is no such row
    ListItem ListItems(int index);
    /// @throws base::RuntimeError 35601 if no row has the key
    ListItem ListItems(base::TextView key);

    std::optional<ListItem> SelectedItem();
    /// For code: ItemClick is not raised.
    void setSelectedItem(std::optional<ListItem> item);

    // Order.
    /// The column by which the rows are sorted, from 0: 0 is the text, k is sub-item k.
    std::int16_t SortKey() const { return sortKey_; }
    void setSortKey(std::int16_t sortKey);
    Order SortOrder() const { return sortOrder_; }
    void setSortOrder(Order order);
    bool Sorted() const { return sorted_; }
    void setSorted(bool sorted);

    // What a peer asks, by place in the current order and by column, both from 0.
    /// Empty if there is no such row or cell. Valid until the row is changed.
    base::TextView cellAt(std::size_t place, int column);
    /// Calls `visit` with every row's text in the column, in the order in which the rows were added. This is much
    /// faster than going by place, because neighbours in the order are far apart in memory.
    void visitCells(int column, const std::function<void(base::TextView)>& visit) const;
    /// The selected row's place; nothing if no row is selected.
    std::optional<std::size_t> selectedPlace();
    /// The first row at or after startPlace whose text begins with the prefix, according to areEqual.
    /// @param wrap  continue with the first row after the last
    std::optional<std::size_t> findPrefix(std::size_t startPlace, base::TextView prefix, bool wrap);

    // The user's input; places from 0, columns from 1.
    /// The user's move has selected this row in the native list. Ignored if the row is selected already.
    void userSelectedRow(std::size_t place);
    /// The user clicked the row that was already selected before the mouse button went down: raises ItemClick again.
    void userClickedSelectedRow();
    /// The native selection has become empty: tells the peer to show the selected row again.
    void userEmptiedSelection();
    void userClickedColumn(int column);

    void attachPeer(ListViewPeer& peer);
    void detachPeer();

private:
    friend class ListItem;

    using RowId = KeyIndex::Row;  ///< counts the rows added since the list was cleared, from 0

    struct Row {
        RowTexts texts;  ///< cell 0 is the key, then text and sub-items
        base::Value tag;
        std::uint32_t place = 0;
    };

    Row& rowOf(const ListItem& item);
    std::optional<RowId> rowWithKey(base::TextView key, std::uint32_t hash) const;
    ListItem itemOf(RowId row) { return {*this, row, filling_}; }
    void setCell(const ListItem& item, std::size_t cell, base::TextView text);
    void setKeyOf(const ListItem& item, base::TextView key);
    std::size_t placeOf(const ListItem& item);
    void ensureVisible(const ListItem& item);

    base::TextView sortTextOf(RowId row) const;
    void orderAnew();
    void orderLater();
    /// Does the pending work: sorts all rows again, or puts the added ones in their places.
    void settleOrder();
    /// The first settledCount rows keep their order relative to each other.
    void putInOrder(std::size_t settledCount);
    RowId rowAt(std::size_t place);

    std::vector<ColumnHeader> columns_;
    ViewMode view_ = ViewMode::Icon;
    ImageList* columnHeaderIcons_ = nullptr;

    TextMemory texts_;
    std::vector<Row> rows_;
    std::vector<RowId> order_;      ///< rows by place
    std::size_t orderedCount_ = 0;  ///< places before this one are settled
    KeyIndex keys_;                 ///< holds the keys' hashes; the keys themselves are in the rows' texts
    std::uint32_t filling_ = 0;
    std::optional<RowId> selected_;

    std::int16_t sortKey_ = 0;
    Order sortOrder_ = Order::Ascending;
    bool sorted_ = false;
    bool orderIsDue_ = false;    ///< key or direction differ from those of the rows' current order
    bool textsChanged_ = false;  ///< since the rows were last sorted

    ListViewPeer* listPeer_ = nullptr;
};

}  // namespace forms
