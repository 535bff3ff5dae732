#include <cassert>
#include <cstdio>
#include <gtest/gtest.h>
#include <thread>

#include "app/mPublic.h"
#include "win32/ErrorBox.h"
#include "win32/WideText.h"

namespace {

/// Waits for the error box of this process, prints its text and closes it.
void answerTheBox() {
    HWND box = nullptr;
    while (box == nullptr) {
        Sleep(20);
        box = FindWindowW(L"#32770", win32::toWide(tolv::kApplicationTitle).c_str());
    }
    for (HWND part = GetWindow(box, GW_CHILD); part != nullptr; part = GetWindow(part, GW_HWNDNEXT))
        std::fputs((base::toUtf8(win32::textOf(part)) + "\n").c_str(), stderr);
    std::fflush(stderr);
    SendMessageW(box, WM_COMMAND, IDOK, 0);
}

void failAnAssertion() {
    std::thread(answerTheBox).detach();
    const bool sound = false;
    assert(sound);
}

TEST(ErrorBox, ShowsNumberAndDescriptionAndTheHexadecimalFormOfAProvidersNumber) {
    EXPECT_EQ(win32::errorBoxText(base::runtimeError(base::RuntimeErrorNumber::TypeMismatch)),
              u"Laufzeitfehler '13':\r\n\r\nTypen unverträglich");
    EXPECT_EQ(win32::errorBoxText({-2147220969, u"Text"}), u"Laufzeitfehler '-2147220969 (80040217)':\r\n\r\nText");
    EXPECT_EQ(win32::errorBoxText({-2147217843, u"Kein zulässiges Kennwort."}),
              u"Laufzeitfehler '-2147217843 (80040e4d)':\r\n\r\nKein zulässiges Kennwort.");
    EXPECT_EQ(win32::errorBoxText({35601, u"x"}), u"Laufzeitfehler '35601':\r\n\r\nx");
}

TEST(ErrorBox, AFailedAssertionEndsTheProgramWithABoxThatNamesFileAndLine) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(failAnAssertion(), testing::ExitedWithCode(1),
                "Interner Fehler .tests.win32.ErrorBoxTest.cpp, Zeile \\d+");
}

}  // namespace
