# nvk_version_resource(target DESCRIPTION text [VERSION a.b.c.d]): gives a
# module or program of the build its version resource, in the section that
# the version functions read, from cmake/version.rc.in. The version defaults
# to the project's; a program gets the file type of an application, anything
# else that of a library.

function(nvk_version_resource target)
    cmake_parse_arguments(V "" "DESCRIPTION;VERSION" "" ${ARGN})
    if(NOT V_VERSION)
        set(V_VERSION ${PROJECT_VERSION})
    endif()
    string(REPLACE "." ";" parts "${V_VERSION}")
    list(APPEND parts 0 0 0 0)
    list(GET parts 0 NVK_V1)
    list(GET parts 1 NVK_V2)
    list(GET parts 2 NVK_V3)
    list(GET parts 3 NVK_V4)
    set(NVK_VERSION_TEXT ${V_VERSION})
    set(NVK_DESCRIPTION "${V_DESCRIPTION}")
    set(NVK_NAME ${target})
    get_target_property(type ${target} TYPE)
    if(type STREQUAL "EXECUTABLE")
        set(NVK_FILE_TYPE 1)
        set(NVK_FILE_NAME ${target})
    else()
        set(NVK_FILE_TYPE 2)
        set(NVK_FILE_NAME ${CMAKE_SHARED_LIBRARY_PREFIX}${target}${CMAKE_SHARED_LIBRARY_SUFFIX})
    endif()
    set(script ${CMAKE_CURRENT_BINARY_DIR}/${target}_version.rc)
    configure_file(${CMAKE_CURRENT_FUNCTION_LIST_DIR}/version.rc.in ${script} @ONLY)
    set(source ${CMAKE_CURRENT_BINARY_DIR}/${target}_version.cpp)
    nvk_resource_table(${source} nvk::VersionResources_${target} SCRIPTS ${script})
    target_sources(${target} PRIVATE ${source})
endfunction()
