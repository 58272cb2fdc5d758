// ImageFilters.h: the pixel work of the image operators, as plain functions that may run on any thread.
#pragma once

#include <cstdint>

#include <Vantel/Support/Image.h>

namespace VantelStandard {

enum class BlurMode { Box, Gaussian };

// The radius beyond which a blur does not reach, in pixels; larger radii are taken as this.
constexpr double kMaxBlurRadius = 256.0;
// The largest width or height Resize makes.
constexpr std::int64_t kMaxImageSize = 16384;

// True for the images these filters take: valid, with 8 bits per channel.
bool IsProcessable(const Vantel::Image& image);

// Box: the mean of the (2r+1)-pixel square around each pixel, r the radius rounded. Gaussian: a gaussian of
// standard deviation radius / 2, reaching out three of them. Edges repeat the border pixels; every channel
// (alpha too) is blurred alike. A radius that gives no neighbours returns the image as it is.
Vantel::Image Blur(const Vantel::Image& image, BlurMode mode, double radius);

// Resamples with a tent filter that widens when shrinking, so that a reduction averages rather than skips.
Vantel::Image Resize(const Vantel::Image& image, std::uint32_t width, std::uint32_t height);

// 255 minus each colour channel; the alpha of a two- or four-channel image is kept.
Vantel::Image Invert(const Vantel::Image& image);

}  // namespace VantelStandard
