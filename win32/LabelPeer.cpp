#include "win32/LabelPeer.h"

namespace win32 {

LabelPeer::LabelPeer(forms::Label& label, const Surroundings& surroundings)
    : PeerOn(label, surroundings), label_(label) {
    make(WC_STATICW, label.Caption(), SS_LEFT | SS_NOPREFIX | SS_CENTERIMAGE);
}

void LabelPeer::show(forms::Property property) {
    if (property == forms::Property::Enabled) showEnabled();
}

SIZE LabelPeer::neededSize() const {
    return fonts().extent(label_.Caption(), fonts().normal());
}

}  // namespace win32
