// ImageData.h: the Image data type: a picture (Vantel::Image) handed from operator to operator.
#pragma once

#include <string_view>
#include <utility>

#include <Vantel/Operators/Data.h>
#include <Vantel/Operators/DataInput.h>
#include <Vantel/Operators/DataOutput.h>
#include <Vantel/Operators/DataPool.h>
#include <Vantel/Support/Image.h>

namespace VantelStandard {

// Never changed after construction, so its image may be copied out on any thread.
class ImageData : public Vantel::Data {
public:
    explicit ImageData(Vantel::Image image) : image(std::move(image)) {}

    VANTEL_DECLARE_OBJECT_TYPE(ImageData);

    const Vantel::Image& GetImage() const { return image; }
    const Vantel::Image* GetPreviewImage() const override { return &image; }

private:
    const Vantel::Image image;
};

class ImageOutput : public Vantel::DataOutput {
public:
    ImageOutput() = default;
    ImageOutput(Vantel::Operator* op, std::string_view name) : DataOutput(op, name) {}

    VANTEL_DECLARE_OBJECT_TYPE(ImageOutput);

    void Write(Vantel::Image image);

private:
    // The value's own block is reused; its pixels are the image handed in.
    Vantel::DataPool<ImageData> pool;
};

// Accepts only image outputs.
class ImageInput : public Vantel::DataInput {
public:
    ImageInput();
    ImageInput(Vantel::Operator* op, std::string_view name);

    VANTEL_DECLARE_OBJECT_TYPE(ImageInput);

    // Null when the input holds no image.
    const Vantel::Image* GetImage() const;
};

}  // namespace VantelStandard
