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

# Folders whose programs need what the Windows build lacks.
set(NVK_WINDOWS_LEFT_OUT_FOLDERS
    "barcode: the bar-code engine needs libzint and cairo, not built for Windows"
    "rc: tests the POSIX build's resource compiler (Windows links windres' resources)"
    "ui: links the POSIX build's resource compiler"
    "archive: the zip engines need libzip, not built for Windows"
    "paths: tests the POSIX build's drive map, XDG folders and user ids"
    "dde: the harness runs a D-Bus daemon and its peers through a POSIX shell")
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
# Single tests that cannot pass here, as "program Suite.Case: reason" (the
# case may end in a gtest wildcard). Each is labelled with its list's name and
# left out of the run. posix_only: the test needs a fact of the POSIX build.
# wine_differs: Wine answers otherwise than Windows documents; the test keeps
# to Windows' documented answer.
set(NVK_WINDOWS_CASES_posix_only)
set(NVK_WINDOWS_CASES_wine_differs)
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
# drawing and registry text
list(APPEND NVK_WINDOWS_CASES_wine_differs
    "test_gdi DeviceContext.SelectedObjectsAreNotDeleted: DeleteObject documents zero for an object selected into a device context, where Wine returns TRUE and deletes the object once it is deselected")
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
