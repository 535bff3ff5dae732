#include <gtest/gtest.h>

#include "win32/ErrorBox.h"

namespace {

TEST(ErrorBox, ShowsNumberAndDescriptionAndTheHexadecimalFormOfAProvidersNumber) {
    EXPECT_EQ(win32::errorBoxText(base::runtimeError(base::RuntimeErrorNumber::TypeMismatch)),
              u"Laufzeitfehler '13':\r\n\r\nTypen unverträglich");
    EXPECT_EQ(win32::errorBoxText({-2147220969, u"Text"}), u"Laufzeitfehler '-2147220969 (80040217)':\r\n\r\nText");
    EXPECT_EQ(win32::errorBoxText({-2147217843, u"Kein zulässiges Kennwort."}),
              u"Laufzeitfehler '-2147217843 (80040e4d)':\r\n\r\nKein zulässiges Kennwort.");
    EXPECT_EQ(win32::errorBoxText({35601, u"x"}), u"Laufzeitfehler '35601':\r\n\r\nx");
}

}  // namespace
