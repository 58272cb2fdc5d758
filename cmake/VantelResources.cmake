# Compiles text resources (the documentation of the core types) into the library as byte arrays, keyed by their
# path relative to the module folder, e.g. "Docs/Operators/General/Graph.md". A plug-in that embeds its own docs
# passes NAMESPACE and HEADER, so that its table stays its own and the core's lookup is left alone:
#   vantel_embed_resources(MyPlugin ${CMAKE_CURRENT_SOURCE_DIR} Docs NAMESPACE MyPlugin::Docs HEADER "Docs.h")
# The header must declare `struct Entry { const char* path; const unsigned char* bytes; std::size_t size; };`
# and `const Entry* GetEntries();` in that namespace.
function(vantel_embed_resources target base_dir folder)
    # Found beside this file, so that the function works from any directory that includes it.
    set(VANTEL_RESOURCE_SCRIPT ${CMAKE_CURRENT_FUNCTION_LIST_DIR}/VantelEmbedResources.cmake)
    cmake_parse_arguments(PARSE_ARGV 3 EMBED "" "NAMESPACE;HEADER" "")
    if(NOT EMBED_NAMESPACE)
        set(EMBED_NAMESPACE "Vantel::Resources::Detail")
    endif()
    if(NOT EMBED_HEADER)
        set(EMBED_HEADER "Support/ResourceTable.h")
    endif()
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
                -DNAMESPACE=${EMBED_NAMESPACE} -DHEADER=${EMBED_HEADER}
                -P ${VANTEL_RESOURCE_SCRIPT}
        DEPENDS ${absolute_resources} ${VANTEL_RESOURCE_SCRIPT}
        COMMENT "Embedding ${folder} resources"
        VERBATIM)
    target_sources(${target} PRIVATE ${output})
endfunction()
