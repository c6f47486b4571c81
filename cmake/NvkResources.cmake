# Resource scripts (.rc) compiled by nvkrc into C++ tables that modules carry.
# NVK_RC names the compiler's target: the library's build sets its own nvkrc;
# elsewhere it is the installed package's nvkutil::nvkrc.

# nvk_resource_table(output symbol [EXPORT | REGISTER] SCRIPTS script...):
# compiles the scripts into the C++ source `output` of a table named
# `symbol`. EXPORT makes it the symbol a loaded module is asked for; REGISTER
# makes the source register the table, when its module starts, under the
# module that holds it.
function(nvk_resource_table output symbol)
    cmake_parse_arguments(R "EXPORT;REGISTER" "" "SCRIPTS" ${ARGN})
    set(flags)
    if(R_EXPORT)
        set(flags --export)
    elseif(R_REGISTER)
        set(flags --register)
    endif()
    set(rc ${NVK_RC})
    if(NOT rc)
        set(rc nvkutil::nvkrc)
    endif()
    add_custom_command(OUTPUT ${output}
                       COMMAND ${rc} --output ${output} --symbol ${symbol} ${flags} ${R_SCRIPTS}
                       DEPENDS ${rc} ${R_SCRIPTS}
                       COMMENT "Compiling the resources into ${output}" VERBATIM)
endfunction()

# nvk_target_resources(target script...): compiles a module's own resource
# scripts into it, where FindResourceA, LoadString and the library's string
# loading find them under the module's handle (the executable's is null), as
# the library finds its own.
function(nvk_target_resources target)
    set(scripts)
    foreach(script IN LISTS ARGN)
        get_filename_component(script ${script} ABSOLUTE BASE_DIR ${CMAKE_CURRENT_SOURCE_DIR})
        list(APPEND scripts ${script})
    endforeach()
    set(source ${CMAKE_CURRENT_BINARY_DIR}/${target}_resources.cpp)
    string(MAKE_C_IDENTIFIER ${target} name)
    nvk_resource_table(${source} nvk_resources_${name} REGISTER SCRIPTS ${scripts})
    target_sources(${target} PRIVATE ${source})
endfunction()
