// Bar codes drawn through the bar-code library "Dlsbar32.dll", loaded at run
// time. The library renders into an enhanced metafile that is played on the
// target; where it is missing or refuses the text, two crossed lines (and
// the text, if asked) keep the place on the page.
#pragma once

#include <memory>

#include "nvk/afx/cstring.h"
#include "nvk/afx/dc.h"
#include "nvk/afx/sync_objects.h"
#include "nvk/nvkutil_export.h"
#include "nvk/os/gdi_types.h"

class NVKUTIL_EXPORT EBarCode {
public:
    enum eType {
        TypeAuto = -1,
        TypeNone = 0,
        TypeEAN8 = 1,
        TypeEAN13 = 2,
        TypeUpper = 3,
        TypeMixed18 = 4,
        TypeMixed9 = 5,
        TypeMixed10 = 6,
    };
    enum {
        FlagShowText = 1,    // the text under the bars; in the fallback, in the frame
        FlagCheckDigit = 2,  // the text has no check digit, the library adds it
        FlagCrossOut = 4,    // two yellow diagonals over the finished code
        FlagNormalize = 8,   // PrepareText cuts and pads EAN texts
    };

    EBarCode();
    EBarCode(const EBarCode& other);
    EBarCode& operator=(const EBarCode& other);
    virtual ~EBarCode();

    bool IsInstalled() const { return m_hDll != nullptr; }

    // True if the bar code itself was drawn.
    bool DrawBarCode(nvk::os::HDC dc, const nvk::os::RECT* rect, const char* text, eType type,
                     nvk::os::DWORD flags, nvk::os::DWORD colour);
    bool DrawBarCode(CDC* dc, CRect& rect, const char* text, eType type, nvk::os::DWORD flags,
                     nvk::os::DWORD colour);
    // The type's sample text, with FlagCheckDigit forced on.
    bool DrawSampleBarCode(nvk::os::HDC dc, const nvk::os::RECT* rect, eType type,
                           nvk::os::DWORD flags, nvk::os::DWORD colour);
    bool DrawSampleBarCode(CDC* dc, CRect& rect, eType type, nvk::os::DWORD flags,
                           nvk::os::DWORD colour);
    // Whether the library can render the text.
    bool IsValidText(const char* text, eType type, nvk::os::DWORD flags);

protected:
    // Each looks its function up at every call and holds m_csDll during it.
    // Without the module: status and result -1 (null from BarCodemx); without
    // the function: -2 (null).
    int BarCodeh(nvk::os::HDC dc, nvk::os::RECT* rect, nvk::os::LOGFONTA* font, void* record,
                 char* options);
    void* BarCodemx(nvk::os::HDC dc, nvk::os::RECT* rect, nvk::os::LOGFONTA* font, void* record,
                    nvk::os::HENHMETAFILE* metafile, char* options);
    int BarCodef(nvk::os::RECT* rect, nvk::os::LOGFONTA* font, void* record, char* options);
    int BarInfo(int number, void* record);

    nvk::os::HMODULE m_hDll;
    static CCriticalSection m_csDll;

private:
    static int GetType(eType type, nvk::os::DWORD flags);
    static void PrepareText(CString& text, eType type, nvk::os::DWORD flags);

    // The load that copies share; the last of them frees it.
    std::shared_ptr<void> m_load;
};
