# Debian packages of the installed tree, one for each install component:
#   cpack -G DEB --config build/default/CPackConfig.cmake
# libnvkutil0 holds the libraries that a process loads (the OS and framework
# layers are one per process, so they travel together) and the engines;
# libnvkutil-dev what a build needs; nvk the tool. Library dependencies come
# from dpkg-shlibdeps.
set(CPACK_PACKAGE_NAME nvkutil)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT "nvkutil maintainers <maintainers@nvkutil.example>")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL runtime dev tool)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# The tool's own libraries are those of libnvkutil0, on which it depends by
# its component; dpkg-shlibdeps finds them in the build.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR})
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME libnvkutil0)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${CMAKE_CURRENT_LIST_DIR}/package/triggers)
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION
    "shared utility library of accounting applications
Strings and containers shared across the modules of a process, record files
and B+-tree index files, INI files, well-known folders, dossier archives,
dates, bank and identity codes, with the engines it loads at run time.")

set(CPACK_DEBIAN_DEV_PACKAGE_NAME libnvkutil-dev)
set(CPACK_DEBIAN_DEV_PACKAGE_SECTION libdevel)
# The headers name no ICU type, but the static libraries and the CMake
# package want it.
set(CPACK_DEBIAN_DEV_PACKAGE_DEPENDS "libicu-dev, pkgconf | pkg-config")
set(CPACK_COMPONENT_DEV_DESCRIPTION
    "shared utility library of accounting applications - development files
Headers, static libraries, the frame that each module links, the resource
compiler nvkrc, the CMake package nvkutil and the pkg-config module.")
set(CPACK_COMPONENT_DEV_DEPENDS runtime)

set(CPACK_DEBIAN_TOOL_PACKAGE_NAME nvk)
set(CPACK_DEBIAN_TOOL_PACKAGE_SECTION utils)
set(CPACK_COMPONENT_TOOL_DESCRIPTION
    "command-line tool of the nvkutil library
Index and record files, INI files, dates, bank codes, archives and the other
services of the library, for people and for scripts.")
set(CPACK_COMPONENT_TOOL_DEPENDS runtime)

include(CPack)
