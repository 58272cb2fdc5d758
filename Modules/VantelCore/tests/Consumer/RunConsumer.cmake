# Script mode: install the built library to PREFIX, then configure, build and run the consumer against it.
function(run)
    execute_process(COMMAND ${ARGN} RESULT_VARIABLE result)
    if(NOT result EQUAL 0)
        message(FATAL_ERROR "failed (${result}): ${ARGN}")
    endif()
endfunction()

file(REMOVE_RECURSE ${PREFIX} ${CONSUMER_BUILD})
run(${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${PREFIX} --component Unspecified)
run(${CMAKE_COMMAND} -S ${CONSUMER_SOURCE} -B ${CONSUMER_BUILD} -G ${GENERATOR}
    -DCMAKE_PREFIX_PATH=${PREFIX} "-DCMAKE_CXX_FLAGS=${FLAGS}" "-DCMAKE_EXE_LINKER_FLAGS=${FLAGS}")
run(${CMAKE_COMMAND} --build ${CONSUMER_BUILD})
run(${CONSUMER_BUILD}/consumer)
