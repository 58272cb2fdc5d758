// The Win32 side of durable writes: FlushFileBuffers, and a write-through replacing move.
#ifdef _WIN32

#include <windows.h>

#include <algorithm>
#include <cstddef>

#include "Platform/Files.h"

namespace Vantel::Platform {

bool WriteNewFileToStorage(const std::filesystem::path& path, std::string_view contents) {
    const HANDLE file =
        CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        return false;
    }
    bool written = true;
    while (written && !contents.empty()) {
        const DWORD chunk = static_cast<DWORD>(std::min<std::size_t>(contents.size(), 1u << 30));
        DWORD done = 0;
        written = WriteFile(file, contents.data(), chunk, &done, nullptr) != 0 && done > 0;
        contents.remove_prefix(done);
    }
    written = written && FlushFileBuffers(file) != 0;
    return CloseHandle(file) != 0 && written;
}

bool MoveFileOver(const std::filesystem::path& from, const std::filesystem::path& to) {
    return MoveFileExW(from.c_str(), to.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) != 0;
}

}  // namespace Vantel::Platform

#endif
