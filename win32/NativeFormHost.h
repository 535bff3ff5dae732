#pragma once

#include <memory>
#include <vector>

#include "forms/FormHost.h"
#include "win32/FormPeer.h"

namespace win32 {

/// Shows forms as native windows and runs the message loop.
class NativeFormHost final : public forms::FormHost {
public:
    void load(forms::Form& form) override;
    void showModal(forms::Form& form) override;
    void show(forms::Form& form) override;
    void unloaded(forms::Form& form) override;

    /// Handles messages until no form is loaded.
    void run();

private:
    FormPeer* peerOf(const forms::Form& form) const;
    FormPeer* peerOf(HWND window) const;
    void handleNextMessage();
    void deleteClosed();

    std::vector<std::unique_ptr<FormPeer>> peers_;
};

}  // namespace win32
