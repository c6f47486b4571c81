// The command record of the compression engine "dzip32.dll", its callbacks,
// the record of the rename procedure, and the engine's numbers: functions,
// return codes and the options of wZipSubOptions. The front-end and the engine
// both read this header, so it is the one place where the record is laid out.
#pragma once

#include <cstddef>
#include <cstdint>

#include "nvk/nvkutil_export.h"

extern "C" {

// Progress: the text, the percentage (0 to 100) and the caller's data. A
// result other than 0 asks the engine to stop; it then returns
// ZE_ABORTED.
using ZipStatusProc = int (*)(char* text, unsigned long percent, void* userData);

// The engine asks for each of its texts with kind 13, the message id and a
// buffer of 260 bytes; a result of 1 means that the buffer holds the text,
// 0 that the engine keeps its own.
using ZipMessageProc = int (*)(unsigned int kind, unsigned int unused1, int id, int unused2,
                               char* buffer, char* unused3, void* userData);

// What the engine hands to the rename procedure for each entry. The procedure
// may change the name, the date, the time and the attributes; a result of 0
// accepts them, any other keeps what the engine proposed.
struct ZIPRENAMEREC {
    char szNewName[260];       // archive name, '/' between folders
    std::uint32_t dosDate;     // date of last write, in the zip (MS-DOS) form
    std::uint32_t dosTime;     // time of last write, in the zip (MS-DOS) form
    std::uint32_t attributes;  // FILE_ATTRIBUTE_* of the source
    char szSourcePath[260];    // the file the entry is read from
};
static_assert(offsetof(ZIPRENAMEREC, dosDate) == 260);
static_assert(offsetof(ZIPRENAMEREC, dosTime) == 264);
static_assert(offsetof(ZIPRENAMEREC, attributes) == 268);
static_assert(offsetof(ZIPRENAMEREC, szSourcePath) == 272);

using ZipRenameProc = int (*)(ZIPRENAMEREC* record, void* userData);

// Integers and flags are 32 bits, the w fields 16. On a 32-bit build the
// offsets are those the engine was made for; on 64-bit the order holds and
// zipStructSize holds this record's own size.
struct NVKUTIL_EXPORT ZIPCMDSTRUCT {
    std::int32_t zipStructSize;
    std::int32_t function;
    char* lpszZIPFile;
    char* lpszItemList;
    ZipStatusProc lpMajorStatus;
    void* lpMajorUserData;
    ZipStatusProc lpMinorStatus;
    void* lpMinorUserData;
    std::int32_t dosifyFlag;
    std::int32_t recurseFlag;
    std::int32_t compFactor;
    std::int32_t quietFlag;
    std::int32_t pathForTempFlag;
    char* lpszTempPath;
    std::int32_t fixFlag;
    std::int32_t fixHarderFlag;
    std::int32_t includeVolumeFlag;
    std::int32_t deleteOriginalFlag;
    std::int32_t growExistingFlag;
    std::int32_t noDirectoryNamesFlag;
    std::int32_t convertLFtoCRLFFlag;
    std::int32_t addCommentFlag;
    char* lpszComment;
    std::int32_t afterDateFlag;
    char* lpszDate;
    std::int32_t oldAsLatestFlag;
    std::int32_t includeOnlyFollowingFlag;
    char* lpszIncludeFollowing;
    std::int32_t excludeFollowingFlag;
    char* lpszExludeFollowing;
    std::int32_t noDirectoryEntriesFlag;
    std::int32_t includeSysHiddenFlag;
    std::int32_t dontCompressTheseSuffixesFlag;
    char* lpszStoreSuffixes;
    std::int32_t encryptFlag;
    char* lpszEncryptCode;
    void* lpEncryptReserved;  // kept for the engine; never read
    ZipMessageProc lpMessageDisplay;
    void* lpMessageDisplayData;
    std::uint16_t wMultiVolControl;
    std::uint16_t wZipSubOptions;
    std::int32_t lResv1;
    std::int32_t lResv2;
    ZipRenameProc lpRenameProc;
    void* lpRenameUserData;
    char* lpszExtProgTitle;
    void* lpMemBlock;
    std::int32_t lMemBlockSize;
};

// The engine's entry, exported as "dzip".
using DzipEntry = int (*)(ZIPCMDSTRUCT* command);

}  // extern "C"

