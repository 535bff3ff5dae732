#pragma once

#include "forms/CommandButton.h"
#include "win32/NativeControl.h"

namespace win32 {

/// A push button. While a graphical one has another background than the button face, it is painted here, in
/// all its states; otherwise by the system.
class CommandButtonPeer final : public PeerOn<forms::Peer> {
public:
    CommandButtonPeer(forms::CommandButton& button, const Surroundings& surroundings);

    void show(forms::Property property) override;
    void command(WORD code) override;
    LRESULT notify(NMHDR& header) override;
    void useFonts() override;

private:
    bool paintsItself() const;
    void paint(const NMCUSTOMDRAW& draw) const;

    forms::CommandButton& button_;
};

}  // namespace win32
