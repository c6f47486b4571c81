// The command record of the unzip engine ("dunzip32.dll") and EUnzipCmd, which
// prepares one command, loads the engine, splits long item lists into batches
// and gives the engine its texts in the application's language.
#pragma once

#include <cstddef>
#include <cstdint>

#include "nvk/nvkutil_export.h"
#include "nvk/os/types.h"

// Callbacks of the record. Status: the text, the percentage and the user data;
// a non-zero answer asks the engine to stop. Messages: the engine asks for
// text `id` (kind 13) in `buffer`, of 260 bytes; 1 when it was filled.
using UNZIPSTATUSPROC = int (*)(char* text, long percent, void* userData);
using UNZIPMESSAGEPROC = int (*)(unsigned kind, unsigned x, int id, int y, char* buffer, char* z,
                                 void* userData);
using UNZIPRENAMEPROC = int (*)(void* renameRecord, void* userData);

// On a 32-bit build the record is exchanged without gaps, as the engine of
// the applications' own platform expects it (4-byte fields at the 2-byte
// offsets that follow wUnzipSubOptions). A 64-bit build keeps the order with
// natural alignment, and the size field then holds the record's own size.
#if UINTPTR_MAX == 0xFFFFFFFFu
#pragma pack(push, 2)
#endif
struct NVKUTIL_EXPORT UNZIPCMDSTRUCT {
    int unzipStructSize;
    int function;
    char* lpszZIPFile;
    void* zInfo;
    char* lpszFilespec;
    int index;
    char* lpszDestination;
    int freshenFlag;
    int updateFlag;
    int overWriteFlag;
    int quietFlag;
    int testFlag;
    int noDirectoryNamesFlag;
    int recurseFlag;
    int noDirectoryItemsFlag;
    UNZIPSTATUSPROC lpMinorStatus;
    void* lpMinorUserData;
    UNZIPSTATUSPROC lpMajorStatus;
    void* lpMajorUserData;
    int returnCount;
    char* lpszReturnString;
    int decryptFlag;
    int reserved1;
    int reserved2;
    char* lpszDecryptCode;
    UNZIPMESSAGEPROC lpMessageDisplay;
    void* lpMessageDisplayData;
    nvk::os::WORD wUnzipSubOptions;
    nvk::os::LONG lResv1;
    nvk::os::LONG lResv2;
    UNZIPRENAMEPROC lpRenameProc;
    void* lpRenameUserData;
    char* lpszExtProgTitle;
    char* lpMemBlock;
    nvk::os::LONG lMemBlockSize;
    nvk::os::LONG lStartingOffset;
};
#if UINTPTR_MAX == 0xFFFFFFFFu
#pragma pack(pop)
static_assert(sizeof(UNZIPCMDSTRUCT) == 142);
static_assert(offsetof(UNZIPCMDSTRUCT, lpszFilespec) == 16);
static_assert(offsetof(UNZIPCMDSTRUCT, lpMinorStatus) == 60);
static_assert(offsetof(UNZIPCMDSTRUCT, decryptFlag) == 84);
static_assert(offsetof(UNZIPCMDSTRUCT, lpszDecryptCode) == 96);
static_assert(offsetof(UNZIPCMDSTRUCT, wUnzipSubOptions) == 108);
static_assert(offsetof(UNZIPCMDSTRUCT, lResv1) == 110);
static_assert(offsetof(UNZIPCMDSTRUCT, lpRenameProc) == 118);
static_assert(offsetof(UNZIPCMDSTRUCT, lpMemBlock) == 130);
static_assert(offsetof(UNZIPCMDSTRUCT, lStartingOffset) == 138);
#endif
static_assert(offsetof(UNZIPCMDSTRUCT, wUnzipSubOptions) < offsetof(UNZIPCMDSTRUCT, lResv1) &&
              offsetof(UNZIPCMDSTRUCT, lMemBlockSize) < offsetof(UNZIPCMDSTRUCT, lStartingOffset));

// What the size field holds: 142 where the record has its exchanged layout.
inline constexpr int kUnzipCmdStructSize = static_cast<int>(sizeof(UNZIPCMDSTRUCT));

class NVKUTIL_EXPORT EUnzipCmd : public UNZIPCMDSTRUCT {
public:
    EUnzipCmd();
    EUnzipCmd(const char* zipFile, const char* destination, const char* itemList);
    // Copies the record and the added fields as they are, pointers included:
    // a copy and its source must not both be destroyed while they own texts.
    EUnzipCmd(const EUnzipCmd& other);
    EUnzipCmd& operator=(const EUnzipCmd& other);
    virtual ~EUnzipCmd();

    void CommonConstruct();
    int dunzip();

    static bool LoadLibraryA();
    static void FreeLibrary();
    static const char* GetErrorMessage(int code);
    static const char* GetVerifyErrorMessage(int code);

    // The engine's request for text `id` of `kind` 13 in `buffer` (260 bytes).
    virtual int DisplayMessage(unsigned kind, unsigned x, int id, int y, char* buffer, char* z);

    static int DunzipProcessInit(nvk::os::HINSTANCE instance);
    static int DunzipProcessDeInit();
    static int DunzipThreadInit();
    static int DunzipThreadDeInit();

    // The engine's module; null when it is not loaded.
    static nvk::os::HMODULE g_hUnzipDll;

    // The engine takes at most this many items a call; from this many on, the
    // progress is scaled over the whole run.
    static constexpr int kBatchSize = 500;

protected:
    long m_TotalItems = -1;
    long m_CurrentItem = 0;
    char* m_ZipFile = nullptr;
    char* m_Destination = nullptr;
    char* m_ItemList = nullptr;

private:
    // Stands for lpMajorStatus in a batched run: one run's percentage.
    static int ScaleMajorStatus(char* text, long percent, void* userData);
};
