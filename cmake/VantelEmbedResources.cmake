# Script mode: writes OUTPUT, a C++ source holding each file of RESOURCES (paths relative to BASE_DIR, joined with
# "|") as a byte array, and the table that Vantel::Resources::Find reads (or, with NAMESPACE and HEADER, a
# plug-in's own table).
if(NOT NAMESPACE)
    set(NAMESPACE "Vantel::Resources::Detail")
endif()
if(NOT HEADER)
    set(HEADER "Support/ResourceTable.h")
endif()
string(REPLACE "|" ";" resources "${RESOURCES}")
set(arrays "")
set(entries "")
set(index 0)
foreach(resource IN LISTS resources)
    if(resource STREQUAL "")
        continue()
    endif()
    file(READ ${BASE_DIR}/${resource} bytes HEX)
    string(LENGTH "${bytes}" hex_length)
    math(EXPR size "${hex_length} / 2")
    string(REGEX REPLACE "([0-9a-f][0-9a-f])" "0x\\1," bytes "${bytes}")
    string(REGEX REPLACE "((0x[0-9a-f][0-9a-f],){16})" "\\1\n    " bytes "${bytes}")
    string(APPEND arrays "const unsigned char resource${index}[] = {\n    ${bytes}0x00};\n")
    string(APPEND entries "    {\"${resource}\", resource${index}, ${size}},\n")
    math(EXPR index "${index} + 1")
endforeach()
set(content "// Generated from the resource files at build time; edit those instead.
#include \"${HEADER}\"

namespace ${NAMESPACE} {
namespace {
${arrays}}  // namespace

const Entry entries[] = {
${entries}    {nullptr, nullptr, 0},
};

const Entry* GetEntries() { return entries; }

}  // namespace ${NAMESPACE}
")
file(WRITE ${OUTPUT}.tmp "${content}")
file(COPY_FILE ${OUTPUT}.tmp ${OUTPUT} ONLY_IF_DIFFERENT)
file(REMOVE ${OUTPUT}.tmp)
