// Starts the program with CreateProcessW, its output handles on files, and waits for it.
#include <windows.h>

#include "HostFiles.h"
#include "HostProcess.h"

namespace HostTesting {
namespace {

// Quotes one argument so that the C runtime's command-line parser gives it back as it is: backslashes are
// literal except before a quote, where they and the quote are escaped.
std::wstring Quoted(const std::wstring& argument) {
    std::wstring result = L"\"";
    std::size_t backslashes = 0;
    for (const wchar_t c : argument) {
        if (c == L'\\') {
            ++backslashes;
            continue;
        }
        result.append(c == L'"' ? backslashes * 2 + 1 : backslashes, L'\\');
        backslashes = 0;
        result += c;
    }
    result.append(backslashes * 2, L'\\');
    return result + L"\"";
}

HANDLE CreateOutputFile(const std::filesystem::path& path) {
    SECURITY_ATTRIBUTES inherited{static_cast<DWORD>(sizeof(SECURITY_ATTRIBUTES)), nullptr, TRUE};
    return CreateFileW(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ, &inherited, CREATE_ALWAYS,
                       FILE_ATTRIBUTE_NORMAL, nullptr);
}

int RunWithOutputs(std::filesystem::path program, const std::vector<std::string>& arguments,
                   const std::filesystem::path& folder, HANDLE out, HANDLE err) {
    program.make_preferred();
    std::wstring commandLine = Quoted(program.wstring());
    for (const std::string& argument : arguments) {
        commandLine += L" " + Quoted(std::filesystem::path(argument).wstring());
    }
    STARTUPINFOW startup{};
    startup.cb = sizeof(startup);
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = GetStdHandle(STD_INPUT_HANDLE);
    startup.hStdOutput = out;
    startup.hStdError = err;
    PROCESS_INFORMATION process{};
    if (!CreateProcessW(program.c_str(), commandLine.data(), nullptr, nullptr, TRUE, 0, nullptr,
                        folder.c_str(), &startup, &process)) {
        return -1;
    }
    WaitForSingleObject(process.hProcess, INFINITE);
    DWORD code = 0;
    const bool exited = GetExitCodeProcess(process.hProcess, &code) != 0;
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
    return exited ? static_cast<int>(code) : -1;
}

// The host writes its standard streams in text mode, which ends lines with "\r\n" here; the tests read
// lines as a text-mode reader would.
std::string TextOf(std::string text) {
    std::string::size_type at = 0;
    while ((at = text.find("\r\n", at)) != std::string::npos) {
        text.erase(at, 1);
        ++at;
    }
    return text;
}

}  // namespace

ProcessResult RunProcess(const std::filesystem::path& program, const std::vector<std::string>& arguments,
                         const std::filesystem::path& folder) {
    const std::filesystem::path outPath = folder / "stdout.txt";
    const std::filesystem::path errPath = folder / "stderr.txt";
    const HANDLE out = CreateOutputFile(outPath);
    const HANDLE err = CreateOutputFile(errPath);
    int code = -1;
    if (out != INVALID_HANDLE_VALUE && err != INVALID_HANDLE_VALUE) {
        code = RunWithOutputs(program, arguments, folder, out, err);
    }
    for (const HANDLE handle : {out, err}) {
        if (handle != INVALID_HANDLE_VALUE) {
            CloseHandle(handle);
        }
    }
    return {code, TextOf(ReadFile(outPath)), TextOf(ReadFile(errPath))};
}

}  // namespace HostTesting