#if UINTPTR_MAX == 0xFFFFFFFFu
static_assert(sizeof(ZIPCMDSTRUCT) == 188);
static_assert(offsetof(ZIPCMDSTRUCT, function) == 4);
static_assert(offsetof(ZIPCMDSTRUCT, lpszZIPFile) == 8);
static_assert(offsetof(ZIPCMDSTRUCT, lpMinorUserData) == 28);
static_assert(offsetof(ZIPCMDSTRUCT, pathForTempFlag) == 48);
static_assert(offsetof(ZIPCMDSTRUCT, lpszTempPath) == 52);
static_assert(offsetof(ZIPCMDSTRUCT, lpszComment) == 88);
static_assert(offsetof(ZIPCMDSTRUCT, lpszExludeFollowing) == 116);
static_assert(offsetof(ZIPCMDSTRUCT, encryptFlag) == 136);
static_assert(offsetof(ZIPCMDSTRUCT, lpszEncryptCode) == 140);
static_assert(offsetof(ZIPCMDSTRUCT, lpMessageDisplay) == 148);
static_assert(offsetof(ZIPCMDSTRUCT, lpMessageDisplayData) == 152);
static_assert(offsetof(ZIPCMDSTRUCT, wMultiVolControl) == 156);
static_assert(offsetof(ZIPCMDSTRUCT, wZipSubOptions) == 158);
static_assert(offsetof(ZIPCMDSTRUCT, lResv1) == 160);
static_assert(offsetof(ZIPCMDSTRUCT, lpRenameProc) == 168);
static_assert(offsetof(ZIPCMDSTRUCT, lpszExtProgTitle) == 176);
static_assert(offsetof(ZIPCMDSTRUCT, lMemBlockSize) == 184);
#endif

// Values of `function`.
inline constexpr int ZIP_FRESHEN = 1;  // replace entries whose file is newer; add none
inline constexpr int ZIP_DELETE = 2;   // remove the entries that the items name
inline constexpr int ZIP_UPDATE = 3;   // add new files, replace entries whose file is newer
inline constexpr int ZIP_ADD = 4;      // add every file, replacing entries of the same name
// lMemBlockSize bytes at lpMemBlock become the entry that lpszItemList names.
inline constexpr int ZIP_MEMTOFILE = 5;

// Bit 15 of wMultiVolControl asks for an archive over several volumes, which
// this engine does not write.
inline constexpr std::uint16_t MV_USE_MULTI = 0x8000;
// The option of wZipSubOptions that asks for the operations log
// "\DZIPLOG.TXT", appended in the archive's folder. Other bits are ignored.
inline constexpr std::uint16_t ZSO_LOGZIPTOFILE = 0x0100;

// The `kind` of the engine's text requests to lpMessageDisplay.
inline constexpr unsigned int ZIP_MESSAGE_TEXT = 13;

// Return codes; the front-end's error texts follow this order.
enum ZipReturnCode {
    ZE_OK = 0,
    ZE_BUSY = 1,         // the engine cannot be entered now; never given by ours
    ZE_EOF = 2,          // the archive ends too soon
    ZE_FORM = 3,         // the archive's structure is not valid
    ZE_MEM = 4,          // out of memory
    ZE_LOGIC = 5,        // internal logic error
    ZE_BIG = 6,          // entry too big to split
    ZE_NOTE = 7,         // invalid comment format
    ZE_TEST = 8,         // invalid archive, or out of memory
    ZE_ABORTED = 9,      // a callback asked to stop
    ZE_TEMP = 10,        // the temporary file could not be written
    ZE_READ = 11,        // a file to compress could not be read
    ZE_NONE = 12,        // nothing to do
    ZE_NAME = 13,        // archive name missing or empty
    ZE_WRITE = 14,       // writing the archive failed
    ZE_CREAT = 15,       // the archive could not be created
    ZE_PARMS = 16,       // invalid combination of parameters
    ZE_INCOMPLETE = 17,  // the operation could not be finished
    ZE_OPEN = 18,        // a file was not found or could not be opened
    ZE_MEDIA = 19,       // the medium is not available
    ZE_MULTI_PARAMS = 20,
    ZE_MULTI_USAGE = 21,
};
