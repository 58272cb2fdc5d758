#include "ImageData.h"

#include <memory>

#include <Vantel/Objects/ObjectType.h>

namespace VantelStandard {

using Vantel::ObjectType;

const ObjectType* ImageData::Type() {
    static const ObjectType type("Standard.ImageData", Data::Type(), nullptr);
    return &type;
}

const ObjectType* ImageOutput::Type() {
    static const ObjectType type("Standard.ImageOutput", DataOutput::Type(),
                                 Vantel::MakeFactory<ImageOutput>());
    return &type;
}

void ImageOutput::Write(Vantel::Image image) {
    Activate(std::make_shared<ImageData>(std::move(image)));
}

ImageInput::ImageInput() {
    SetAcceptedOutputType(ImageOutput::Type());
}

ImageInput::ImageInput(Vantel::Operator* op, std::string_view name) : DataInput(op, name) {
    SetAcceptedOutputType(ImageOutput::Type());
}

const ObjectType* ImageInput::Type() {
    static const ObjectType type("Standard.ImageInput", DataInput::Type(), Vantel::MakeFactory<ImageInput>());
    return &type;
}

const Vantel::Image* ImageInput::GetImage() const {
    const auto* data = dynamic_cast<const ImageData*>(GetData().get());
    return data == nullptr ? nullptr : &data->GetImage();
}

}  // namespace VantelStandard
