#pragma once

#include <optional>
#include <vector>

#include "forms/ListView.h"
#include "win32/ListSelection.h"
#include "win32/NativeControl.h"

namespace win32 {

/// A virtual list window: it holds no rows but asks the model for those on the screen.
///
/// Selection. The native list shows the model's selected row and moves it for the user; what the user did is
/// told from the notification that names the newly selected row, so that the model has handled it before the
/// key press or click returns. A click below the rows would empty the selection and goes no further than to
/// give the list the focus; whatever else empties it is undone before the message ends. The former row is deselected
/// before the native list selects another, because that may cost it a look at every row (ListSelection).
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
    /// Tells the native list of the rows, if the model has changed them since.
    void catchUp();

    int modelRow() const;
    int selectedRow() const { return selection_.row(modelRow()); }
    bool handleClick(UINT message, LPARAM lParam);
    LRESULT userInput(UINT message, WPARAM wParam, LPARAM lParam);
    /// Before the native list selects a row for the user.
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
    bool fromCode_ = false;           ///< while the model's state is shown: notifications are not the user's
    bool typing_ = false;             ///< while the native list answers a letter
    bool deselected_ = false;         ///< for a move of the user's that is under way
    int selectedBeforeClick_ = -1;    ///< the selected row when the mouse button went down
    std::optional<int> lastFitting_;  ///< least width of the last column while it fills the list
    std::vector<int> widthCodes_;     ///< by column: the width code last asked for, 0 if the width is given in pixels
    bool wasInSight_ = false;         ///< the selected row, before the list's size changes
    unsigned shownScale_ = 0;         ///< that of the fonts that the widths are made for
};

}  // namespace win32
