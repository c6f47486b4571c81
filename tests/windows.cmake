# The tests on Windows, run under Wine by the cross build's emulator. Every
# test needs the Wine server that the fixture "wine" starts once for the run
# (a server of each test's own costs seconds, and one started inside a test
# has hung). What cannot run on Windows is left out or labelled posix_only,
# and the test windows.skipped prints the list with the reasons.

set(NVK_TEST_PROPERTIES FIXTURES_REQUIRED wine)
add_compile_options(-include ${CMAKE_CURRENT_SOURCE_DIR}/support/windows_compat.h)

add_test(NAME wine.start_server COMMAND ${CMAKE_CROSSCOMPILING_EMULATOR} --start-server)
add_test(NAME wine.stop_server COMMAND ${CMAKE_CROSSCOMPILING_EMULATOR} --stop-server)
set_tests_properties(wine.start_server PROPERTIES FIXTURES_SETUP wine)
set_tests_properties(wine.stop_server PROPERTIES FIXTURES_CLEANUP wine)

# Folders whose programs need what the Windows build lacks (none, when the
# engines' sources are there).
set(NVK_WINDOWS_LEFT_OUT_FOLDERS)
# Sources that test the POSIX backend's own parts.
set(NVK_WINDOWS_LEFT_OUT_SOURCES
    "files/mount_kind_test.cpp: the POSIX backend's mount table"
    "os/shared_machine_test.cpp: POSIX users, ownership and FIFOs"
    "os/path_map_test.cpp: the POSIX backend's drive map"
    "os/windows_names_test.cpp: the POSIX backend's name matching"
    "os/file_system_test.cpp: calls into the POSIX backend's internals"
    "os/module_test.cpp: calls into the POSIX backend's internals"
    "os/process_test.cpp: calls into the POSIX backend's internals"
    "os/registry_test.cpp: calls into the POSIX backend's internals"
    "os/registry_safety_test.cpp: calls into the POSIX backend's internals"
    "os/native_names_test.cpp: the POSIX backend's UTF-8 names on disk")
# bar codes: the engine draws through the OS layer (Windows' GDI here; cairo is
# only the POSIX backend's), on libzint built from Debian's sources.
if(NVK_LIBZINT)
    list(APPEND NVK_WINDOWS_LEFT_OUT_SOURCES
         "barcode/bar_code_reader_test.cpp: reads the drawings with POSIX-only readers (zbarimg, \
rsvg-convert) and runs the tool from a POSIX shell")
else()
    list(APPEND NVK_WINDOWS_LEFT_OUT_FOLDERS
         "barcode: the engine needs libzint, whose sources are missing (run scripts/mingw_sources.sh)")
endif()
# archives: the engines need the libzip that the build makes from Debian's
# sources (cmake/NvkWindowsDependencies.cmake), when they are there.
if(NOT NVK_LIBZIP)
    list(APPEND NVK_WINDOWS_LEFT_OUT_FOLDERS
         "archive: the engines need libzip, whose sources are missing (run scripts/mingw_sources.sh)")
else()
    list(APPEND NVK_WINDOWS_LEFT_OUT_SOURCES
         "archive/archive_failures_test.cpp: ulimit -f and kill -9 of the tool from a POSIX shell"
         "archive/zip_readers_test.cpp: every case reads our archives with POSIX-only peers (unzip, 7zz, bsdtar, Python's zipfile)"
         "archive/zip_tool_test.cpp: runs the tool from a POSIX shell and reads its archives with Python's zipfile")
