#pragma once

#include <cstddef>
#include <cstdint>

namespace forms {

/// What can change in a control and must be shown. A peer that is told of a property reads its value from the model.
enum class Property {
    Enabled,
    Text,     ///< of a text box
    Caption,  ///< of a form, button, check box, label, frame
    BackColor,
    FontBold,
    EnterButton,  ///< of a button: whether Enter presses it now
    Value,        ///< of a check box or option button
    ListIndex,    ///< of a combo box
    Rows,         ///< of a list view: rows added, removed, changed or in another order
    Columns,      ///< of a list view: headers changed
    Selection,    ///< of a list view: which row is selected
    HeaderIcons   ///< of a list view: its header image list
};

/// A native window handle; 0 means no window.
using NativeHandle = std::uintptr_t;

/// The native window that shows a control. The model is the truth; the peer follows it.
///
/// A peer is told after the model has stored the new value and before the event is raised. It reports the user's input
/// through the control's user... function for it, and reads and changes nothing else.
class Peer {
public:
    virtual ~Peer() = default;
    /// The property has changed: show what the model holds now.
    virtual void show(Property property) = 0;
    virtual void takeFocus() = 0;
    /// Paints at once whatever is out of date.
    virtual void refresh() = 0;
    virtual NativeHandle handle() const = 0;
};

/// The peer of a list view.
class ListViewPeer : public Peer {
public:
    /// Scrolls as little as necessary. @param rowIndex  from 0, in the order shown
    virtual void ensureVisible(std::size_t rowIndex) = 0;
};

}  // namespace forms
