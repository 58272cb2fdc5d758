#include "NumberData.h"

#include <memory>

#include <Vantel/Objects/ObjectType.h>

namespace VantelStandard {

using Vantel::ObjectType;

// The Type() functions are defined here, not inline, so that their statics belong to this library and go away
// with it when it is unloaded.
const ObjectType* NumberData::Type() {
    // Values are made by operators, never by name, so there is no factory.
    static const ObjectType type("Standard.NumberData", Data::Type(), nullptr);
    return &type;
}

const ObjectType* NumberOutput::Type() {
    static const ObjectType type("Standard.NumberOutput", DataOutput::Type(),
                                 Vantel::MakeFactory<NumberOutput>());
    return &type;
}

void NumberOutput::Write(double value) {
    const auto* current = dynamic_cast<const NumberData*>(GetData().get());
    if (current != nullptr && current->GetValue() == value) {
        return;
    }
    Activate(std::make_shared<NumberData>(value));
}

NumberInput::NumberInput() {
    SetAcceptedOutputType(NumberOutput::Type());
}

NumberInput::NumberInput(Vantel::Operator* op, std::string_view name) : DataInput(op, name) {
    SetAcceptedOutputType(NumberOutput::Type());
}

const ObjectType* NumberInput::Type() {
    static const ObjectType type("Standard.NumberInput", DataInput::Type(),
                                 Vantel::MakeFactory<NumberInput>());
    return &type;
}

std::optional<double> NumberInput::GetNumber() const {
    const auto* number = dynamic_cast<const NumberData*>(GetData().get());
    if (number == nullptr) {
        return std::nullopt;
    }
    return number->GetValue();
}

}  // namespace VantelStandard
