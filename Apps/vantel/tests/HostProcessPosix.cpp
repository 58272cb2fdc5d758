// Runs the program through the shell, which changes folder, redirects and reports the exit code.
#include <sys/wait.h>

#include <cstdlib>

#include "HostFiles.h"
#include "HostProcess.h"

namespace HostTesting {
namespace {

std::string ShellQuoted(const std::string& text) {
    std::string result = "'";
    for (const char c : text) {
        result += c == '\'' ? std::string("'\\''") : std::string(1, c);
    }
    return result + "'";
}

}  // namespace

ProcessResult RunProcess(const std::filesystem::path& program, const std::vector<std::string>& arguments,
                         const std::filesystem::path& folder) {
    std::string command = "cd " + ShellQuoted(folder.string()) + " && " + ShellQuoted(program.string());
    for (const std::string& argument : arguments) {
        command += " " + ShellQuoted(argument);
    }
    const std::filesystem::path out = folder / "stdout.txt";
    const std::filesystem::path err = folder / "stderr.txt";
    command += " >" + ShellQuoted(out.string()) + " 2>" + ShellQuoted(err.string());
    const int status = std::system(command.c_str());
    const int code = status != -1 && WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return {code, ReadFile(out), ReadFile(err)};
}

}  // namespace HostTesting
