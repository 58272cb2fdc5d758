// Preview.h: small PNG pictures of data values for the editor, as data URLs.
#pragma once

#include <cstdint>
#include <string>

namespace Vantel {
class Image;
}

namespace VantelHost {

// The longest side of a preview, in pixels: enough to recognise a picture in a node, small enough to send
// many times a second.
constexpr std::uint32_t kPreviewSide = 96;

// "data:image/png;base64,..." of `image` scaled down (nearest pixel) to at most kPreviewSide on its longer
// side; empty for an image that is not valid or not 8 bits per channel.
std::string MakePreview(const Vantel::Image& image);

std::string EncodeBase64(const std::string& bytes);

}  // namespace VantelHost
