#include "MathOperators.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include <Vantel/Execution/ExecutionContext.h>
#include <Vantel/Objects/ObjectType.h>

namespace VantelStandard {

using Vantel::ObjectType;

namespace {

// Written by the operator, read through connections; never saved or undone.
void MakeOutput(Vantel::Parameter& parameter) {
    parameter.SetParameterFlag(Vantel::ParameterFlag::Output, true);
    parameter.SetTransient();
}

void Publish(double result, Vantel::FloatParameter& value, NumberOutput& output) {
    if (value.Value() != result) {
        value = result;
    }
    output.Write(result);
}

}  // namespace

double ApplyArithmetic(ArithmeticOperation operation, double a, double b) {
    switch (operation) {
        case ArithmeticOperation::Add:
            return a + b;
        case ArithmeticOperation::Subtract:
            return a - b;
        case ArithmeticOperation::Multiply:
            return a * b;
        case ArithmeticOperation::Divide:
            return b == 0.0 ? 0.0 : a / b;
        case ArithmeticOperation::Min:
            return std::min(a, b);
        case ArithmeticOperation::Max:
            return std::max(a, b);
        case ArithmeticOperation::Power: {
            const double power = std::pow(a, b);
            return std::isfinite(power) ? power : 0.0;
        }
    }
    return 0.0;
}

double EvaluateWaveform(Waveform waveform, double position) {
    const double cycle = position - std::floor(position);
    switch (waveform) {
        case Waveform::Sine:
            return std::sin(2.0 * std::numbers::pi * cycle);
        case Waveform::Triangle:
            if (cycle < 0.25) {
                return 4.0 * cycle;
            }
            return cycle < 0.75 ? 2.0 - 4.0 * cycle : 4.0 * cycle - 4.0;
        case Waveform::Saw:
            // Shifted by half a cycle so that it rises through 0 at the start like the others.
            return cycle < 0.5 ? 2.0 * cycle : 2.0 * cycle - 2.0;
        case Waveform::Square:
            return cycle < 0.5 ? 1.0 : -1.0;
    }
    return 0.0;
}

// ---- Arithmetic ----

ArithmeticOperator::ArithmeticOperator() {
    operation.SetPossibleValues({"add", "subtract", "multiply", "divide", "min", "max", "power"},
                                {"Add", "Subtract", "Multiply", "Divide", "Min", "Max", "Power"});
    operation = "add";
    MakeOutput(value);
}

VANTEL_DEFINE_OBJECT_TYPE(ArithmeticOperator, Operator, "Standard.Math.Arithmetic")

void ArithmeticOperator::Execute(Vantel::ExecutionContext&) {
    // An unknown operation (from a project of another version) adds.
    const auto chosen = static_cast<ArithmeticOperation>(operation.GetIndexOr(0));
    Publish(ApplyArithmetic(chosen, a.GetNumber().value_or(valueA.Value()),
                            b.GetNumber().value_or(valueB.Value())),
            value, result);
}

// ---- Oscillator ----

OscillatorOperator::OscillatorOperator() {
    waveform.SetPossibleValues({"sine", "triangle", "saw", "square"}, {"Sine", "Triangle", "Saw", "Square"});
    waveform = "sine";
    MakeOutput(value);
}

VANTEL_DEFINE_OBJECT_TYPE(OscillatorOperator, Operator, "Standard.Math.Oscillator")

void OscillatorOperator::Execute(Vantel::ExecutionContext& context) {
    const auto shape = static_cast<Waveform>(waveform.GetIndexOr(0));
    const double position = context.GetTime() * frequency.Value() + phase.Value();
    Publish(offset.Value() + amplitude.Value() * EvaluateWaveform(shape, position), value, signal);
}

// ---- Counter ----

CounterOperator::CounterOperator() {
    mode.SetPossibleValues({"frames", "triggers"}, {"Frames", "Triggers"});
    mode = "frames";
    MakeOutput(value);
}

VANTEL_DEFINE_OBJECT_TYPE(CounterOperator, Operator, "Standard.Math.Counter")

bool CounterOperator::Outdated() const {
    return mode.GetIndex() == 0 || Operator::Outdated();
}

void CounterOperator::Execute(Vantel::ExecutionContext&) {
    if (!started || reset.IsTriggered()) {
        // A reset wins over a pulse in the same frame: the count shows Start.
        current = start.Value();
        started = true;
    } else if (mode.GetIndex() == 0 || pulse.IsTriggered()) {
        current += step.Value();
    }
    const double range = limit.Value() - start.Value();
    if (wrap.Value() && range > 0.0) {
        current = start.Value() + std::fmod(current - start.Value(), range);
        if (current < start.Value()) {
            current += range;
        }
    }
    Publish(current, value, count);
}

}  // namespace VantelStandard
