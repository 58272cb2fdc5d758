# Compiles text resources (the documentation of the core types) into the library as byte arrays, keyed by their
# path relative to the module folder, e.g. "Docs/Operators/General/Graph.md".
set(VANTEL_RESOURCE_SCRIPT ${CMAKE_CURRENT_LIST_DIR}/VantelEmbedResources.cmake)

function(vantel_embed_resources target base_dir folder)
    file(GLOB_RECURSE resources CONFIGURE_DEPENDS RELATIVE ${base_dir} ${base_dir}/${folder}/*.md)
    list(SORT resources)
    set(output ${CMAKE_CURRENT_BINARY_DIR}/generated/EmbeddedResources.cpp)
    set(absolute_resources)
    foreach(resource IN LISTS resources)
        list(APPEND absolute_resources ${base_dir}/${resource})
    endforeach()
    string(REPLACE ";" "|" resource_list "${resources}")
    add_custom_command(OUTPUT ${output}
        COMMAND ${CMAKE_COMMAND} -DBASE_DIR=${base_dir} "-DRESOURCES=${resource_list}" -DOUTPUT=${output}
                -P ${VANTEL_RESOURCE_SCRIPT}
        DEPENDS ${absolute_resources} ${VANTEL_RESOURCE_SCRIPT}
        COMMENT "Embedding ${folder} resources"
        VERBATIM)
    target_sources(${target} PRIVATE ${output})
endfunction()
