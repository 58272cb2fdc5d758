#include "NumberData.h"

#include <memory>

#include <Vantel/Objects/ObjectType.h>

namespace VantelStandard {

using Vantel::ObjectType;

// The Type() functions are defined here, not inline, so that their statics belong to this library and go away
// with it when it is unloaded.
// Values are made by operators, never by name, so there is no factory.
VANTEL_DEFINE_OBJECT_TYPE_NO_FACTORY(NumberData, Data, "Standard.NumberData")

VANTEL_DEFINE_OBJECT_TYPE(NumberOutput, DataOutput, "Standard.NumberOutput")

void NumberOutput::Write(double value) {
    const auto* current = dynamic_cast<const NumberData*>(GetData().get());
    if (current != nullptr && current->GetValue() == value) {
        return;
    }
    Activate(pool.Make(value));
}

NumberInput::NumberInput() : NumberInput(nullptr, "") {}

NumberInput::NumberInput(Vantel::Operator* op, std::string_view name) : DataInput(op, name) {
    SetAcceptedOutputType(NumberOutput::Type());
}

VANTEL_DEFINE_OBJECT_TYPE(NumberInput, DataInput, "Standard.NumberInput")

std::optional<double> NumberInput::GetNumber() const {
    const auto* number = dynamic_cast<const NumberData*>(GetData().get());
    if (number == nullptr) {
        return std::nullopt;
    }
    return number->GetValue();
}

}  // namespace VantelStandard
