#include "nvk/afx/message_box.h"

#include <gtest/gtest.h>

#include <string>

namespace {

std::string g_seen;

int AnswerNo(const char* text, unsigned type, unsigned helpId) {
    g_seen = std::string(text) + "|" + std::to_string(type) + "|" + std::to_string(helpId);
    return IDNO;
}

TEST(AfxMessageBoxTest, HookSeesTheCall) {
    const nvk::afx::MessageBoxHook previous = nvk::afx::SetMessageBoxHook(AnswerNo);
    EXPECT_EQ(AfxMessageBox("Continuer ?", MB_YESNO | MB_ICONQUESTION, 12), IDNO);
    EXPECT_EQ(g_seen, "Continuer ?|36|12");
    EXPECT_EQ(nvk::afx::SetMessageBoxHook(previous), AnswerNo);
}

TEST(AfxMessageBoxTest, WithoutHookTheDefaultButtonAnswers) {
    nvk::afx::SetMessageBoxHook(nullptr);
    testing::internal::CaptureStderr();
    EXPECT_EQ(AfxMessageBox("Le fichier existe", MB_YESNO | MB_ICONQUESTION), IDYES);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "Le fichier existe\n");

    EXPECT_EQ(nvk::afx::DefaultButton(MB_OK), IDOK);
    EXPECT_EQ(nvk::afx::DefaultButton(MB_OKCANCEL | MB_DEFBUTTON2), IDCANCEL);
    EXPECT_EQ(nvk::afx::DefaultButton(MB_YESNOCANCEL | MB_DEFBUTTON3), IDCANCEL);
    EXPECT_EQ(nvk::afx::DefaultButton(MB_ABORTRETRYIGNORE), IDABORT);
    EXPECT_EQ(nvk::afx::DefaultButton(MB_RETRYCANCEL), IDRETRY);
    // A default beyond the buttons falls back to the first.
    EXPECT_EQ(nvk::afx::DefaultButton(MB_YESNO | MB_DEFBUTTON3), IDYES);
}

}  // namespace
