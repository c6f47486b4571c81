# The Windows build: the OS layer is Windows itself, and the resources of a
# module are real ones, compiled by windres from the same scripts.

enable_language(RC)

# Links the resources of `scripts` into the module whose sources hold
# `output`; `output` itself becomes an empty table, which the OS layer's
# resource functions never look at on Windows (they read the module's own).
function(nvk_resource_table output symbol)
    cmake_parse_arguments(R "EXPORT" "" "SCRIPTS" ${ARGN})
    string(REPLACE "::" ";" parts "${symbol}")
    list(POP_BACK parts name)
    list(JOIN parts "::" space)
    set(text "#include \"os/api/resource.h\"\n")
    if(space)
        string(APPEND text "namespace ${space} {\n")
    endif()
    string(APPEND text "extern const nvk::os::ResourceTable ${name};\n"
                       "const nvk::os::ResourceTable ${name}{0, nullptr};\n")
    if(space)
        string(APPEND text "}\n")
    endif()
    file(CONFIGURE OUTPUT ${output} CONTENT "${text}")
    set(script "#include <winresrc.h>\n")
    foreach(s IN LISTS R_SCRIPTS)
        string(APPEND script "#include \"${s}\"\n")
    endforeach()
    file(CONFIGURE OUTPUT ${output}.rc CONTENT "${script}")
    set_property(GLOBAL APPEND PROPERTY NVK_RESOURCE_OUTPUTS ${output})
endfunction()

include(${PROJECT_SOURCE_DIR}/cmake/NvkVersionResource.cmake)

# Links a module's own resource scripts into it, where the resource functions
# find them under the module's handle, as they find the library's.
function(nvk_target_resources target)
    set(scripts)
    foreach(script IN LISTS ARGN)
        get_filename_component(script ${script} ABSOLUTE BASE_DIR ${CMAKE_CURRENT_SOURCE_DIR})
        list(APPEND scripts ${script})
    endforeach()
    set(source ${CMAKE_CURRENT_BINARY_DIR}/${target}_resources.cpp)
    string(MAKE_C_IDENTIFIER ${target} name)
    nvk_resource_table(${source} nvk_resources_${name} SCRIPTS ${scripts})
    target_sources(${target} PRIVATE ${source})
endfunction()

# Gives each module or program the scripts of the tables among its sources;
# run once every target is declared. Object libraries pass theirs to whoever
# links their objects (see the top-level list).
function(nvk_attach_windows_resources dir)
    get_property(outputs GLOBAL PROPERTY NVK_RESOURCE_OUTPUTS)
    get_property(targets DIRECTORY ${dir} PROPERTY BUILDSYSTEM_TARGETS)
    foreach(target IN LISTS targets)
        get_target_property(type ${target} TYPE)
        if(type STREQUAL "OBJECT_LIBRARY" OR type STREQUAL "INTERFACE_LIBRARY")
            continue()
        endif()
        get_target_property(sources ${target} SOURCES)
        get_target_property(source_dir ${target} SOURCE_DIR)
        foreach(source IN LISTS sources)
            if(NOT IS_ABSOLUTE "${source}")
                set(source ${source_dir}/${source})
            endif()
            if(source IN_LIST outputs)
                target_sources(${target} PRIVATE ${source}.rc)
            endif()
        endforeach()
    endforeach()
    get_property(children DIRECTORY ${dir} PROPERTY SUBDIRECTORIES)
    foreach(child IN LISTS children)
        nvk_attach_windows_resources(${child})
    endforeach()
endfunction()

# The libraries that Debian does not ship for Windows, built from its sources.
include(${PROJECT_SOURCE_DIR}/cmake/NvkWindowsDependencies.cmake)