endif()
# Single tests that cannot pass here, as "program Suite.Case: reason" (the
# case may end in a gtest wildcard). Each is labelled with its list's name and
# left out of the run. posix_only: the test needs a fact of the POSIX build.
# wine_differs: Wine answers otherwise than Windows documents, and the test
# keeps to Windows' documented answer; or, where Windows documents nothing,
# otherwise than the POSIX build, as the reason says.
# A reason holds no semicolon, which would end its entry.
set(NVK_WINDOWS_CASES_posix_only)
# archives: the cases that read our archives with Python's zipfile or Info-ZIP
# unzip, make theirs with those or with Info-ZIP zip or 7zz, or run the tool
# from a POSIX shell.
if(NVK_LIBZIP)
    list(APPEND NVK_WINDOWS_CASES_posix_only
         "test_archive ZipEngine.FreshenUpdateAndDeleteChangeTheEntriesTheyShould: reads the archive with Python's zipfile"
         "test_archive ZipEngine.FlagsChooseTheFilesTheirNamesAndTheirMethod: reads the archives with Python's zipfile"
         "test_archive ZipEngine.WritesAMemoryBlockUnderItsAnsiName: reads the archive with Python's zipfile"
         "test_archive DossierZip.ArchivesTheMainFilesAndTheLatestExerciseUnderDossiers: reads the archive with unzip, zipinfo, 7zz, bsdtar and Python's zipfile"
         "test_archive DossierZip.TakesTheExerciseAskedForAndRefusesAMissingDataFolder: reads the archive with unzip -p"
         "test_archive DossierZip.AnExcludedMainFileLeavesTheInformationFileAsMainFile: reads the archive with unzip -p"
         "test_archive DossierZip.TheToolArchivesADossierNamedByItsMainFile: runs the tool from a POSIX shell, found by /proc/self/exe"
         "test_archive UnzipReaders.InfoZipArchivesWithFoldersPasswordsAndComments: makes its archives with Info-ZIP zip through a POSIX shell"
         "test_archive UnzipReaders.AesMembersAndMemberInformation: makes its archive with 7zz through a POSIX shell"
         "test_archive UnzipReaders.PythonArchivesWithAPreambleAndZip64: makes its archives with Python's zipfile through a POSIX shell"
         "test_archive UnzipSafety.BombsStopAtTheLimitsAndLeaveNoFile: makes its deflated archive with Python's zipfile through a POSIX shell"
         "test_archive UnzipSafety.APreExistingLinkIsNotGoneThrough: makes symbolic links with std::filesystem, which mingw-w64's library does not implement (ENOSYS). UnzipSafety.AJunctionInTheDestinationIsNotGoneThrough is its Windows counterpart"
         "test_archive UnzipLarge.AMemberOver4GiB: zips a sparse file with Info-ZIP zip through a POSIX shell"
         "test_archive UnzipTool.ExtractsQuietlyAndFailsWithTheFrontEndsText: runs the tool from a POSIX shell, found by /proc/self/exe, and hides the engine from it with LD_LIBRARY_PATH")
endif()
set(NVK_WINDOWS_CASES_wine_differs)
# archives
if(NVK_LIBZIP)
    list(APPEND NVK_WINDOWS_CASES_wine_differs
         "test_archive UnzipSafety.AJunctionInTheDestinationIsNotGoneThrough: Windows makes a junction of an empty folder with FSCTL_SET_REPARSE_POINT (IO_REPARSE_TAG_MOUNT_POINT), as mklink /J does. Wine 8 answers ERROR_NOT_SUPPORTED")
endif()
# file walks and tree operations
list(APPEND NVK_WINDOWS_CASES_posix_only
    "test_files TreeSafety.LinksAreCopiedAndRemovedAsLinksAndNeverCounted: makes symbolic links with std::filesystem, which mingw-w64's library does not implement (ENOSYS), and Wine's CreateSymbolicLinkA answers TRUE without making a link"
    "test_files FileIteratorSafety.NeverGoesThroughALink: makes symbolic links with std::filesystem, which mingw-w64's library does not implement (ENOSYS), and Wine's CreateSymbolicLinkA answers TRUE without making a link"
    "test_files RecycleFiles.PutsEachMatchInTheTrashAndMovesLinksUnfollowed: reads the desktop's XDG trash folder and makes a symbolic link with std::filesystem"
    "test_files RecycleFile.PutsTheFileInTheTrashWithItsInfo: reads the desktop's XDG trash folder and its .trashinfo files"
    "test_files SelectFolder.WithoutABrowserIsCancelled: without the application's browser Windows shows its own modal dialog, which waits for a user"
    "test_files FileWalk.ANameEndingInADotIsDescribedToo: Windows takes the trailing dot off a name as it makes the file, so no such name exists there"
    "test_files FileIteratorSafety.WalksPathsLongerThanMaxPath: Windows' ANSI calls stop at MAX_PATH (260 characters), the POSIX build's paths reach PATH_MAX"
    "test_files FileIteratorDrives.WalksTheMappedDrives: the POSIX build's drive map (NVK_DRIVES)"
    "test_core ChaineFileSystemTest.MappedNetworkDrivesNameTheirServer: the POSIX build's drive map (NVK_DRIVES) of a network share"
    "test_core ChaineFileSystemTest.MappedAndDesktopPlaces: the POSIX build's drive map (NVK_DRIVES) and XDG folders")
