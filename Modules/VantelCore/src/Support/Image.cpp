#include <Vantel/Support/Image.h>

#include <climits>
#include <filesystem>
#include <fstream>
#include <istream>
#include <utility>

#include <stb_image.h>
#include <stb_image_write.h>

#include <Vantel/Support/Utf8Paths.h>

namespace Vantel {
namespace {

using Pixels = std::vector<std::uint8_t>;

constexpr int kJpegQuality = 90;

// Takes over a buffer from the decoder; an empty image when decoding failed.
Image FromDecoded(stbi_uc* decoded, int width, int height, int channelCount) {
    if (decoded == nullptr) {
        return Image();
    }
    const std::unique_ptr<stbi_uc, void (*)(void*)> owner(decoded, &stbi_image_free);
    const std::size_t size = static_cast<std::size_t>(width) * static_cast<std::size_t>(height) *
                             static_cast<std::size_t>(channelCount);
    return Image(Pixels(decoded, decoded + size), static_cast<std::uint32_t>(width),
                 static_cast<std::uint32_t>(height), static_cast<std::uint32_t>(channelCount), 8);
}

// The decoder pulls a file through these, so that it is read in pieces rather than loaded whole.
int ReadFromStream(void* user, char* data, int size) {
    std::istream& stream = *static_cast<std::istream*>(user);
    stream.read(data, size);
    return static_cast<int>(stream.gcount());
}

void SkipInStream(void* user, int count) {
    std::istream& stream = *static_cast<std::istream*>(user);
    stream.seekg(count, std::ios::cur);
    stream.peek();  // raises the end-of-file flag when the skip reached the end, which the decoder checks
}

int IsStreamAtEnd(void* user) {
    const std::istream& stream = *static_cast<std::istream*>(user);
    return stream.good() ? 0 : 1;  // at the end, or failed
}

void AppendEncoded(void* context, void* data, int size) {
    Pixels& encoded = *static_cast<Pixels*>(context);
    const auto* bytes = static_cast<const std::uint8_t*>(data);
    encoded.insert(encoded.end(), bytes, bytes + size);
}

const Pixels& NoPixels() {
    static const Pixels empty;
    return empty;
}

}  // namespace

class Image::Implementation {
public:
    // Shared between copies and never changed in place, so a copy can be read while the original is reset.
    std::shared_ptr<const Pixels> pixels;
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint32_t channelCount = 3;
    std::uint32_t bitsPerChannel = 8;
};

Image::Image() = default;

Image::Image(std::vector<std::uint8_t>&& pixels, std::uint32_t width, std::uint32_t height,
             std::uint32_t channelCount, std::uint32_t bitsPerChannel)
    : implementation(std::make_unique<Implementation>()) {
    implementation->pixels = std::make_shared<const Pixels>(std::move(pixels));
    implementation->width = width;
    implementation->height = height;
    implementation->channelCount = channelCount;
    implementation->bitsPerChannel = bitsPerChannel;
}

Image::Image(const std::vector<std::uint8_t>& pixels, std::uint32_t width, std::uint32_t height,
             std::uint32_t channelCount, std::uint32_t bitsPerChannel)
    : Image(Pixels(pixels), width, height, channelCount, bitsPerChannel) {}

Image::Image(const Image& other)
    : implementation(other.implementation ? std::make_unique<Implementation>(*other.implementation)
                                          : nullptr) {}

Image& Image::operator=(const Image& other) {
    if (this != &other) {
        implementation =
            other.implementation ? std::make_unique<Implementation>(*other.implementation) : nullptr;
    }
    return *this;
}

Image::Image(Image&& other) noexcept = default;
Image& Image::operator=(Image&& other) noexcept = default;
Image::~Image() = default;

Image Image::LoadFromFile(const std::string& path) {
    const std::filesystem::path file = PathFromUtf8(path);
    if (!std::filesystem::exists(file)) {
        return Image();
    }
    std::ifstream stream(file, std::ios::binary);
    if (!stream) {
        return Image();
    }
    const stbi_io_callbacks callbacks{&ReadFromStream, &SkipInStream, &IsStreamAtEnd};
    int width = 0;
    int height = 0;
    int channelCount = 0;
    stbi_uc* decoded = stbi_load_from_callbacks(&callbacks, &stream, &width, &height, &channelCount, 0);
    return FromDecoded(decoded, width, height, channelCount);
}

Image Image::LoadFromMemory(const unsigned char* data, std::size_t size) {
    if (data == nullptr || size == 0) {
        return Image();
    }
    if (size > static_cast<std::size_t>(INT_MAX)) {
        return Image();  // the decoder takes the length as an int
    }
    int width = 0;
    int height = 0;
    int channelCount = 0;
    stbi_uc* decoded = stbi_load_from_memory(data, static_cast<int>(size), &width, &height, &channelCount, 0);
    return FromDecoded(decoded, width, height, channelCount);
}

std::vector<std::uint8_t> Image::Encode(ImageFormat format) const {
    if (!implementation || !implementation->pixels) {
        return {};
    }
    const Implementation& state = *implementation;
    if (state.width == 0 || state.height == 0) {
        return {};
    }
    if (state.channelCount < 1 || state.channelCount > 4) {
        return {};
    }
    if (state.bitsPerChannel != 8) {
        return {};
    }
    const std::size_t size = std::size_t{state.width} * state.height * state.channelCount;
    if (state.pixels->size() != size) {
        return {};
    }
    // The encoders count bytes in int, PNG one more per row for its filter byte.
    if (size + state.height > static_cast<std::size_t>(INT_MAX)) {
        return {};
    }

    const auto width = static_cast<int>(state.width);
    const auto height = static_cast<int>(state.height);
    // The JPEG writer ignores an alpha channel by itself.
    const auto channelCount = static_cast<int>(state.channelCount);
    const std::uint8_t* pixels = state.pixels->data();

    Pixels encoded;
    encoded.reserve(size / 2);
    int written = 0;
    switch (format) {
        case ImageFormat::Png:
            written = stbi_write_png_to_func(&AppendEncoded, &encoded, width, height, channelCount, pixels,
                                             width * channelCount);
            break;
        case ImageFormat::Jpg:
            written = stbi_write_jpg_to_func(&AppendEncoded, &encoded, width, height, channelCount, pixels,
                                             kJpegQuality);
            break;
        case ImageFormat::Bmp:
            written = stbi_write_bmp_to_func(&AppendEncoded, &encoded, width, height, channelCount, pixels);
            break;
        case ImageFormat::Tga:
            written = stbi_write_tga_to_func(&AppendEncoded, &encoded, width, height, channelCount, pixels);
            break;
        default:
            return {};
    }
    if (written == 0) {
        return {};
    }
    return encoded;
}

bool Image::IsValid() const {
    if (!implementation || !implementation->pixels) {
        return false;
    }
    const Implementation& state = *implementation;
    if (state.width == 0 || state.height == 0) {
        return false;
    }
    if (state.channelCount < 1 || state.channelCount > 4) {
        return false;
    }
    // Unsigned 32-bit on purpose: a product that wraps is compared as it wrapped.
    const std::uint32_t expected =
        state.channelCount * (state.bitsPerChannel / 8) * (state.width * state.height);
    return state.pixels->size() == expected;
}

std::uint32_t Image::GetWidth() const {
    return implementation ? implementation->width : 0;
}

std::uint32_t Image::GetHeight() const {
    return implementation ? implementation->height : 0;
}

std::uint32_t Image::GetChannelCount() const {
    return implementation ? implementation->channelCount : 3;
}

std::uint32_t Image::GetBitsPerChannel() const {
    return implementation ? implementation->bitsPerChannel : 8;
}

const std::vector<std::uint8_t>& Image::GetPixelData() const {
    if (!implementation || !implementation->pixels) {
        return NoPixels();
    }
    return *implementation->pixels;
}

void Image::SetWidth(std::uint32_t width) {
    State().width = width;
}

void Image::SetHeight(std::uint32_t height) {
    State().height = height;
}

void Image::SetChannelCount(std::uint32_t channelCount) {
    State().channelCount = channelCount;
}

void Image::SetBitsPerChannel(std::uint32_t bitsPerChannel) {
    State().bitsPerChannel = bitsPerChannel;
}

void Image::SetPixelData(std::vector<std::uint8_t> pixels) {
    State().pixels = std::make_shared<const Pixels>(std::move(pixels));
}

Image::Implementation& Image::State() {
    if (!implementation) {
        implementation = std::make_unique<Implementation>();
    }
    return *implementation;
}

const char* GetImageFormatExtension(ImageFormat format) {
    switch (format) {
        case ImageFormat::Jpg:
            return "jpg";
        case ImageFormat::Bmp:
            return "bmp";
        case ImageFormat::Tga:
            return "tga";
        default:
            return "png";
    }
}

}  // namespace Vantel
