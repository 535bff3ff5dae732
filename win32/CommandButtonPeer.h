#pragma once

#include "forms/CommandButton.h"
#include "win32/NativeControl.h"

namespace win32 {

/// A push button. A graphical one whose background is not the button face is painted here, in all its states; otherwise
/// the system paints it.
class CommandButtonPeer final : public PeerOn<forms::Peer> {
public:
    CommandButtonPeer(forms::CommandButton& button, const Surroundings& surroundings);

    void show(forms::Property property) override;
    void command(WORD code) override;
    void paint(const DRAWITEMSTRUCT& draw) override;
    void useFonts() override;

protected:
    LRESULT message(UINT message, WPARAM wParam, LPARAM lParam) override;

private:
    /// The button's style as it should be at present.
    WPARAM kind() const;
    void showKind() const;

    forms::CommandButton& button_;
};

}  // namespace win32
