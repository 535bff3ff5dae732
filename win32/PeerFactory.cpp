#include "win32/PeerFactory.h"

#include <cassert>

#include "win32/CheckBoxPeer.h"
#include "win32/CommandButtonPeer.h"
#include "win32/FramePeer.h"
#include "win32/LabelPeer.h"
#include "win32/ListViewPeer.h"
#include "win32/TextBoxPeer.h"

namespace win32 {

namespace {

template <class PeerKind, class Model>
std::unique_ptr<NativeControl> attached(forms::Control& control, const Surroundings& surroundings) {
    auto& model = static_cast<Model&>(control);
    auto peer = std::make_unique<PeerKind>(model, surroundings);
    model.attachPeer(*peer);
    return peer;
}

}  // namespace

std::unique_ptr<NativeControl> makePeer(forms::Control& control, const Surroundings& surroundings) {
    switch (control.kind()) {
        case forms::Kind::TextBox:
            return attached<TextBoxPeer, forms::TextBox>(control, surroundings);
        case forms::Kind::CheckBox:
            return attached<CheckBoxPeer, forms::CheckBox>(control, surroundings);
        case forms::Kind::CommandButton:
            return attached<CommandButtonPeer, forms::CommandButton>(control, surroundings);
        case forms::Kind::Label:
            return attached<LabelPeer, forms::Label>(control, surroundings);
        case forms::Kind::Frame:
            return attached<FramePeer, forms::Frame>(control, surroundings);
        case forms::Kind::ListView:
            return attached<ListViewPeer, forms::ListView>(control, surroundings);
        case forms::Kind::ImageList:
        case forms::Kind::ComboBox:
        case forms::Kind::OptionButton:
            break;
    }
    // Of the other kinds, the program's forms have image lists only.
    assert(control.kind() == forms::Kind::ImageList);
    return nullptr;
}

}  // namespace win32
