#pragma once

#include <functional>
#include <string>
#include <vector>

#include "forms/Form.h"
#include "forms/FormHost.h"
#include "forms/ListView.h"

namespace test {

using Log = std::vector<std::string>;

/// Shows forms without windows. A modal form is handed to the script, which acts as the user and should unload the
/// form; if the script leaves the form open, its close box is clicked.
class FakeHost : public forms::FormHost {
public:
    explicit FakeHost(Log& log) : log_(log) {}

    std::function<void(forms::Form&)> modalScript;

    void load(forms::Form& form) override { note("load", form); }
    void showModal(forms::Form& form) override {
        note("showModal", form);
        if (modalScript) modalScript(form);
        if (form.isLoaded()) form.userClosed();
    }
    void show(forms::Form& form) override { note("show", form); }
    void unloaded(forms::Form& form) override { note("unloaded", form); }

private:
    void note(const char* what, const forms::Form& form) { log_.push_back(what + (" " + base::toUtf8(form.Name()))); }

    Log& log_;
};

/// A peer that does nothing; a test overrides what it needs.
struct SilentPeer : forms::ListViewPeer {
    void show(forms::Property) override {}
    void takeFocus() override {}
    void refresh() override {}
    forms::NativeHandle handle() const override { return 11; }
    void ensureVisible(std::size_t) override {}
};

}  // namespace test
