# One version script built twice: into a Windows executable by the
# platform's own resource compiler and linker (mingw-w64), and into an ELF
# module by ours. The version tests read both, and the tool and the library
# themselves.
set(version_script ${CMAKE_CURRENT_SOURCE_DIR}/version/app.rc)
set(version_dir ${CMAKE_CURRENT_BINARY_DIR}/version)

find_program(NVK_MINGW_WINDRES x86_64-w64-mingw32-windres)
find_program(NVK_MINGW_LD x86_64-w64-mingw32-ld)
if(NVK_MINGW_WINDRES AND NVK_MINGW_LD)
    add_custom_command(
        OUTPUT ${version_dir}/app.exe ${version_dir}/app.dll
        COMMAND ${CMAKE_COMMAND} -E make_directory ${version_dir}
        COMMAND ${NVK_MINGW_WINDRES} ${version_script} -O coff -o ${version_dir}/app.res.o
        COMMAND ${NVK_MINGW_LD} -e 0 -o ${version_dir}/app.exe ${version_dir}/app.res.o
        COMMAND ${NVK_MINGW_LD} -shared -e 0 -o ${version_dir}/app.dll ${version_dir}/app.res.o
        DEPENDS ${version_script}
        COMMENT "Building the Windows version fixtures" VERBATIM)
    add_custom_target(os_version_pe DEPENDS ${version_dir}/app.exe ${version_dir}/app.dll)
    add_dependencies(test_os os_version_pe)
    target_compile_definitions(test_os PRIVATE NVK_VERSION_PE="${version_dir}/app.exe"
                                               NVK_VERSION_DLL="${version_dir}/app.dll")
else()
    message(WARNING "mingw-w64 binutils missing: the Windows version fixtures are not built")
endif()

set(version_table ${CMAKE_CURRENT_BINARY_DIR}/version_app_resources.cpp)
nvk_resource_table(${version_table} NVKResourceTable EXPORT SCRIPTS ${version_script})
add_library(os_version_elf MODULE ${version_table})
target_include_directories(os_version_elf PRIVATE ${PROJECT_SOURCE_DIR}/include
                                                  ${PROJECT_SOURCE_DIR}/src)
set_target_properties(os_version_elf PROPERTIES LIBRARY_OUTPUT_DIRECTORY ${version_dir}
                                                PREFIX "" OUTPUT_NAME app SUFFIX ".so")
nvk_warnings(os_version_elf)
# The engines, where the build makes them (the Windows build makes them when
# their libraries' sources are there).
set(engines)
if(NOT WIN32 OR NVK_LIBZIP)
    list(APPEND engines dzip32 dunzip32)
endif()
if(NOT WIN32 OR NVK_LIBZINT)
    list(APPEND engines dlsbar)
endif()
add_dependencies(test_os os_version_elf nvk nvkutil ${engines})
set(versioned "$<TARGET_FILE:nvk>|$<TARGET_FILE:nvkutil>")
foreach(engine IN LISTS engines)
    string(APPEND versioned "|$<TARGET_FILE:${engine}>")
endforeach()
target_compile_definitions(
    test_os PRIVATE NVK_VERSION_ELF="$<TARGET_FILE:os_version_elf>" NVK_PROJECT_VERSION="${PROJECT_VERSION}"
    NVK_VERSIONED_FILES="${versioned}")