list(APPEND NVK_WINDOWS_CASES_wine_differs
    "test_files SelectFolder.ComputersStartAtTheNetworkWhichHasNoPath: SHGetPathFromIDListA fails on the network folder, which is no part of the file system, Wine answers TRUE with its parsing name")
# files, sync, memory, processes
list(APPEND NVK_WINDOWS_CASES_posix_only
    "test_os FileTest.UnmappedDrivesAndServers: NVK_DRIVES is the POSIX build's drive map, and on \
Windows a server name is looked up on the network"
    "test_os NamedMutex.AnotherUserHasNamesOfItsOwn: the helper changes user by a POSIX user id"
    "test_os SystemInfo.ThisSystemIsOfVersionTen: the POSIX build answers as Windows 10. Windows \
answers its own version (Wine's prefix is Windows 7, 6.1)"
    "test_os VolumeTest.DrivesComeFromTheMap: NVK_DRIVES is the POSIX build's drive map"
    "test_os NetworkTest.DrivesOnSharesNameTheirShare: NVK_DRIVES is the POSIX build's drive map"
    "test_os ShellFolderTest.SpecialFoldersFollowTheXdgDirectories: the XDG folders and the drive \
map are the POSIX build's"
    "test_storage SharedIndex.AFileCutByAnotherWriterIsNotReadPastItsEnd: Windows cuts no file \
while a view of it is mapped (SetEndOfFile's remarks), so no other writer can cut it under a reader"
    "test_integration FrameProcess.StartsUnderASmallAddressSpace: limits the address space by the \
POSIX shell's ulimit -v"
    "test_afx AfxMemoryLimit.ExhaustedMemoryIsTheFrameworksException: limits the address space by \
the POSIX shell's ulimit -v")
list(APPEND NVK_WINDOWS_CASES_wine_differs
    "test_os FileTest.CuttingTakesWriteAccess: Windows asks GENERIC_WRITE for TRUNCATE_EXISTING \
and SetEndOfFile and refuses a reader. Wine 8 truncates with GENERIC_READ and answers \
ERROR_INVALID_HANDLE to SetEndOfFile"
    "test_os ReadOnlyFileTest.RefusesWritersEvenToTheSuperUser: Windows refuses GENERIC_WRITE on a \
read-only file (ERROR_ACCESS_DENIED). Wine run as root opens it, checking the Unix mode only"
    "test_os FileTest.LockedRegionsRefuseOtherHandlesReads: Windows fails a read of a region \
another handle locked (ERROR_LOCK_VIOLATION) and an unlock of what was not locked \
(ERROR_NOT_LOCKED). Wine 8 reads, and answers ERROR_LOCK_VIOLATION to the unlock"
    "test_os ShareModeTest.ALockedRegionIsUnreadableToOtherProcesses: Windows fails a read of a \
region another process locked (ERROR_LOCK_VIOLATION). Wine 8 reads it"
    "test_os FileMapping.MoreThanTheCommitLimitIsRefused: Windows commits a section of the paging \
file whole and fails one beyond the commit limit. Wine 8 makes a terabyte"
    "test_os FileMapping.AReadOnlySectionOpenedToWriteGivesNoWritableView: Windows gives no \
writable view of a PAGE_READONLY section, whatever the handle's rights. Wine 8 maps one through a \
handle opened with FILE_MAP_WRITE"
    "test_os NamedMutex.HandlesDoOnlyWhatTheirRightsAllow: Windows releases a mutex only through \
a handle with MUTEX_MODIFY_STATE (the right to release it). Wine 8 releases through a \
SYNCHRONIZE handle and opens one without any right"
    "test_os KernelText.FormattingCountsWhatItStored: Windows counts the characters wsprintfA \
stored (1023 in its 1024 bytes). Wine 8 answers 1024"
    "test_os ShellFolderTest.VirtualAndUnknownFoldersHaveNoPath: Windows answers E_FAIL for a \
folder without a path (CSIDL_DRIVES). Wine 8 answers E_INVALIDARG")
# text, locale, resources, version, time
list(APPEND NVK_WINDOWS_CASES_posix_only
    "test_os ResourceTest.*: registers resource tables under a made-up module handle, which only \
the POSIX build has. On Windows a module's resources are the ones windres linked into it"
    "test_context StringModule.*: registers resource tables under a made-up module handle, which \
only the POSIX build has. On Windows a module's resources are the ones windres linked into it"
    "test_context User.FrenchAndSwissGermanUsersGetTheirTexts: sets the user's locale through \
LANG, which the POSIX build reads. Windows takes it from the user's settings"
    "test_os Locale.DefaultsFollowTheEnvironment: sets the default locales through LC_ALL, which \
the POSIX build reads. Windows takes them from the user's and the system's settings"
    "test_os TimeZoneTest.TodaysRulesDecideTheDaylightTime: zones named by their zone-data names \
(TZ=Europe/Paris and others). Windows' C runtime reads TZ only in the EST5EDT form"
    "test_os TimeZoneTest.LocalClockFollowsTheZone: GetLocalTime follows TZ on the POSIX build. \
On Windows it follows the system's time zone setting"
    "test_os ProfileTest.NameWithoutFolderIsInTheWindowsFolder: places the Windows folder through \
the POSIX build's drive map (NVK_DRIVES)")
list(APPEND NVK_WINDOWS_CASES_wine_differs
    "test_os NlsTest.WhatACodePageDoesNotTakeFails: Windows documents ERROR_INVALID_FLAGS for \
MB_PRECOMPOSED with MB_COMPOSITE, for UTF-8 with flags other than MB_ERR_INVALID_CHARS, for \
WC_ERR_INVALID_CHARS with code pages other than UTF-8 and 54936 and for unknown CompareStringA \
flags, and ERROR_INVALID_PARAMETER for a default character with UTF-8. Wine converts or compares"
    "test_os Locale.SwissGermanDatesHaveLeadingZeros: Windows gives de-CH (2055) the short date \
dd.MM.yyyy and LOCALE_IMONLZERO 1. Wine gives d.M.yyyy and 0"
    "test_os ProfileTest.SectionNamesCutWithTwoNulls: Windows documents that a cut list of \
section names ends in two nulls, the size less two being returned. Wine writes one null"
    "test_os VariantTimeTest.OutsideTheRangeOfDates: Windows documents dates from 1 January 100 \
and fixes only the day of a system time. Wine reads year 99 as 1999, takes day 0 of January 100, \
runs hour 24 into the next day and converts a NaN"
    "test_os VersionTest.AnImageWithoutAVersion: Windows answers an image that has resources but \
no version with the error of its resource search, ERROR_RESOURCE_TYPE_NOT_FOUND. Wine answers \
ERROR_RESOURCE_DATA_NOT_FOUND for every file without a version"
    "test_os ProfileTest.WritesOnlyWhatChanges: Windows rewrites only the lines a write changes \
and keeps the rest of the file byte for byte (Wine's own tests of the profile functions mark \
this as a difference). Wine writes the whole file anew, dropping blank lines, moving comments and \
respacing keys, and answers FALSE to the cache flush of four nulls"
    "test_os ProfileTest.NegativeNumbersReadAsZero: Windows documents that GetPrivateProfileIntA \
returns 0 for a negative value. Wine returns the negative number"
    "test_os ProfileTest.RepeatedSectionsCountOnce: Windows documents nothing of a section named \
twice. The POSIX build lists it once and reads its first part only, Wine 8 lists it twice")
# INI files and services
list(APPEND NVK_WINDOWS_CASES_posix_only
    "test_services NVKOptions.FourWordsFromMachineAndUserForTheApplicationAndCommon: writes \
Software\\NVK\\Common and an application's settings under HKEY_LOCAL_MACHINE and \
HKEY_CURRENT_USER, which on Windows are the machine's and the user's own. The POSIX build gives \
the test a registry of its own (NVK_REGISTRY_DIR)"
    "test_config IniProfile.AClosedHandleNeverComesBackAsAnotherFiles: that a closed handle's \
number never comes back is the POSIX layer's own guarantee, while Windows gives it to the next open"
    "test_config IniProfile.AWriteKeepsPermissionsAndFollowsLinks: POSIX file modes and a \
symbolic link made by std::filesystem, which the Windows C++ runtime does not make"
    "test_ini_load IniWholeText.AFileSizeLimitLeavesTheOldText: the size limit is set by \
ulimit -f in a POSIX shell"
    "test_ini_load IniWholeText.AForeignFlockHoldsNoOneBeyondTheTimeOut: flock(1) and a POSIX \
shell hold the file, and Windows has no flock()")
list(APPEND NVK_WINDOWS_CASES_wine_differs
    "test_services NVKVarsTest.RubricsAreTheUnnamedLinesOfTheirSection: Windows' \
WritePrivateProfileSectionA writes each string of the section as a line as it stands, while Wine 8 \
drops the strings without '='"
    "test_config IniProfile.ReplacingAHeldFileNeedsItsReadingAndDeletionShared: Windows' \
ReplaceFileA opens the replaced file for GENERIC_READ and DELETE sharing all, so that an open \
refusing either refuses the replacement, while Wine 8 opens nothing and moves the file aside"
    "test_ini_load IniLoad.WritersLoseNoUpdateAndReadersSeeWholeFiles: Windows' ReplaceFileA \
gives the replacement the replaced file's name and identity in one step, while Wine 8 first \
moves the replaced file aside, and an open in between finds no file (a reader reads it empty, \
a writer makes an empty one)"
    "test_ini_load IniWholeText.AnotherProcesssByteLockHoldsNoOneBeyondTheTimeOut: on Windows \
ReadFile over bytes that another process locked with LockFile fails with ERROR_LOCK_VIOLATION, \
while Wine 8 reads them"
    "test_config IniProfile.AReadOnlyFileIsRefusedToEveryWriterAtOnce: Windows refuses a \
write open of a file with FILE_ATTRIBUTE_READONLY to every user, while Wine 8 run as root \
opens it")
# record files shared between processes, and sections of files
list(APPEND NVK_WINDOWS_CASES_posix_only
    "test_os FileMapping.TheViewsOfAFileShareItsDescriptor: counts the POSIX process's \
descriptors in /proc/self/fd")
list(APPEND NVK_WINDOWS_CASES_wine_differs
    "test_storage SharedRecords.AnInsertionIntoARangeAnotherProcessLockedWritesNothing: Windows \
fails WriteFile over bytes another process locked with LockFile (ERROR_LOCK_VIOLATION), also past \
the end of the file. Wine 8 writes them")
# drawing and registry text
list(APPEND NVK_WINDOWS_CASES_wine_differs
    "test_gdi DeviceContext.SelectedObjectsAreNotDeleted: DeleteObject documents zero for an object selected into a device context, where Wine returns TRUE and deletes the object once it is deselected")
