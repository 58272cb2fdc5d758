// Image.h: a picture as plain pixel bytes, decoded from and encoded to common file formats.
//
//   Image photo = Image::LoadFromFile("photo.jpg");                // empty when the file cannot be decoded
//   if (photo.IsValid()) { std::vector<std::uint8_t> png = photo.Encode(ImageFormat::Png); }
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include <Vantel/Export.h>

namespace Vantel {

// The encodings Encode can write, with fixed numeric values.
enum class ImageFormat : int {
    Png = 0,
    Jpg = 1,
    Bmp = 2,
    Tga = 3,
};

// Image
//
// A value: pixel bytes (rows top to bottom, channels interleaved), width, height, channel count and bits per
// channel. Copies are cheap because they share the pixel bytes, which are never changed in place:
// SetPixelData installs new ones. So a copy may be read on one thread while the original gets new pixels on
// another; a single Image is not to be changed and read on two threads at once. A default image has no state
// and reads as width 0, height 0, 3 channels, 8 bits and no pixels; the first setter gives it state with
// those values.
class VANTEL_API Image {
public:
    Image();
    Image(std::vector<std::uint8_t>&& pixels, std::uint32_t width, std::uint32_t height,
          std::uint32_t channelCount, std::uint32_t bitsPerChannel);
    Image(const std::vector<std::uint8_t>& pixels, std::uint32_t width, std::uint32_t height,
          std::uint32_t channelCount, std::uint32_t bitsPerChannel);
    Image(const Image& other);
    Image& operator=(const Image& other);
    // The moved-from image is left without state, like a default one.
    Image(Image&& other) noexcept;
    Image& operator=(Image&& other) noexcept;
    ~Image();

    // Decodes a PNG, JPEG, BMP, TGA (or other format the decoder knows) file at 8 bits per channel, keeping
    // the file's channel count. An empty image when the file is missing or cannot be decoded; throws
    // std::filesystem::filesystem_error only when asking whether the file exists fails.
    static Image LoadFromFile(const std::string& path);
    // As LoadFromFile, from bytes in memory. An empty image for null data, 0 bytes, more than INT_MAX bytes
    // or anything the decoder refuses. Never throws.
    static Image LoadFromMemory(const unsigned char* data, std::size_t size);

    // The encoded file. Empty unless the image has 1 to 4 channels of exactly 8 bits, non-zero width and
    // height, and width x height x channels pixel bytes; empty as well for an unknown format, a failing
    // encoder, or pixels near 2 GiB and above, which the encoder cannot address. JPEG is written at quality
    // 90 and without alpha (the fourth channel is dropped). Never throws, never logs.
    std::vector<std::uint8_t> Encode(ImageFormat format) const;

    // True when width and height are not 0, there are 1 to 4 channels, and the pixel bytes number channels x
    // (bits per channel / 8, rounded down) x width x height, computed in wrapping 32-bit arithmetic.
    bool IsValid() const;

    std::uint32_t GetWidth() const;
    std::uint32_t GetHeight() const;
    std::uint32_t GetChannelCount() const;
    std::uint32_t GetBitsPerChannel() const;
    const std::vector<std::uint8_t>& GetPixelData() const;

    // Each setter changes its one field only: a new width does not resize the pixels.
    void SetWidth(std::uint32_t width);
    void SetHeight(std::uint32_t height);
    void SetChannelCount(std::uint32_t channelCount);
    void SetBitsPerChannel(std::uint32_t bitsPerChannel);
    void SetPixelData(std::vector<std::uint8_t> pixels);

private:
    class Implementation;
    Implementation& State();  // creates the state on first use

    std::unique_ptr<Implementation> implementation;
};

// "png", "jpg", "bmp" or "tga"; "png" for a value outside ImageFormat.
VANTEL_API const char* GetImageFormatExtension(ImageFormat format);

}  // namespace Vantel
