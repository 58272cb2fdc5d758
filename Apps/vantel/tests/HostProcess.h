// HostProcess.h: runs a program to its end, for the host's end-to-end tests. One source per platform
// (HostProcessPosix.cpp, HostProcessWin32.cpp); the build picks it.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace HostTesting {

struct ProcessResult {
    int code = -1;  // the exit code; -1 when the program could not be started or did not exit normally
    std::string out;
    std::string err;
};

// Runs `program` with `arguments` in `folder`, its standard output and error going to files in that folder
// ("stdout.txt", "stderr.txt"), and returns once it has exited.
ProcessResult RunProcess(const std::filesystem::path& program, const std::vector<std::string>& arguments,
                         const std::filesystem::path& folder);

}  // namespace HostTesting