# interface helpers, resources and paths
list(APPEND NVK_WINDOWS_LEFT_OUT_SOURCES
    "ui/icon_statement_test.cpp: the POSIX build's resource compiler, which windres stands for here"
    "rc/rc_test.cpp: the POSIX build's resource compiler, which windres stands for here"
    "rc/rc_version_test.cpp: the POSIX build's resource compiler, which windres stands for here"
    "paths/user_id_test.cpp: the SID that the POSIX build makes of the user's id (geteuid)")
list(APPEND NVK_WINDOWS_CASES_posix_only
    "test_ui LinkTest.DesktopEntriesAndSymbolicLinks: desktop entries and symbolic links stand for \
shell links on the POSIX build only, and mingw-w64's std::filesystem makes no symbolic link (ENOSYS)")
list(APPEND NVK_WINDOWS_CASES_wine_differs
    "test_ui Menu.CutTextsAndMissingItems: Windows documents that GetMenuStringA cuts a long text and \
adds the terminating null (\"Sav\" and 3 in four bytes). Wine 8 answers 3 but leaves the four bytes \
\"Save\" without a null. Windows documents no code for DeleteMenu of a missing item, the POSIX \
build answers ERROR_MENU_ITEM_NOT_FOUND and Wine 8 ERROR_INVALID_MENU_HANDLE")
# DDE: Windows' own DDEML answers here, under Wine.
list(APPEND NVK_WINDOWS_CASES_wine_differs
    "test_dde ConversationTest.OneCharacterGoesWithItsTerminator: DdeClientTransaction hands \
the server an execute's cbData bytes as they are between two ANSI instances. Wine 8 takes the \
two bytes of one character and its terminator for UTF-16 and gives the server 1 byte"
    "test_dde DDEErrorTest.AClientOnlyThreadCannotServe: an instance made with APPCMD_CLIENTONLY \
cannot serve and DdeNameService fails with DMLERR_DLL_USAGE. Wine 8 registers the service"
    "test_dde ConversationTest.TransactionsAndTheirResults: DdeClientTransaction answers each \
XTYP_REQUEST with that request's data. Wine 8 answers every other request at once with 0 and \
DDE_FACK without calling the server, and the next transaction gets the previous answer (bare \
DDEML calls of one thread show it)"
    "test_dde DDEThreadsTest.TwoThreadsEachWithAnInstance: DdeClientTransaction answers each \
transaction with its own result. After a request Wine 8 answers the next transaction at once \
with DDE_FACK without calling the server"
    "test_dde ConversationTest.AnExecuteThatAdvisesIsAcknowledged: DdeClientTransaction \
returns TRUE for an execute the server acknowledged with DDE_FACK. Wine 8 returns 0 with \
DMLERR_NOTPROCESSED when the server's callback called DdePostAdvise before acknowledging \
(bare DDEML calls of one thread show it)"
    "test_dde ConversationTest.TheServerEndsTheConversation: DdeDisconnect ends a conversation \
from either side. Wine 8 fails it (0) from the server's callback, and the service then accepts \
no conversation (bare DDEML calls of one thread show it)"
    "test_dde ConversationTest.EndsTimeOutsAndDeadServers: DdeClientTransaction answers each \
transaction with its own result. After a request Wine 8 answers the next one with an earlier \
reply, so the request after the time-out gets none and the execute that ends the server gets \
TRUE where Windows reports DMLERR_SERVER_DIED"
    "test_dde DDEThreadsTest.AThreadTalksToItsOwnService: DdeClientTransaction answers each \
transaction with its own result. After a request Wine 8 acknowledges the next execute at once \
without calling the server")
set(NVK_WINDOWS_LEFT_OUT_REGEX)
foreach(entry IN LISTS NVK_WINDOWS_LEFT_OUT_SOURCES)
    string(REGEX REPLACE ":.*" "" source "${entry}")
    list(APPEND NVK_WINDOWS_LEFT_OUT_REGEX "/${source}$")
