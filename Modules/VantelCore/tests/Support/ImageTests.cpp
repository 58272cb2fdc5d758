#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include <Vantel/Support/Image.h>

namespace Vantel {
namespace {

using Bytes = std::vector<std::uint8_t>;

// An odd size, so that a mixed-up row stride, width or height shows.
Image Pattern(std::uint32_t channels, std::uint32_t width = 5, std::uint32_t height = 3) {
    Bytes pixels(width * height * channels);
    for (std::size_t i = 0; i < pixels.size(); ++i) {
        pixels[i] = static_cast<std::uint8_t>(i * 37 + 11);
    }
    return Image(std::move(pixels), width, height, channels, 8);
}

Image Decode(const Bytes& encoded) {
    return Image::LoadFromMemory(encoded.data(), encoded.size());
}

TEST(Image, ValidityAndEncodingFollowTheSizeRules) {
    Image sized;
    sized.SetWidth(2);  // gives the image state with the defaults, and no pixels

    const struct {
        const char* name;
        Image image;
        bool valid, encodes;
    } rows[] = {
        {"default", Image(), false, false},
        {"width only", sized, false, false},
        {"exact", Image(Bytes(12), 2, 2, 3, 8), true, true},
        {"one byte short", Image(Bytes(11), 2, 2, 3, 8), false, false},
        {"zero height", Image(Bytes(), 2, 0, 3, 8), false, false},
        {"five channels", Image(Bytes(20), 2, 2, 5, 8), false, false},
        {"sixteen bits", Image(Bytes(24), 2, 2, 3, 16), true, false},
        {"below a byte per sample, no bytes", Image(Bytes(), 2, 2, 3, 4), true, false},
        {"the product wraps at 2^32", Image(Bytes(), 65536, 65536, 1, 8), true, false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(row.image.IsValid(), row.valid);
        EXPECT_EQ(row.image.Encode(ImageFormat::Png).empty(), !row.encodes);
    }
    EXPECT_TRUE(Image().GetPixelData().empty() && sized.GetPixelData().empty());
    EXPECT_TRUE(Pattern(3).Encode(static_cast<ImageFormat>(9)).empty());
    EXPECT_STREQ(GetImageFormatExtension(ImageFormat::Tga), "tga");
    EXPECT_STREQ(GetImageFormatExtension(static_cast<ImageFormat>(7)), "png");
}

TEST(Image, LosslessFormatsRoundTripEveryPixel) {
    const std::pair<ImageFormat, std::vector<std::uint32_t>> formats[] = {
        {ImageFormat::Png, {1, 2, 3, 4}}, {ImageFormat::Bmp, {3, 4}}, {ImageFormat::Tga, {1, 2, 4}}};
    for (const auto& [format, channelCounts] : formats) {
        for (const std::uint32_t channels : channelCounts) {
            SCOPED_TRACE(std::string(GetImageFormatExtension(format)) + std::to_string(channels));
            const Image original = Pattern(channels);
            const Image decoded = Decode(original.Encode(format));
            EXPECT_EQ(decoded.GetWidth(), 5u);
            EXPECT_EQ(decoded.GetHeight(), 3u);
            EXPECT_EQ(decoded.GetChannelCount(), channels);
            EXPECT_EQ(decoded.GetPixelData(), original.GetPixelData());
        }
    }
}

TEST(Image, JpegDropsAlphaAndKeepsTheColour) {
    Bytes pixels;
    for (int i = 0; i < 16 * 8; ++i) {
        pixels.insert(pixels.end(), {200, 100, 50, 0});
    }
    const Image decoded = Decode(Image(std::move(pixels), 16, 8, 4, 8).Encode(ImageFormat::Jpg));
    ASSERT_TRUE(decoded.IsValid());
    EXPECT_EQ(decoded.GetWidth(), 16u);
    EXPECT_EQ(decoded.GetChannelCount(), 3u);
    // Lossy, but a flat colour survives closely; dropping any byte but the fourth would show.
    EXPECT_NEAR(decoded.GetPixelData()[0], 200, 4);
    EXPECT_NEAR(decoded.GetPixelData()[1], 100, 4);
    EXPECT_NEAR(decoded.GetPixelData()[2], 50, 4);
}

TEST(Image, BadBytesAndFilesGiveAnEmptyImage) {
    const std::filesystem::path folder = std::filesystem::temp_directory_path() /
                                         ("VantelImageTests-" + std::to_string(std::random_device{}()));
    std::filesystem::create_directories(folder);
    const auto write = [&](const char* name, const Bytes& bytes) {
        std::ofstream(folder / name, std::ios::binary)
            .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
        return (folder / name).string();
    };
    const Image original = Pattern(4);
    const Bytes png = original.Encode(ImageFormat::Png);
    const Bytes cut(png.begin(), png.end() - 20);
    // A text chunk after the header, longer than the decoder's buffer, so that it is skipped in the file.
    Bytes text{0, 0, 1, 44, 't', 'E', 'X', 't'};
    text.resize(text.size() + 300 + 4, 'a');  // 300 bytes of text and a CRC the decoder does not check
    Bytes annotated = png;
    annotated.insert(annotated.begin() + 33, text.begin(), text.end());

    EXPECT_EQ(Image::LoadFromFile(write("whole.png", png)).GetPixelData(), original.GetPixelData());
    EXPECT_EQ(Image::LoadFromFile(write("text.png", annotated)).GetPixelData(), original.GetPixelData());
    EXPECT_FALSE(Image::LoadFromFile(write("cut.png", cut)).IsValid());
    EXPECT_FALSE(Image::LoadFromFile(write("empty.png", {})).IsValid());
    EXPECT_FALSE(Image::LoadFromFile((folder / "missing.png").string()).IsValid());
    EXPECT_FALSE(Image::LoadFromFile(folder.string()).IsValid());
    EXPECT_FALSE(Decode(cut).IsValid());
    EXPECT_FALSE(Decode(Bytes{'n', 'o', 't', ' ', 'a', 'n', ' ', 'i', 'm', 'a', 'g', 'e'}).IsValid());
    EXPECT_FALSE(Image::LoadFromMemory(nullptr, png.size()).IsValid());
    EXPECT_FALSE(Image::LoadFromMemory(png.data(), 0).IsValid());
    std::filesystem::remove_all(folder);
}

TEST(Image, CopiesShareThePixelsUntilOneGetsNewOnes) {
    const Image original = Pattern(3);
    Image copy = original;
    EXPECT_EQ(copy.GetPixelData().data(), original.GetPixelData().data());
    const Bytes black(45, 0);
    copy.SetPixelData(black);
    EXPECT_EQ(original.GetPixelData(), Pattern(3).GetPixelData());
    EXPECT_EQ(copy.GetPixelData(), black);
    const Image& same = copy;
    copy = same;
    EXPECT_EQ(copy.GetPixelData(), black);
    copy = original;
    EXPECT_EQ(copy.GetPixelData().data(), original.GetPixelData().data());
}

}  // namespace
}  // namespace Vantel
