#pragma once

#include "forms/Frame.h"
#include "win32/NativeControl.h"

namespace win32 {

/// A line around the controls that are drawn above it.
class FramePeer final : public PeerOn<forms::Peer> {
public:
    FramePeer(forms::Frame& frame, const Surroundings& surroundings);

    void show(forms::Property property) override;

protected:
    LRESULT message(UINT message, WPARAM wParam, LPARAM lParam) override;
};

}  // namespace win32
