// One call of the compression engine "dzip32.dll": the command record with
// its defaults, the loading of the engine, the engine's texts in the user's
// language and the texts of its return codes.
#pragma once

#include "nvk/archive/zip_cmd_struct.h"
#include "nvk/nvkutil_export.h"
#include "nvk/os/types.h"

class NVKUTIL_EXPORT EZipCmd : public ZIPCMDSTRUCT {
public:
    EZipCmd();
    // An add command for `zipFile` and `itemList`, compression 9. Holding the
    // control key down now asks for encryption.
    EZipCmd(char const* zipFile, char const* itemList);
    // Copies share the source's texts and temporary path: only one of the two
    // may be destroyed while they hold texts.
    EZipCmd(EZipCmd const& other);
    EZipCmd& operator=(EZipCmd const& other);
    virtual ~EZipCmd();

    // The record zeroed with the defaults; the owned texts empty.
    void CommonConstruct();

    // Runs the command; -1 when the engine cannot be loaded or lacks its entry.
    int dzip();

    // Loads the engine for good; true when it is loaded.
    static bool LoadLibraryA();
    static void FreeLibrary();
    // The text of a return code. 0 and unknown codes leave the last text.
    static char const* GetErrorMessage(int code);

    // The engine's request for one of its texts: kind 13 and ids 101 to 707
    // copy the text into `buffer` (260 bytes) and return 1; others return 0.
    virtual int DisplayMessage(unsigned int kind, unsigned int unused1, int id, int unused2,
                               char* buffer, char* unused3);

    static int DzipProcessInit(nvk::os::HINSTANCE instance);
    static int DzipProcessDeInit();
    static int DzipThreadInit();
    static int DzipThreadDeInit();

    static nvk::os::HMODULE g_hZipDll;

protected:
    char m_szTempPath[262];
    char* m_pZipFile;
    char* m_pItemList;
};
