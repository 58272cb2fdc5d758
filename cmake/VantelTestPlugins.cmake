# The plug-ins that only the tests load are built into a folder of their own: a host loads every library beside
# itself, and a build with the tests must offer its users exactly what a build without them does. Included by
# every folder that builds or uses them; nothing installs them.
set(VANTEL_TEST_PLUGIN_FOLDER ${CMAKE_BINARY_DIR}/bin/test-plugins)

# Tests that load test plug-ins depend on this target, which builds all of them.
if(NOT TARGET TestPlugins)
    add_custom_target(TestPlugins)
endif()

# Builds the library `target` into the test plug-in folder (.so and .dll alike) as one of TestPlugins.
function(vantel_test_plugin target)
    set_target_properties(${target} PROPERTIES
        LIBRARY_OUTPUT_DIRECTORY ${VANTEL_TEST_PLUGIN_FOLDER}
        RUNTIME_OUTPUT_DIRECTORY ${VANTEL_TEST_PLUGIN_FOLDER})
    add_dependencies(TestPlugins ${target})
    # Build folders made before the test plug-ins had a folder of their own still hold them beside the host.
    file(REMOVE ${CMAKE_BINARY_DIR}/bin/${CMAKE_SHARED_LIBRARY_PREFIX}${target}${CMAKE_SHARED_LIBRARY_SUFFIX})
endfunction()
