#include "Preview.h"

#include <algorithm>
#include <vector>

#include <Vantel/Support/Image.h>

namespace VantelHost {

std::string EncodeBase64(const std::string& bytes) {
    static constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        const std::size_t left = bytes.size() - i;
        std::uint32_t group = static_cast<std::uint8_t>(bytes[i]) << 16;
        if (left > 1) {
            group |= static_cast<std::uint8_t>(bytes[i + 1]) << 8;
        }
        if (left > 2) {
            group |= static_cast<std::uint8_t>(bytes[i + 2]);
        }
        text += kAlphabet[(group >> 18) & 63];
        text += kAlphabet[(group >> 12) & 63];
        text += left > 1 ? kAlphabet[(group >> 6) & 63] : '=';
        text += left > 2 ? kAlphabet[group & 63] : '=';
    }
    return text;
}

std::string MakePreview(const Vantel::Image& image) {
    if (!image.IsValid() || image.GetBitsPerChannel() != 8) {
        return {};
    }
    const std::uint32_t width = image.GetWidth();
    const std::uint32_t height = image.GetHeight();
    const std::uint32_t channels = image.GetChannelCount();
    // A picture that fits is kept at its size: the scale is then kPreviewSide / kPreviewSide.
    const std::uint32_t longer = std::max({width, height, kPreviewSide});
    const std::uint32_t outWidth = std::max(1u, width * kPreviewSide / longer);
    const std::uint32_t outHeight = std::max(1u, height * kPreviewSide / longer);
    const std::vector<std::uint8_t>& pixels = image.GetPixelData();
    std::vector<std::uint8_t> small(static_cast<std::size_t>(outWidth) * outHeight * channels);
    for (std::uint32_t y = 0; y < outHeight; ++y) {
        const std::uint32_t fromY = y * height / outHeight;
        for (std::uint32_t x = 0; x < outWidth; ++x) {
            const std::uint32_t fromX = x * width / outWidth;
            std::copy_n(pixels.begin() + (static_cast<std::ptrdiff_t>(fromY) * width + fromX) * channels,
                        channels, small.begin() + (static_cast<std::ptrdiff_t>(y) * outWidth + x) * channels);
        }
    }
    const Vantel::Image preview(std::move(small), outWidth, outHeight, channels, 8);
    const std::vector<std::uint8_t> png = preview.Encode(Vantel::ImageFormat::Png);
    if (png.empty()) {
        return {};
    }
    return "data:image/png;base64," + EncodeBase64(std::string(png.begin(), png.end()));
}

}  // namespace VantelHost
