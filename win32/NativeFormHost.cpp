#include "win32/NativeFormHost.h"

#include <algorithm>
#include <cassert>

#include "win32/ErrorBox.h"

namespace win32 {

namespace {

/// While this lives, all visible windows of the thread but one are disabled.
class OnlyEnabled {
public:
    explicit OnlyEnabled(HWND window) : window_(window) {
        EnumThreadWindows(GetCurrentThreadId(), disable, reinterpret_cast<LPARAM>(this));
    }
    OnlyEnabled(const OnlyEnabled&) = delete;
    OnlyEnabled& operator=(const OnlyEnabled&) = delete;
    ~OnlyEnabled() {
        for (HWND other : disabled_)
            EnableWindow(other, TRUE);
    }

private:
    static BOOL CALLBACK disable(HWND window, LPARAM self) {
        auto* scope = reinterpret_cast<OnlyEnabled*>(self);
        if (window != scope->window_ && IsWindowVisible(window) && IsWindowEnabled(window)) {
            EnableWindow(window, FALSE);
            scope->disabled_.push_back(window);
        }
        return TRUE;
    }

    HWND window_;
    std::vector<HWND> disabled_;
};

}  // namespace

FormPeer* NativeFormHost::peerOf(const forms::Form& form) const {
    const auto found =
        std::find_if(peers_.begin(), peers_.end(), [&](const auto& peer) { return &peer->form() == &form; });
    return found != peers_.end() ? found->get() : nullptr;
}

FormPeer* NativeFormHost::peerOf(HWND window) const {
    const HWND root = GetAncestor(window, GA_ROOT);
    const auto found =
        std::find_if(peers_.begin(), peers_.end(), [&](const auto& peer) { return peer->window() == root; });
    return found != peers_.end() ? found->get() : nullptr;
}

void NativeFormHost::load(forms::Form& form) {
    assert(peerOf(form) == nullptr);
    peers_.push_back(std::make_unique<FormPeer>(form));
}

void NativeFormHost::showModal(forms::Form& form) {
    FormPeer* peer = peerOf(form);
    assert(peer != nullptr);
    const OnlyEnabled modal(peer->window());
    peer->open();
    while (!peer->isClosed())
        handleNextMessage();
    deleteClosed();
}

void NativeFormHost::show(forms::Form& form) {
    FormPeer* peer = peerOf(form);
    assert(peer != nullptr);
    peer->open();
}

void NativeFormHost::unloaded(forms::Form& form) {
    if (FormPeer* peer = peerOf(form)) peer->close();
}

void NativeFormHost::run() {
    deleteClosed();
    while (!peers_.empty()) {
        handleNextMessage();
        deleteClosed();
    }
}

void NativeFormHost::handleNextMessage() {
    MSG message{};
    GetMessageW(&message, nullptr, 0, 0);
    FormPeer* peer = peerOf(message.hwnd);
    if (peer != nullptr && atBoundary([&] { return peer->preview(message); })) return;
    TranslateMessage(&message);
    DispatchMessageW(&message);
}

void NativeFormHost::deleteClosed() {
    std::erase_if(peers_, [](const auto& peer) { return peer->isClosed(); });
}

}  // namespace win32
