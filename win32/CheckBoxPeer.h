#pragma once

#include "forms/CheckBox.h"
#include "win32/NativeControl.h"

namespace win32 {

/// A check box; in the graphical style, a push button that stays pressed.
class CheckBoxPeer final : public PeerOn<forms::Peer> {
public:
    CheckBoxPeer(forms::CheckBox& box, const Surroundings& surroundings);

    void show(forms::Property property) override;
    void command(WORD code) override;

private:
    forms::CheckBox& box_;
};

}  // namespace win32
