# Warnings are errors everywhere in our own code.
function(nvk_warnings target)
    target_compile_options(${target} PRIVATE -Wall -Wextra -Werror)
endfunction()
