# Sources are taken by folder, so that each subsystem adds files without
# touching the build of the others. A target whose folders hold no source yet
# builds from an empty one.
function(nvk_glob out)
    set(files)
    foreach(dir IN LISTS ARGN)
        file(GLOB_RECURSE found CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/${dir}/*.cpp)
        list(APPEND files ${found})
    endforeach()
    if(NOT files)
        set(empty ${PROJECT_BINARY_DIR}/nvk_empty.cpp)
        if(NOT EXISTS ${empty})
            file(WRITE ${empty} "")
        endif()
        set(files ${empty})
    endif()
    set(${out} ${files} PARENT_SCOPE)
endfunction()
