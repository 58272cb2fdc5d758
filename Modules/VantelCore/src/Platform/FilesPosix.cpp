// The POSIX side of durable writes: write, fsync the file, rename, fsync the folder.
#ifndef _WIN32

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "Platform/Files.h"

namespace Vantel::Platform {
namespace {

bool WriteAll(int descriptor, std::string_view contents) {
    while (!contents.empty()) {
        const ssize_t written = write(descriptor, contents.data(), contents.size());
        if (written < 0) {
            if (errno == EINTR) {
                continue;
            }
            return false;
        }
        contents.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
}

}  // namespace

bool WriteNewFileToStorage(const std::filesystem::path& path, std::string_view contents) {
    const int descriptor = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (descriptor < 0) {
        return false;
    }
    const bool written = WriteAll(descriptor, contents) && fsync(descriptor) == 0;
    return close(descriptor) == 0 && written;
}

bool MoveFileOver(const std::filesystem::path& from, const std::filesystem::path& to) {
    if (rename(from.c_str(), to.c_str()) != 0) {
        return false;
    }
    // A name lives in its folder: until the folder is on storage too, a power cut can bring back the old
    // file.
    const std::filesystem::path folder = to.has_parent_path() ? to.parent_path() : ".";
    const int descriptor = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor >= 0) {
        fsync(descriptor);  // some file systems cannot sync a folder; the rename itself has happened
        close(descriptor);
    }
    return true;
}

}  // namespace Vantel::Platform

#endif