endforeach()
list(JOIN NVK_WINDOWS_LEFT_OUT_REGEX "|" NVK_WINDOWS_LEFT_OUT_REGEX)

# The tests that drive the tool from a POSIX shell or from Python run the
# program directly, which only the POSIX build can. The label is set once the
# folder is read, after the folder's own LABELS.
function(add_test)
    _add_test(${ARGV})
    list(FIND ARGV COMMAND at)
    math(EXPR at "${at} + 1")
    list(GET ARGV ${at} program)
    list(GET ARGV 1 name)
    if(program STREQUAL "sh" OR program STREQUAL "${Python3_EXECUTABLE}")
        set_property(GLOBAL APPEND PROPERTY NVK_POSIX_ONLY_TESTS ${name})
        set(property LABELS posix_only)
    else()
        set(property FIXTURES_REQUIRED wine)
    endif()
    # A deferred call reads variables when it runs: the name goes in as text.
    cmake_language(EVAL CODE
                   "cmake_language(DEFER CALL set_property TEST [[${name}]] APPEND PROPERTY ${property})")
endfunction()

# Discovers the tests of `program`, putting the cases listed above under
# their labels. The arguments end with the discovery's PROPERTIES, which the
# label and the Wine fixture extend (a property given twice takes the later).
function(nvk_windows_discover_tests program)
    set(excluded)
    foreach(label IN ITEMS posix_only wine_differs)
        set(cases)
        foreach(entry IN LISTS NVK_WINDOWS_CASES_${label})
            if(entry MATCHES "^${program} ([^:]+):")
                list(APPEND cases ${CMAKE_MATCH_1})
            endif()
        endforeach()
        if(cases)
            list(JOIN cases ":" filter)
            list(APPEND excluded ${cases})
            gtest_discover_tests(${program} TEST_FILTER "${filter}" TEST_LIST ${program}_${label}
                                 ${ARGN} LABELS ${label})
        endif()
    endforeach()
    set(rest)
    if(excluded)
        list(JOIN excluded ":" filter)
        set(rest TEST_FILTER "-${filter}")
    endif()
    gtest_discover_tests(${program} ${rest} ${ARGN} ${NVK_TEST_PROPERTIES})
