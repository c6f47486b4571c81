# What `cmake --install` lays out, as the CMake package nvkutil and the
# pkg-config module nvkutil, and the Debian packages CPack makes of it:
#   runtime  the shared libraries and the engines that LoadLibraryA loads
#   dev      headers, static libraries, nvkrc, the CMake package, nvkutil.pc
#   tool     the nvk command
# Debian keeps libraries in the folder of their architecture under any prefix.
if(CMAKE_LIBRARY_ARCHITECTURE AND NOT DEFINED CACHE{CMAKE_INSTALL_LIBDIR})
    set(CMAKE_INSTALL_LIBDIR lib/${CMAKE_LIBRARY_ARCHITECTURE}
        CACHE PATH "Object code libraries (lib)")
endif()
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(NVK_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/nvkutil)

foreach(library IN ITEMS nvkos nvkafx nvkutil)
    set_target_properties(${library} PROPERTIES VERSION ${PROJECT_VERSION}
                                                SOVERSION ${PROJECT_VERSION_MAJOR})
endforeach()
# Installed binaries find the libraries beside them, wherever the tree was
# installed.
set_target_properties(nvkafx nvkutil PROPERTIES INSTALL_RPATH "$ORIGIN")
set_target_properties(dzip32 dunzip32 dlsbar PROPERTIES INSTALL_RPATH "$ORIGIN/..")
set_target_properties(nvk PROPERTIES INSTALL_RPATH "$ORIGIN/../${CMAKE_INSTALL_LIBDIR}")

target_include_directories(nvkos INTERFACE $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
set_target_properties(nvkframe_static PROPERTIES EXPORT_NAME nvkframe)

install(TARGETS nvkos nvkafx nvkutil EXPORT nvkutil
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT dev)
install(TARGETS nvkutil_static nvkframe_static EXPORT nvkutil
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT dev)
install(TARGETS dzip32 dunzip32 dlsbar
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}/${NVK_ENGINE_FOLDER} COMPONENT runtime)
install(TARGETS nvkrc EXPORT nvkutil RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT dev)
# Manual pages go compressed, and reproducibly (gzip -n).
set(NVK_RC_MAN ${PROJECT_BINARY_DIR}/man/nvkrc.1)
add_custom_command(OUTPUT ${NVK_RC_MAN}.gz
                   COMMAND ${CMAKE_COMMAND} -E copy ${PROJECT_SOURCE_DIR}/tools/rc/nvkrc.1 ${NVK_RC_MAN}
                   COMMAND gzip -9nf ${NVK_RC_MAN}
                   DEPENDS tools/rc/nvkrc.1 VERBATIM)
add_custom_target(nvkrc_man ALL DEPENDS ${NVK_RC_MAN}.gz)
install(FILES ${NVK_RC_MAN}.gz DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT dev)
install(TARGETS nvk RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tool)
if(TARGET nvk_man)
    install(FILES ${PROJECT_BINARY_DIR}/tools/nvk/nvk.1.gz DESTINATION ${CMAKE_INSTALL_MANDIR}/man1
            COMPONENT tool)
endif()
install(FILES tools/nvk/nvk.bash-completion
        DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions RENAME nvk COMPONENT tool)

install(DIRECTORY include/ ${PROJECT_BINARY_DIR}/include/
        DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT dev)
# The library's own resource scripts, for a module that carries them, and for
# the resource compilers of other platforms.
install(DIRECTORY resources/ DESTINATION ${CMAKE_INSTALL_DATADIR}/nvkutil/resources
        COMPONENT dev)

install(EXPORT nvkutil FILE nvkutilTargets.cmake NAMESPACE nvkutil:: DESTINATION ${NVK_CMAKE_DIR} COMPONENT dev)
configure_package_config_file(cmake/package/nvkutilConfig.cmake.in
                              ${PROJECT_BINARY_DIR}/nvkutilConfig.cmake
                              INSTALL_DESTINATION ${NVK_CMAKE_DIR})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/nvkutilConfigVersion.cmake
                                 COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/nvkutilConfig.cmake
              ${PROJECT_BINARY_DIR}/nvkutilConfigVersion.cmake cmake/NvkResources.cmake
        DESTINATION ${NVK_CMAKE_DIR} COMPONENT dev)

# The module's prefix is found from its own folder, so that a staged or moved
# tree answers for itself.
set(NVK_PC_PREFIX "\${pcfiledir}/..")
string(REGEX REPLACE "[^/]+" ".." up "${CMAKE_INSTALL_LIBDIR}")
string(APPEND NVK_PC_PREFIX "/${up}")
configure_file(cmake/package/nvkutil.pc.in ${PROJECT_BINARY_DIR}/nvkutil.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/nvkutil.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig
        COMPONENT dev)
