#pragma once

#include <optional>
#include <vector>

#include "forms/ListView.h"
#include "win32/ListSelection.h"
#include "win32/NativeControl.h"

namespace win32 {

/// A virtual list window: it holds no rows and asks the model for those on the screen.
///
/// Selection. The native list shows the model's selected row and moves the selection for the user. The model is told by
/// the notification for the newly selected row, so it has handled the change before the key press or click returns. A
/// click below the rows would empty the selection, so it only gives the list the focus; if anything else empties the
/// selection, that is undone before the message ends. The former row is deselected before the native list selects
/// another, because otherwise the list may look at every row (ListSelection).
///
/// Widths. The codes "fit the values" and "fit values and header" are answered from the model's rows.
class ListViewPeer final : public PeerOn<forms::ListViewPeer> {
public:
    ListViewPeer(forms::ListView& list, const Surroundings& surroundings);

    void show(forms::Property property) override;
    void ensureVisible(std::size_t rowIndex) override;
    LRESULT notify(NMHDR& header) override;
    void useFonts() override;
    void systemChanged() override;

protected:
    LRESULT message(UINT message, WPARAM wParam, LPARAM lParam) override;

private:
    void showColumns();
    void showSelection();
    void showHeaderIcons();
    void setSpokenName() const;
    /// Brings the native list up to date if the model's rows have changed.
    void catchUp();

    int modelRow() const;
    int selectedRow() const { return selection_.row(modelRow()); }
    bool handleClick(UINT message, LPARAM lParam);
    LRESULT userInput(UINT message, WPARAM wParam, LPARAM lParam);
    /// Called before the native list selects a row for the user.
    void deselectForMove();
    void keepSelection();
    void headerNotified(const NMHDR& header);
    void keepWidth(int column);
    bool isSelectedRowInSight() const;

    LRESULT markSelection(NMLVCUSTOMDRAW& draw) const;
    LRESULT giveCell(NMLVDISPINFOW& info);
    LRESULT findRow(const NMLVFINDITEMW& search);
    void rowChanged(const NMLISTVIEW& change);
    void clicked(const NMITEMACTIVATE& click);

    bool setColumnWidth(int column, int code);
    void adaptColumnWidths();
    int fittingWidth(int column, bool withHeader);
    int widthLeftFor(int column) const;
    void fillWithLastColumn();

    forms::ListView& list_;
    ListSelection selection_;
    IconList headerIcons_;
    bool outOfDate_ = false;
    bool fromCode_ = false;           ///< the model's state is being shown: notifications do not come from the user
    bool typing_ = false;             ///< the native list is handling a letter
    bool deselected_ = false;         ///< because the user is moving the selection
    int selectedBeforeClick_ = -1;    ///< the selected row when the mouse button went down
    std::optional<int> lastFitting_;  ///< smallest width of the last column while it fills the list
    std::vector<int> widthCodes_;     ///< by column: the width code last requested, 0 if the width is given in pixels
    bool wasInSight_ = false;         ///< whether the selected row was visible before the list's size changes
    unsigned shownScale_ = 0;         ///< scale of the fonts for which the widths are made
};

}  // namespace win32