endfunction()

# Prints what does not run here; called once every folder is read.
function(nvk_windows_skipped_test)
    get_property(posix_only GLOBAL PROPERTY NVK_POSIX_ONLY_TESTS)
    set(lines)
    foreach(folder IN LISTS NVK_WINDOWS_LEFT_OUT_FOLDERS)
        list(APPEND lines "left out: tests/${folder}")
    endforeach()
    foreach(source IN LISTS NVK_WINDOWS_LEFT_OUT_SOURCES)
        list(APPEND lines "left out: tests/${source}")
    endforeach()
    foreach(name IN LISTS posix_only)
        list(APPEND lines "posix_only: ${name} (runs the tool from a POSIX shell or Python)")
    endforeach()
    foreach(label IN ITEMS posix_only wine_differs)
        foreach(entry IN LISTS NVK_WINDOWS_CASES_${label})
            list(APPEND lines "${label}: ${entry}")
        endforeach()
    endforeach()
    list(APPEND lines "posix_only: the calendar tests of zones named by their zone-data names \
(TZ=Europe/Zurich and others: Windows' C runtime reads TZ only in the EST5EDT form)")
    list(LENGTH NVK_WINDOWS_LEFT_OUT_FOLDERS folders)
    list(LENGTH NVK_WINDOWS_LEFT_OUT_SOURCES sources)
    list(LENGTH posix_only tests)
    list(LENGTH NVK_WINDOWS_CASES_posix_only cases)
    math(EXPR tests "${tests} + ${cases}")
    list(LENGTH NVK_WINDOWS_CASES_wine_differs differs)
    list(JOIN lines "\n" text)
    file(WRITE ${PROJECT_BINARY_DIR}/windows_skipped.txt
         "${text}\n${folders} test folders and ${sources} test files left out, "
         "${tests} tests labelled posix_only, ${differs} labelled wine_differs\n")
    _add_test(NAME windows.skipped COMMAND ${CMAKE_COMMAND} -E cat
              ${PROJECT_BINARY_DIR}/windows_skipped.txt)
endfunction()
