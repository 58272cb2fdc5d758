# Sanitizers apply to everything built here (library, plug-ins, host, tests) so that their runtimes agree.
if(VANTEL_SANITIZERS)
    set(VANTEL_SANITIZER_FLAGS -fsanitize=${VANTEL_SANITIZERS} -fno-omit-frame-pointer)
    if(VANTEL_SANITIZERS MATCHES "undefined")
        list(APPEND VANTEL_SANITIZER_FLAGS -fno-sanitize-recover=all)
    endif()
    add_compile_options(${VANTEL_SANITIZER_FLAGS})
    add_link_options(${VANTEL_SANITIZER_FLAGS})
endif()
