#include "ImageData.h"

#include <memory>

#include <Vantel/Objects/ObjectType.h>

namespace VantelStandard {

using Vantel::ObjectType;

VANTEL_DEFINE_OBJECT_TYPE_NO_FACTORY(ImageData, Data, "Standard.ImageData")

VANTEL_DEFINE_OBJECT_TYPE(ImageOutput, DataOutput, "Standard.ImageOutput")

void ImageOutput::Write(Vantel::Image image) {
    Activate(pool.Make(std::move(image)));
}

ImageInput::ImageInput() : ImageInput(nullptr, "") {}

ImageInput::ImageInput(Vantel::Operator* op, std::string_view name) : DataInput(op, name) {
    SetAcceptedOutputType(ImageOutput::Type());
}

VANTEL_DEFINE_OBJECT_TYPE(ImageInput, DataInput, "Standard.ImageInput")

const Vantel::Image* ImageInput::GetImage() const {
    const auto* data = dynamic_cast<const ImageData*>(GetData().get());
    return data == nullptr ? nullptr : &data->GetImage();
}

}  // namespace VantelStandard
