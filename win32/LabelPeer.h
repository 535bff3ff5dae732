#pragma once

#include "forms/Label.h"
#include "win32/NativeControl.h"

namespace win32 {

/// A text of one line. The size in the layout is a minimum: the label grows with its text.
class LabelPeer final : public PeerOn<forms::Peer> {
public:
    LabelPeer(forms::Label& label, const Surroundings& surroundings);

    void show(forms::Property property) override;
    SIZE neededSize() const override;

private:
    forms::Label& label_;
};

}  // namespace win32
