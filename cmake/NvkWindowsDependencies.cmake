# The engines' libraries for the Windows build. Debian ships them for Linux
# only, so the mingw preset builds them from Debian's sources, which
# scripts/mingw_sources.sh unpacks into NVK_MINGW_SOURCES, as static libraries
# that the engines' DLLs carry. A library whose sources are missing leaves its
# engine and the engine's tests out of the build.

include(ExternalProject)

set(nvk_source_cache /var/cache/nvkutil)
if(DEFINED ENV{NVK_SOURCE_CACHE})
    set(nvk_source_cache $ENV{NVK_SOURCE_CACHE})
endif()
set(NVK_MINGW_SOURCES ${nvk_source_cache}
    CACHE PATH "Debian's sources of the libraries built for Windows (scripts/mingw_sources.sh)")
set(NVK_WINDOWS_DEPS ${PROJECT_BINARY_DIR}/windows_deps)
# The import targets' include folders must exist when they are declared.
file(MAKE_DIRECTORY ${NVK_WINDOWS_DEPS}/include)

# The unpacked source folder of `package` (the latest version there), or
# empty.
function(nvk_mingw_source package out)
    file(GLOB found LIST_DIRECTORIES true ${NVK_MINGW_SOURCES}/${package}-*/CMakeLists.txt)
    set(${out} "" PARENT_SCOPE)
    if(found)
        list(SORT found COMPARE NATURAL)
        list(GET found -1 found)
        get_filename_component(found ${found} DIRECTORY)
        set(${out} ${found} PARENT_SCOPE)
    else()
        message(STATUS "No ${package} sources in ${NVK_MINGW_SOURCES} (run scripts/mingw_sources.sh): "
                       "its engine and the engine's tests are left out")
    endif()
endfunction()

set(nvk_external_args -DCMAKE_TOOLCHAIN_FILE=${CMAKE_TOOLCHAIN_FILE}
                      -DCMAKE_C_COMPILER=${CMAKE_C_COMPILER} -DCMAKE_BUILD_TYPE=Release
                      -DCMAKE_INSTALL_PREFIX=${NVK_WINDOWS_DEPS})
if(CMAKE_C_COMPILER_LAUNCHER)
    list(APPEND nvk_external_args -DCMAKE_C_COMPILER_LAUNCHER=${CMAKE_C_COMPILER_LAUNCHER})
endif()

# libzip, against Debian's zlib for mingw: AES goes through Windows' own
# cryptography (bcrypt); the other compression methods are not needed.
# NVK_LIBZIP is the target to link, or empty.
set(NVK_LIBZIP)
nvk_mingw_source(libzip libzip_source)
find_library(NVK_MINGW_ZLIB NAMES libz.a)
find_path(NVK_MINGW_ZLIB_INCLUDE zlib.h)
if(libzip_source AND NOT (NVK_MINGW_ZLIB AND NVK_MINGW_ZLIB_INCLUDE))
    message(STATUS "No zlib for mingw (libz-mingw-w64-dev): the zip engine is left out")
elseif(libzip_source)
    ExternalProject_Add(libzip_mingw
        SOURCE_DIR ${libzip_source}
        PREFIX ${NVK_WINDOWS_DEPS}/libzip
        CMAKE_ARGS ${nvk_external_args}
                   -DBUILD_SHARED_LIBS=OFF
                   -DBUILD_TOOLS=OFF -DBUILD_REGRESS=OFF -DBUILD_EXAMPLES=OFF -DBUILD_DOC=OFF
                   -DENABLE_COMMONCRYPTO=OFF -DENABLE_GNUTLS=OFF -DENABLE_MBEDTLS=OFF
                   -DENABLE_OPENSSL=OFF -DENABLE_WINDOWS_CRYPTO=ON
                   -DENABLE_BZIP2=OFF -DENABLE_LZMA=OFF
                   -DZLIB_LIBRARY=${NVK_MINGW_ZLIB} -DZLIB_INCLUDE_DIR=${NVK_MINGW_ZLIB_INCLUDE}
        BUILD_BYPRODUCTS ${NVK_WINDOWS_DEPS}/lib/libzip.a
        UPDATE_COMMAND ""
        USES_TERMINAL_BUILD ON)
    add_library(nvk_libzip STATIC IMPORTED GLOBAL)
    set_target_properties(nvk_libzip PROPERTIES
        IMPORTED_LOCATION ${NVK_WINDOWS_DEPS}/lib/libzip.a
        INTERFACE_INCLUDE_DIRECTORIES ${NVK_WINDOWS_DEPS}/include
        INTERFACE_LINK_LIBRARIES "${NVK_MINGW_ZLIB};bcrypt;advapi32")
    add_dependencies(nvk_libzip libzip_mingw)
    set(NVK_LIBZIP nvk_libzip)
endif()

# libzint, without PNG (the engine draws through the OS layer) and without its
# programs. Its configuration writes into its source folder, so it builds from
# a copy of the cache's; its one header is read from the cache. NVK_LIBZINT is
# the static library, or empty.
set(NVK_LIBZINT)
nvk_mingw_source(zint zint_source)
if(zint_source)
    set(NVK_LIBZINT ${NVK_WINDOWS_DEPS}/zint/src/zint_mingw-build/backend/libzint-static.a)
    set(NVK_LIBZINT_INCLUDE ${zint_source}/backend)
    ExternalProject_Add(zint_mingw
        URL ${zint_source}
        PREFIX ${NVK_WINDOWS_DEPS}/zint
        CMAKE_ARGS ${nvk_external_args} -DZINT_STATIC=ON -DZINT_USE_PNG=OFF -DZINT_USE_QT=OFF
        BUILD_COMMAND ${CMAKE_COMMAND} --build <BINARY_DIR> --target zint-static
        INSTALL_COMMAND ""
        BUILD_BYPRODUCTS ${NVK_LIBZINT}
        USES_TERMINAL_BUILD ON)
endif()
