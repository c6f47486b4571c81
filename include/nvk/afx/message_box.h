// AfxMessageBox: the library's questions to the user. The application
// installs a hook that shows them; without one the text goes to standard
// error and the answer is the default button of the style.
#pragma once

#include "nvk/nvkafx_export.h"

// Buttons (the low four bits of the style).
inline constexpr unsigned MB_OK = 0x0;
inline constexpr unsigned MB_OKCANCEL = 0x1;
inline constexpr unsigned MB_ABORTRETRYIGNORE = 0x2;
inline constexpr unsigned MB_YESNOCANCEL = 0x3;
inline constexpr unsigned MB_YESNO = 0x4;
inline constexpr unsigned MB_RETRYCANCEL = 0x5;
inline constexpr unsigned MB_CANCELTRYCONTINUE = 0x6;
inline constexpr unsigned MB_TYPEMASK = 0xF;
// Icons.
inline constexpr unsigned MB_ICONHAND = 0x10;
inline constexpr unsigned MB_ICONERROR = MB_ICONHAND;
inline constexpr unsigned MB_ICONSTOP = MB_ICONHAND;
inline constexpr unsigned MB_ICONQUESTION = 0x20;
inline constexpr unsigned MB_ICONEXCLAMATION = 0x30;
inline constexpr unsigned MB_ICONWARNING = MB_ICONEXCLAMATION;
inline constexpr unsigned MB_ICONASTERISK = 0x40;
inline constexpr unsigned MB_ICONINFORMATION = MB_ICONASTERISK;
inline constexpr unsigned MB_ICONMASK = 0xF0;
// Default button: the first unless one of these names another.
inline constexpr unsigned MB_DEFBUTTON1 = 0x000;
inline constexpr unsigned MB_DEFBUTTON2 = 0x100;
inline constexpr unsigned MB_DEFBUTTON3 = 0x200;
inline constexpr unsigned MB_DEFBUTTON4 = 0x300;
inline constexpr unsigned MB_DEFMASK = 0xF00;
// Modality and the rest.
inline constexpr unsigned MB_APPLMODAL = 0x0000;
inline constexpr unsigned MB_SYSTEMMODAL = 0x1000;
inline constexpr unsigned MB_TASKMODAL = 0x2000;
inline constexpr unsigned MB_HELP = 0x4000;
inline constexpr unsigned MB_SETFOREGROUND = 0x10000;
inline constexpr unsigned MB_TOPMOST = 0x40000;

// Answers.
inline constexpr int IDOK = 1;
inline constexpr int IDCANCEL = 2;
inline constexpr int IDABORT = 3;
inline constexpr int IDRETRY = 4;
inline constexpr int IDIGNORE = 5;
inline constexpr int IDYES = 6;
inline constexpr int IDNO = 7;
inline constexpr int IDTRYAGAIN = 10;
inline constexpr int IDCONTINUE = 11;

// Shows `text` with the style `type`; returns the button chosen.
NVKAFX_EXPORT int AfxMessageBox(const char* text, unsigned type = MB_OK, unsigned helpId = 0);

namespace nvk::afx {

using MessageBoxHook = int (*)(const char* text, unsigned type, unsigned helpId);

// Installs the hook of the process (null removes it) and returns the one it
// replaces. Applications install theirs at start-up.
NVKAFX_EXPORT MessageBoxHook SetMessageBoxHook(MessageBoxHook hook);

// The answer of a box nobody sees: the default button of the style.
NVKAFX_EXPORT int DefaultButton(unsigned type);

}  // namespace nvk::afx
