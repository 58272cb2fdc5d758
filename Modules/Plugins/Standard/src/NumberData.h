// NumberData.h: the Number data type: one real number handed from operator to operator.
#pragma once

#include <optional>
#include <string_view>

#include <Vantel/Operators/Data.h>
#include <Vantel/Operators/DataInput.h>
#include <Vantel/Operators/DataOutput.h>
#include <Vantel/Operators/DataPool.h>

namespace VantelStandard {

class NumberData : public Vantel::Data {
public:
    explicit NumberData(double value) : value(value) {}

    VANTEL_DECLARE_OBJECT_TYPE(NumberData);

    double GetValue() const { return value; }

private:
    const double value;
};

class NumberOutput : public Vantel::DataOutput {
public:
    NumberOutput() = default;
    NumberOutput(Vantel::Operator* op, std::string_view name) : DataOutput(op, name) {}

    VANTEL_DECLARE_OBJECT_TYPE(NumberOutput);

    // Writes a new number, or nothing when it equals the number already written, so that a constant keeps
    // the operators downstream idle.
    void Write(double value);

private:
    // A number written every frame reuses the memory of one its readers let go of.
    Vantel::DataPool<NumberData> pool;
};

// Accepts only number outputs.
class NumberInput : public Vantel::DataInput {
public:
    NumberInput();
    NumberInput(Vantel::Operator* op, std::string_view name);

    VANTEL_DECLARE_OBJECT_TYPE(NumberInput);

    // No value when the input holds no number.
    std::optional<double> GetNumber() const;
};

}  // namespace VantelStandard
