# Warnings for the project's own targets; third-party headers come in as system includes.
function(vantel_target_warnings target)
    target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic)
    if(VANTEL_WARNINGS_AS_ERRORS)
        target_compile_options(${target} PRIVATE -Werror)
    endif()
    # g++ 12 at -O3 reports overlapping copies inside std::string's own concatenation that cannot happen (a
    # known fault of that compiler's restrict check, fixed in 13).
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
        target_compile_options(${target} PRIVATE -Wno-restrict)
    endif()
endfunction()
