#include <Vantel/Support/Utf8Paths.h>

namespace Vantel {

std::filesystem::path PathFromUtf8(std::string_view text) {
    // char8_t text is taken as UTF-8 whatever the platform's narrow encoding.
    return std::filesystem::path(
        std::u8string_view(reinterpret_cast<const char8_t*>(text.data()), text.size()));
}

std::string PathToUtf8(const std::filesystem::path& path) {
    const std::u8string text = path.u8string();
    return std::string(reinterpret_cast<const char*>(text.data()), text.size());
}

}  // namespace Vantel
