#include "Arguments.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <optional>
#include <span>
#include <system_error>

#include "Output.h"

namespace VantelHost {
namespace {

constexpr std::string_view kUsage =
    "usage: vantel <command> [arguments] [options]\n"
    "\n"
    "commands:\n"
    "  run PROJECT        run the project frame by frame\n"
    "  check PROJECT      load the project and report its version, size and every dropped entry\n"
    "  upgrade IN OUT     load IN and save it as OUT in this build's file format; refuses when loading\n"
    "                     dropped entries or when OUT is IN, unless given --force\n"
    "  types              list the registered operator, parameter and data types\n"
    "  doc TYPE           print the documentation of one type\n"
    "  graph PROJECT      print the project's graph in Graphviz DOT\n"
    "  edit PROJECT       open the project (or start it, when the file does not exist) for an editor: runs\n"
    "                     it live and serves it on 127.0.0.1 until Ctrl+C\n"
    "  --version          print the build's version\n"
    "  --help             print this help\n"
    "\n"
    "options:\n"
    "  --plugin NAME      load only the named plug-ins (repeatable): a name is looked for beside the\n"
    "                     executable, a path (one with a folder, like ./libMine.so) is loaded as it is; by\n"
    "                     default every plug-in library beside the executable is loaded\n"
    "  --frames N         run: the number of frames (default 60)\n"
    "  --fps F            run, edit: frames per second (default 60)\n"
    "  --save OUT         run: save the project to OUT after the run\n"
    "  --port N           edit: the port to serve on (default: a free one)\n"
    "  --force            upgrade: write OUT even when loading dropped entries or OUT is IN\n"
    "\n"
    "exit codes: 0 ok, 1 the project or command failed, 2 usage error, 3 missing file, 4 plug-in failed\n";

struct CommandShape {
    std::string_view name;
    std::size_t operands;
    std::string_view operandNames;
    bool runOptions;
    bool forceOption;
    bool editOptions = false;
};

constexpr CommandShape kCommands[] = {
    {"run", 1, "PROJECT", true, false},         {"check", 1, "PROJECT", false, false},
    {"upgrade", 2, "IN OUT", false, true},      {"types", 0, "", false, false},
    {"doc", 1, "TYPE", false, false},           {"graph", 1, "PROJECT", false, false},
    {"edit", 1, "PROJECT", false, false, true},
};

// The number that `text` holds from its first character to its last, or nothing.
template <typename Number>
std::optional<Number> ParseWhole(const std::string& text) {
    Number value{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size()) {
        return std::nullopt;
    }
    return value;
}

int ParseFrames(const std::string& text) {
    const std::optional<int> value = ParseWhole<int>(text);
    if (!value || *value < 0) {
        Fail(kExitUsage, "--frames needs a whole number of frames, 0 or more, not '" + text + "'");
    }
    return *value;
}

double ParseFps(const std::string& text) {
    const std::optional<double> value = ParseWhole<double>(text);
    if (!value || !std::isfinite(*value) || *value <= 0.0) {
        Fail(kExitUsage, "--fps needs a number of frames per second above 0, not '" + text + "'");
    }
    return *value;
}

int ParsePort(const std::string& text) {
    const std::optional<int> value = ParseWhole<int>(text);
    if (!value || *value < 1 || *value > 65535) {
        Fail(kExitUsage, "--port needs a port number from 1 to 65535, not '" + text + "'");
    }
    return *value;
}

}  // namespace

std::string_view Usage() {
    return kUsage;
}

Arguments ParseArguments(const std::vector<std::string_view>& arguments) {
    if (arguments.empty()) {
        Fail(kExitUsage, "no command given; try 'vantel --help'");
    }
    Arguments result;
    const std::string_view command = arguments.front();
    if (command == "--help" || command == "-h" || command == "help") {
        result.command = "help";
        return result;
    }
    if (command == "--version" || command == "version") {
        result.command = "version";
        return result;
    }
    const auto* shape = std::find_if(std::begin(kCommands), std::end(kCommands),
                                     [&](const CommandShape& known) { return known.name == command; });
    if (shape == std::end(kCommands)) {
        Fail(kExitUsage, "unknown command '" + std::string(command) + "'; try 'vantel --help'");
    }
    result.command = command;

    const std::span<const std::string_view> rest(arguments.begin() + 1, arguments.end());
    for (std::size_t i = 0; i < rest.size(); ++i) {
        const std::string_view argument = rest[i];
        if (!argument.starts_with("--")) {
            result.operands.emplace_back(argument);
            continue;
        }
        if (argument == "--force" && shape->forceOption) {
            result.force = true;
            continue;
        }
        // Both "--frames 10" and "--frames=10".
        const std::size_t equals = argument.find('=');
        const std::string option(argument.substr(0, equals));
        const bool known =
            option == "--plugin" ||
            (shape->runOptions && (option == "--frames" || option == "--fps" || option == "--save")) ||
            (shape->editOptions && (option == "--port" || option == "--fps"));
        if (!known) {
            Fail(kExitUsage,
                 "unknown option '" + option + "' for '" + result.command + "'; try 'vantel --help'");
        }
        std::string value;
        if (equals != std::string_view::npos) {
            value = argument.substr(equals + 1);
        } else if (i + 1 < rest.size()) {
            value = rest[++i];
        } else {
            Fail(kExitUsage, option + " needs a value");
        }
        if (option == "--plugin") {
            result.plugins.push_back(value);
        } else if (option == "--frames") {
            result.frames = ParseFrames(value);
        } else if (option == "--fps") {
            result.fps = ParseFps(value);
        } else if (option == "--port") {
            result.port = ParsePort(value);
        } else {
            result.save = value;
        }
    }
    if (result.operands.size() != shape->operands) {
        std::string expected = "vantel " + result.command;
        if (!shape->operandNames.empty()) {
            expected += " " + std::string(shape->operandNames);
        }
        Fail(kExitUsage,
             (result.operands.size() < shape->operands ? "missing argument: " : "too many arguments: ") +
                 std::string("usage is '") + expected + "'");
    }
    return result;
}

}  // namespace VantelHost
