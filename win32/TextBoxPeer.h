#pragma once

#include "forms/TextBox.h"
#include "win32/NativeControl.h"

namespace win32 {

/// An edit window of one line.
class TextBoxPeer final : public PeerOn<forms::Peer> {
public:
    TextBoxPeer(forms::TextBox& box, const Surroundings& surroundings);

    void show(forms::Property property) override;
    void command(WORD code) override;
    HBRUSH background(HDC dc) override;
    /// The edit draws its line at the top; in a box of this height the text is level with a label beside it.
    int fittingHeight() const override;

private:
    forms::TextBox& box_;
    Brush brush_;                  ///< for a background that is not a system colour
    forms::Color brushColor_ = 0;  ///< the colour brush_ was made for
    bool fromCode_ = false;        ///< the model's text is being shown, which the edit reports like typing
};

}  // namespace win32
