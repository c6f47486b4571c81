// The unzip engine ("dunzip32.dll", entry "dunzip"): what its command record
// means to it. The engine takes an UNZIPCMDSTRUCT and returns one of the codes
// below; every text it shows or logs comes from lpMessageDisplay, so that the
// application's language and words are used.
//
// Functions (`function`):
//   1  count all members            returnCount = the number of members
//   2  next member info             member `index` into *zInfo, then index + 1
//   3  count named members          returnCount = members that lpszFilespec names
//   4  next named member info       as 2, among the named members
//   5  comment size                 returnCount = bytes of the archive's comment
//   6  comment                      the comment into lpszReturnString, which has
//                                   room for the size of function 5 and a zero
//   7  indexed member info          member `index` into *zInfo
//   8  extract                      the named members into lpszDestination
//                                   (testFlag: test them instead)
//   9  file to memory               the first named member into lpMemBlock, at
//                                   most lMemBlockSize bytes; returnCount = size
//   11 test                         the named members: read and check each one
// Items of lpszFilespec are separated by blanks, between double quotes when
// they hold one, and may use the wildcards * and ?; "*.*" and "*" name all.
// An item without a folder matches a member's whole name, or, with
// recurseFlag, its name in any folder.
//
// Flags: freshenFlag extracts only members whose file exists and is older,
// updateFlag also those whose file does not exist; overWriteFlag replaces
// files without asking (otherwise an existing file is kept, or, with
// quietFlag 0, the user is asked); noDirectoryNamesFlag extracts every member
// into the destination itself; noDirectoryItemsFlag creates no folder for
// folder members; decryptFlag with lpszDecryptCode gives the password of
// encrypted members (traditional and AES). lStartingOffset is where the
// archive begins in its file; an archive with unannounced bytes before it is
// found all the same.
//
// wUnzipSubOptions: kUnzipLogOperations writes the operations log, named by
// message 143 ("\DUNZLOG.TXT"), in the destination folder (for tests and
// memory, in the archive's folder): the header of message 144, then one line
// for each member in the format of 145 (extracted), 146 (tested) or 147
// (to memory).
//
// Safety: members whose name is absolute, has a drive or climbs out with ".."
// are refused, links are never followed nor made, each file is written under
// a temporary name and put in place only when whole, and the output stops at
// a limit: lResv1 megabytes in all (0: 4 GiB), and lResv2 times the archive's
// size (0: 1100, above what deflate reaches, so only overlapping members or
// exotic methods cross it). Those stops return kUnzipAborted.
//
// Callbacks: lpMajorStatus once for each member with message 71 and the
// percentage of members done; lpMinorStatus with message 72, 73 or 132 and the
// percentage of the member's bytes. A non-zero answer stops the run with
// kUnzipAbortedByApp. lpRenameProc, when set, gets an UnzipRenameRecord for
// each member extracted and may change its name below the destination; a
// non-zero answer skips the member.
#pragma once

#include <cstdint>

#include "nvk/nvkutil_export.h"

namespace nvk::unzip {

enum Function : int {
    kCountAll = 1,
    kNextInfo = 2,
    kCountNamed = 3,
    kNextNamedInfo = 4,
    kCommentSize = 5,
    kComment = 6,
    kIndexedInfo = 7,
    kExtract = 8,
    kFileToMemory = 9,
    kTestNamed = 11,
};

enum Code : int {
    kUnzipOk = 0,
    kUnzipUnexpectedEnd = 2,   // the archive ends too early
    kUnzipBadStructure = 3,    // the archive's structure is not valid
    kUnzipNoMemory = 4,        // memory, or a memory block too small
    kUnzipNothingFound = 9,    // the archive does not exist
    kUnzipNothingToDo = 11,    // no member matched
    kUnzipBadIndex = 25,       // index beyond the members
    kUnzipCreateFailed = 28,   // a destination file or folder could not be made
    kUnzipOpenFailed = 29,     // the archive could not be opened
    kUnzipBadCrc = 39,         // a member's data does not match its checksum
    kUnzipAbortedByApp = 40,   // a callback asked to stop
    kUnzipEncrypted = 41,      // encrypted, and no password given
    kUnzipUnknownMethod = 42,  // compression or encryption not supported
    kUnzipBadPassword = 44,    // the password does not fit
    kUnzipBadCommand = 47,     // the record is not valid
    kUnzipAborted = 48,        // an unsafe member or a size limit stopped the run
    kUnzipSkipped = 49,        // members were skipped (links, refused names)
    kUnzipDiskFull = 50,
};

inline constexpr std::uint16_t kUnzipLogOperations = 0x0001;

// Member information (functions 2, 4 and 7). The layout is fixed: texts are
// zero-terminated in Windows-1252 and cut to their fields.
struct UnzipMemberInfo {
    char szFileName[260];
    std::uint32_t index;  // place of the member in the archive
    std::uint64_t uncompressedSize;
    std::uint64_t compressedSize;
    std::uint32_t compressionMethod;  // 0 stored, 8 deflated, ...
    std::uint32_t crc32;
    std::uint32_t dosDate;  // MS-DOS date and time of the member
    std::uint32_t dosTime;
    std::uint32_t attributes;  // FILE_ATTRIBUTE_* of the member
    std::uint32_t encryption;  // 0 none, 1 traditional, 2/3/4 AES-128/192/256
    std::uint32_t isFolder;
    char szComment[260];
};
static_assert(sizeof(UnzipMemberInfo) == 568);

// What lpRenameProc gets: the name under the destination, to change, then the
// member's time and attributes, then its name in the archive.
struct UnzipRenameRecord {
    char szNewName[260];
    std::uint32_t dosDate;
    std::uint32_t dosTime;
    std::uint32_t attributes;
    char szSourceName[260];
};
static_assert(sizeof(UnzipRenameRecord) == 532);

inline constexpr std::uint64_t kDefaultOutputLimit = 4ull << 30;
inline constexpr std::uint32_t kDefaultRatioLimit = 1100;

}  // namespace nvk::unzip
