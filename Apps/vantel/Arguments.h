// Arguments.h: the command line of `vantel`, parsed and checked against what each command takes.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace VantelHost {

struct Arguments {
    std::string command;  // "run", "check", ...; "help" and "version" for those requests
    std::vector<std::string> operands;
    std::vector<std::string> plugins;  // empty: every plug-in library beside the executable
    int frames = 60;
    double fps = 60.0;
    std::optional<std::string> save;
    int port = 0;        // edit: 0 takes a free port
    bool force = false;  // upgrade: write even over IN, or after loading dropped entries
};

// Throws HostError with kExitUsage for an unknown command or option, a missing or malformed option value, or
// the wrong number of operands.
Arguments ParseArguments(const std::vector<std::string_view>& arguments);

// The text of --help.
std::string_view Usage();

}  // namespace VantelHost
