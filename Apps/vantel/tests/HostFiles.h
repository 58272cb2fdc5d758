// HostFiles.h: whole-file reads for the host's end-to-end tests.
#pragma once

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

namespace HostTesting {

inline std::string ReadFile(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

}  // namespace HostTesting
