#include "win32/CheckBoxPeer.h"

#include "win32/WideText.h"

namespace win32 {

CheckBoxPeer::CheckBoxPeer(forms::CheckBox& box, const Surroundings& surroundings)
    : PeerOn(box, surroundings), box_(box) {
    // The system toggles the box by itself, so that screen readers can tell whether it is on. It always agrees with the
    // model, because both start with the same value.
    make(WC_BUTTONW, box.Caption(), WS_TABSTOP | BS_AUTOCHECKBOX | (box.isGraphical() ? BS_PUSHLIKE : 0));
    show(forms::Property::Value);
}

void CheckBoxPeer::show(forms::Property property) {
    switch (property) {
        case forms::Property::Value:
            send(BM_SETCHECK, box_.Value() == forms::CheckBox::kChecked ? BST_CHECKED : BST_UNCHECKED);
            break;
        case forms::Property::Caption:
            SetWindowTextW(window(), toWide(box_.Caption()).c_str());
            break;
        case forms::Property::Enabled:
            showEnabled();
            break;
        default:
            break;
    }
}

void CheckBoxPeer::command(WORD code) {
    if (code == BN_CLICKED) box_.userClicked();
}

}  // namespace win32
