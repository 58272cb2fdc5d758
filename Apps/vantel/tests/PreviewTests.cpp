// Previews of image data: scaled by the nearest pixel to fit the preview side, and none for what the page
// could not show.
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <Vantel/Support/Image.h>

#include "Edit/Preview.h"

namespace {

std::vector<std::uint8_t> DecodeBase64(std::string_view text) {
    constexpr std::string_view kAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::vector<std::uint8_t> bytes;
    std::uint32_t bits = 0;
    int count = 0;
    for (const char c : text) {
        const std::size_t value = kAlphabet.find(c);
        if (value == std::string_view::npos) {
            break;  // the padding
        }
        bits = (bits << 6) | static_cast<std::uint32_t>(value);
        count += 6;
        if (count >= 8) {
            count -= 8;
            bytes.push_back(static_cast<std::uint8_t>(bits >> count));
        }
    }
    return bytes;
}

Vantel::Image PreviewOf(const Vantel::Image& image) {
    constexpr std::string_view kPrefix = "data:image/png;base64,";
    const std::string preview = VantelHost::MakePreview(image);
    EXPECT_EQ(preview.rfind(kPrefix, 0), 0u);
    const std::vector<std::uint8_t> png = DecodeBase64(std::string_view(preview).substr(kPrefix.size()));
    return Vantel::Image::LoadFromMemory(png.data(), png.size());
}

TEST(Preview, ScalesByTheNearestPixelAndRefusesWhatThePageCannotShow) {
    // 192 x 2 pixels, red counting up along the row, green telling the rows apart.
    constexpr std::uint32_t kWidth = 2 * VantelHost::kPreviewSide;
    std::vector<std::uint8_t> pixels;
    for (std::uint32_t y = 0; y < 2; ++y) {
        for (std::uint32_t x = 0; x < kWidth; ++x) {
            pixels.insert(pixels.end(),
                          {static_cast<std::uint8_t>(x), static_cast<std::uint8_t>(y * 200), 7});
        }
    }
    const Vantel::Image scaled = PreviewOf(Vantel::Image(pixels, kWidth, 2, 3, 8));
    ASSERT_EQ(scaled.GetWidth(), VantelHost::kPreviewSide);
    ASSERT_EQ(scaled.GetHeight(), 1u);
    ASSERT_EQ(scaled.GetChannelCount(), 3u);
    for (std::uint32_t x = 0; x < VantelHost::kPreviewSide; ++x) {
        const std::uint8_t* pixel = &scaled.GetPixelData()[x * 3];
        EXPECT_EQ(pixel[0], 2 * x);
        EXPECT_EQ(pixel[1], 0);
        EXPECT_EQ(pixel[2], 7);
    }

    // A picture that fits keeps its size.
    const Vantel::Image kept = PreviewOf(Vantel::Image(std::vector<std::uint8_t>(2 * 3 * 4, 9), 2, 3, 4, 8));
    EXPECT_EQ(kept.GetWidth(), 2u);
    EXPECT_EQ(kept.GetHeight(), 3u);
    EXPECT_EQ(kept.GetPixelData(), std::vector<std::uint8_t>(2 * 3 * 4, 9));

    EXPECT_EQ(VantelHost::MakePreview(Vantel::Image()), "");
    const Vantel::Image deep(std::vector<std::uint8_t>(2 * 2 * 3 * 2, 0), 2, 2, 3, 16);
    ASSERT_TRUE(deep.IsValid());
    EXPECT_EQ(VantelHost::MakePreview(deep), "");
}

}  // namespace
