# The Windows build's side of the dependencies and names, included instead of the Linux package lookups.
#
# The header-only dependencies are Debian's packages as they are, but /usr/include cannot be an include folder
# of a cross build (its C library headers would shadow MinGW's): a folder in the build tree links to just
# their headers. stb is compiled here from Debian's headers, since Debian's libstb is a Linux library, and
# cpp-httplib's whole header (from the dependency cache: Debian's -dev package holds only declarations) is
# used over Winsock, for which Windows 10 is the oldest target it supports fully.

# Windows names libraries "<name>.dll", which is where LoadPlugin(name) looks.
set(CMAKE_SHARED_LIBRARY_PREFIX "")
add_compile_definitions(_WIN32_WINNT=0x0A00 WINVER=0x0A00)

# Paths of the build tree compiled into the tests, as the programs see them: under Wine the build machine's
# root is drive Z:, and a path without a drive would be taken on the current drive, which is not always Z:.
if(CMAKE_CROSSCOMPILING)
    set(VANTEL_BUILD_PATH_PREFIX "Z:")
endif()

set(VANTEL_DEBIAN_HEADERS ${CMAKE_BINARY_DIR}/debian-headers)
file(MAKE_DIRECTORY ${VANTEL_DEBIAN_HEADERS})
foreach(entry nlohmann glm stb)
    if(NOT EXISTS /usr/include/${entry})
        message(FATAL_ERROR "/usr/include/${entry} is missing: run tools/install-deps.sh")
    endif()
    file(CREATE_LINK /usr/include/${entry} ${VANTEL_DEBIAN_HEADERS}/${entry} SYMBOLIC)
endforeach()

add_library(nlohmann_json::nlohmann_json INTERFACE IMPORTED)
set_target_properties(nlohmann_json::nlohmann_json PROPERTIES
    INTERFACE_INCLUDE_DIRECTORIES ${VANTEL_DEBIAN_HEADERS})
add_library(glm::glm INTERFACE IMPORTED)
set_target_properties(glm::glm PROPERTIES INTERFACE_INCLUDE_DIRECTORIES ${VANTEL_DEBIAN_HEADERS})

enable_language(C)
file(CONFIGURE OUTPUT ${CMAKE_BINARY_DIR}/stb/StbImplementation.c CONTENT [[
#define STB_IMAGE_IMPLEMENTATION
#define STB_IMAGE_WRITE_IMPLEMENTATION
#include <stb_image.h>
#include <stb_image_write.h>
]])
add_library(VantelStb STATIC ${CMAKE_BINARY_DIR}/stb/StbImplementation.c)
target_include_directories(VantelStb SYSTEM PUBLIC ${VANTEL_DEBIAN_HEADERS}/stb)
add_library(Vantel::Stb ALIAS VantelStb)

find_path(VANTEL_HTTPLIB_INCLUDE httplib.h PATH_SUFFIXES httplib REQUIRED)
add_library(VantelHttplib INTERFACE)
target_include_directories(VantelHttplib SYSTEM INTERFACE ${VANTEL_HTTPLIB_INCLUDE})
target_link_libraries(VantelHttplib INTERFACE ws2_32)
add_library(Vantel::Httplib ALIAS VantelHttplib)
