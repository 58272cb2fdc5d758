// vantel: the command-line host of VantelCore. It uses the library only through its public interface.
#include <exception>
#include <iostream>
#include <string_view>
#include <vector>

#include <Vantel/Projects/BuildInfo.h>

#include "Arguments.h"
#include "Commands.h"
#include "Output.h"

namespace {

int Dispatch(const VantelHost::Arguments& arguments) {
    using namespace VantelHost;
    if (arguments.command == "help") {
        Out() << Usage();
        return kExitOk;
    }
    if (arguments.command == "version") {
        Out() << "vantel " << Vantel::BuildInfo::GetDisplayString() << '\n';
        return kExitOk;
    }
    if (arguments.command == "run") {
        return RunCommand(arguments);
    }
    if (arguments.command == "check") {
        return CheckCommand(arguments);
    }
    if (arguments.command == "upgrade") {
        return UpgradeCommand(arguments);
    }
    if (arguments.command == "types") {
        return TypesCommand(arguments);
    }
    if (arguments.command == "edit") {
        return EditCommand(arguments);
    }
    if (arguments.command == "doc") {
        return DocCommand(arguments);
    }
    return GraphCommand(arguments);
}

}  // namespace

int main(int argc, char** argv) {
    using namespace VantelHost;
    SeparateLibraryLog();
    int code = kExitFailed;
    try {
        code = Dispatch(ParseArguments(std::vector<std::string_view>(argv + 1, argv + argc)));
    } catch (const HostError& error) {
        std::cerr << "vantel: " << error.what() << '\n';
        code = error.code;
    } catch (const std::exception& error) {
        // A JSON error while saving, a file-system error: the command failed, with the library's own words.
        std::cerr << "vantel: " << error.what() << '\n';
    }
    Out().flush();
    return code;
}
