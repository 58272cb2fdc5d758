// vantel: the command-line host of VantelCore.
#include <iostream>
#include <string_view>

#include <Vantel/VantelCore.h>

namespace {

constexpr std::string_view kUsage =
    "usage: vantel <command> [arguments]\n"
    "\n"
    "commands:\n"
    "  --version    print the build's version and exit\n"
    "  --help       print this help and exit\n";

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        std::cerr << kUsage;
        return 2;
    }
    const std::string_view command = argv[1];
    if (command == "--version" || command == "version") {
        std::cout << "vantel " << Vantel::BuildInfo::GetDisplayString() << '\n';
        return 0;
    }
    if (command == "--help" || command == "-h" || command == "help") {
        std::cout << kUsage;
        return 0;
    }
    std::cerr << "vantel: unknown command '" << command << "'\n\n" << kUsage;
    return 2;
}
