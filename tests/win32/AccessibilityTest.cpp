#include <bit>
#include <gtest/gtest.h>
#include <oleacc.h>
#include <utility>
#include <vector>

#include "app/frmLogin.h"
#include "tests/support/Tool.h"
#include "win32/FormPeer.h"
#include "win32/WideText.h"

namespace {

constexpr GUID kIAccessible = {0x618736E0, 0x3C3D, 0x11CF, {0x81, 0x0C, 0x00, 0xAA, 0x00, 0x38, 0x9B, 0x71}};

struct Spoken {
    base::Text name;
    bool isValueRefused = false;
    LONG state = 0;
};

/// What a screen reader is told of a window.
Spoken spokenOf(const forms::Control& control) {
    Spoken result;
    IAccessible* object = nullptr;
    const auto from = reinterpret_cast<decltype(&AccessibleObjectFromWindow)>(
        reinterpret_cast<void*>(GetProcAddress(LoadLibraryW(L"oleacc.dll"), "AccessibleObjectFromWindow")));
    if (FAILED(from(std::bit_cast<HWND>(control.hWnd()), static_cast<DWORD>(OBJID_CLIENT), kIAccessible,
                    reinterpret_cast<void**>(&object)))) {
        ADD_FAILURE() << "no object for " << base::toUtf8(control.Name());
        return result;
    }
    VARIANT self{};
    self.vt = VT_I4;
    BSTR text = nullptr;
    if (object->get_accName(self, &text) == S_OK) result.name = win32::fromWide(text);
    SysFreeString(text);
    text = nullptr;
    result.isValueRefused = FAILED(object->get_accValue(self, &text));
    SysFreeString(text);
    VARIANT state{};
    if (object->get_accState(self, &state) == S_OK) result.state = state.lVal;
    object->Release();
    return result;
}

struct AccessibilityTest : testing::Test {
    void SetUp() override {
        CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
        tool.openAccountWindow();
    }
    void TearDown() override { CoUninitialize(); }

    test::Tool tool;
    tolv::frmBenKto& window = tool.window();
    tolv::frmLogin login{tool.host, tool.services.fileSystem, tool.services.messageBoxes};
};

TEST_F(AccessibilityTest, TheTabOrderOfTheNativeWindowsIsThatOfTheModel) {
    for (forms::Form* form : {static_cast<forms::Form*>(&window), static_cast<forms::Form*>(&login)}) {
        const win32::FormPeer peer(*form);
        std::vector<HWND> native;
        for (HWND child = GetWindow(peer.window(), GW_CHILD); child != nullptr; child = GetWindow(child, GW_HWNDNEXT)) {
            if ((GetWindowLongPtrW(child, GWL_STYLE) & WS_TABSTOP) != 0) native.push_back(child);
        }
        std::vector<HWND> model;
        for (const forms::Control* control : form->tabOrder())
            model.push_back(std::bit_cast<HWND>(control->hWnd()));
        EXPECT_EQ(native, model) << base::toUtf8(form->Name());
    }
}

TEST_F(AccessibilityTest, ScreenReadersGetTheNamesAndStatesOfFieldsAndList) {
    const win32::FormPeer accounts(window);
    const win32::FormPeer dialog(login);
    for (const auto& [control, name] :
         {std::pair<forms::Control*, const char16_t*>(&window.lvwBenKto, u"Benutzerkonten"),
          {&window.txtUserNameDexo, u"Benutzername"},
          {&window.txtPathGlobal, u"TOLV_SERVER Pfad:"},
          {&window.chbProgrammupdate, u"Programmupdate"},
          {&window.cmdGlobal, u"Durchsuchen..."},
          {&login.txtPasswort, u"Kennwort"}}) {
        EXPECT_EQ(base::toUtf8(spokenOf(*control).name), base::toUtf8(name)) << base::toUtf8(control->Name());
    }
    const Spoken password = spokenOf(login.txtPasswort);
    EXPECT_NE(password.state & STATE_SYSTEM_PROTECTED, 0);
    EXPECT_TRUE(password.isValueRefused);
    EXPECT_NE(spokenOf(window.txtPathGlobal).state & STATE_SYSTEM_UNAVAILABLE, 0) << "there is no account";
    window.cmbAddNew.userClicked();
    EXPECT_EQ(spokenOf(window.txtPathGlobal).state & STATE_SYSTEM_UNAVAILABLE, 0);
}

}  // namespace
