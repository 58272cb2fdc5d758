#include "ImageFilters.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

namespace VantelStandard {

using Vantel::Image;

namespace {

// For each output position of a pass: the source positions it reads (clamped to the edge) and their weights.
struct Tap {
    std::uint32_t source;
    float weight;
};
using Taps = std::vector<std::vector<Tap>>;

std::uint8_t ToByte(float value) {
    return static_cast<std::uint8_t>(std::clamp(std::lround(value), 0L, 255L));
}

// One pass along rows (`horizontal`) or columns, from `in` (inWidth x inHeight) to `out`, whose extent along
// the pass is taps.size() and across it the same as the input's.
void Convolve(const std::vector<float>& in, std::uint32_t inWidth, std::uint32_t inHeight,
              std::uint32_t channels, const Taps& taps, bool horizontal, std::vector<float>& out) {
    const std::size_t outWidth = horizontal ? taps.size() : inWidth;
    const std::size_t outHeight = horizontal ? inHeight : taps.size();
    out.assign(outWidth * outHeight * channels, 0.0f);
    for (std::size_t y = 0; y < outHeight; ++y) {
        for (std::size_t x = 0; x < outWidth; ++x) {
            float* target = &out[(y * outWidth + x) * channels];
            for (const Tap& tap : taps[horizontal ? x : y]) {
                const std::size_t sx = horizontal ? tap.source : x;
                const std::size_t sy = horizontal ? y : tap.source;
                const float* source = &in[(sy * inWidth + sx) * channels];
                for (std::uint32_t c = 0; c < channels; ++c) {
                    target[c] += source[c] * tap.weight;
                }
            }
        }
    }
}

// The same kernel (odd size, centred) at every position of an axis of `size` pixels.
Taps KernelTaps(const std::vector<float>& kernel, std::uint32_t size) {
    const auto half = static_cast<std::int64_t>(kernel.size() / 2);
    Taps taps(size);
    for (std::int64_t i = 0; i < static_cast<std::int64_t>(size); ++i) {
        for (std::int64_t k = -half; k <= half; ++k) {
            const auto source = static_cast<std::uint32_t>(std::clamp<std::int64_t>(i + k, 0, size - 1));
            taps[i].push_back({source, kernel[k + half]});
        }
    }
    return taps;
}

// Tent weights from a source axis of `from` pixels to `to` pixels, each position's weights summing to 1.
Taps ResampleTaps(std::uint32_t from, std::uint32_t to) {
    const double scale = static_cast<double>(from) / to;
    const double support = std::max(1.0, scale);
    Taps taps(to);
    for (std::uint32_t i = 0; i < to; ++i) {
        const double center = (i + 0.5) * scale - 0.5;
        const auto first = static_cast<std::int64_t>(std::ceil(center - support));
        const auto last = static_cast<std::int64_t>(std::floor(center + support));
        double sum = 0.0;
        for (std::int64_t s = first; s <= last; ++s) {
            const double weight = 1.0 - std::abs(s - center) / support;
            if (weight <= 0.0) {
                continue;
            }
            const auto source = static_cast<std::uint32_t>(std::clamp<std::int64_t>(s, 0, from - 1));
            taps[i].push_back({source, static_cast<float>(weight)});
            sum += weight;
        }
        for (Tap& tap : taps[i]) {
            tap.weight = static_cast<float>(tap.weight / sum);
        }
    }
    return taps;
}

std::vector<float> ToFloats(const Image& image) {
    const std::vector<std::uint8_t>& bytes = image.GetPixelData();
    return {bytes.begin(), bytes.end()};
}

Image FromFloats(const std::vector<float>& values, std::uint32_t width, std::uint32_t height,
                 std::uint32_t channels) {
    std::vector<std::uint8_t> bytes(values.size());
    std::transform(values.begin(), values.end(), bytes.begin(), ToByte);
    return Image(std::move(bytes), width, height, channels, 8);
}

Image Separable(const Image& image, const Taps& horizontal, const Taps& vertical) {
    const std::uint32_t channels = image.GetChannelCount();
    std::vector<float> rows;
    Convolve(ToFloats(image), image.GetWidth(), image.GetHeight(), channels, horizontal, true, rows);
    const auto width = static_cast<std::uint32_t>(horizontal.size());
    std::vector<float> result;
    Convolve(rows, width, image.GetHeight(), channels, vertical, false, result);
    return FromFloats(result, width, static_cast<std::uint32_t>(vertical.size()), channels);
}

}  // namespace

bool IsProcessable(const Image& image) {
    return image.IsValid() && image.GetBitsPerChannel() == 8;
}

Image Blur(const Image& image, BlurMode mode, double radius) {
    radius = std::min(radius, kMaxBlurRadius);
    if (!(radius > 0.0)) {  // NaN included
        return image;
    }
    std::vector<float> kernel;
    if (mode == BlurMode::Box) {
        const auto reach = static_cast<std::size_t>(std::lround(radius));
        kernel.assign(2 * reach + 1, 1.0f / static_cast<float>(2 * reach + 1));
    } else {
        const double sigma = radius / 2.0;
        const auto reach = static_cast<std::int64_t>(std::ceil(3.0 * sigma));
        double sum = 0.0;
        for (std::int64_t k = -reach; k <= reach; ++k) {
            kernel.push_back(static_cast<float>(std::exp(-(k * k) / (2.0 * sigma * sigma))));
            sum += kernel.back();
        }
        for (float& weight : kernel) {
            weight = static_cast<float>(weight / sum);
        }
    }
    if (kernel.size() == 1) {
        return image;
    }
    return Separable(image, KernelTaps(kernel, image.GetWidth()), KernelTaps(kernel, image.GetHeight()));
}

Image Resize(const Image& image, std::uint32_t width, std::uint32_t height) {
    return Separable(image, ResampleTaps(image.GetWidth(), width), ResampleTaps(image.GetHeight(), height));
}

Image Invert(const Image& image) {
    const std::uint32_t channels = image.GetChannelCount();
    const bool hasAlpha = channels == 2 || channels == 4;
    std::vector<std::uint8_t> bytes = image.GetPixelData();
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        if (!hasAlpha || i % channels != channels - 1) {
            bytes[i] = static_cast<std::uint8_t>(255 - bytes[i]);
        }
    }
    return Image(std::move(bytes), image.GetWidth(), image.GetHeight(), channels, 8);
}

}  // namespace VantelStandard
