// MathOperators.h: the number operators: Arithmetic, Oscillator and Counter.
#pragma once

#include <Vantel/Operators/Operator.h>
#include <Vantel/Parameters/BoolParameter.h>
#include <Vantel/Parameters/EnumParameter.h>
#include <Vantel/Parameters/FloatParameter.h>
#include <Vantel/Parameters/TriggerParameter.h>

#include "NumberData.h"

namespace VantelStandard {

// The operations of Arithmetic, in the order of its Operation parameter.
enum class ArithmeticOperation { Add, Subtract, Multiply, Divide, Min, Max, Power };

// `a` op `b`. Divide by zero, and a Power that is not a finite real number (0 to a negative power, a negative
// base to a fractional power, an overflow), give 0: a result that drives a parameter must stay a number.
double ApplyArithmetic(ArithmeticOperation operation, double a, double b);

// The waveforms of Oscillator, in the order of its Waveform parameter.
enum class Waveform { Sine, Triangle, Saw, Square };

// One cycle of `waveform` between -1 and 1 at `position` (in cycles; only the fraction counts). Every
// waveform starts a cycle at 0 rising, except Square, which is 1 for the first half and -1 for the second.
double EvaluateWaveform(Waveform waveform, double position);

// Combines two numbers, taken from its inputs or, where an input holds no number, from its parameters.
class ArithmeticOperator : public Vantel::Operator {
public:
    ArithmeticOperator();

    VANTEL_DECLARE_OBJECT_TYPE(ArithmeticOperator);

    void Execute(Vantel::ExecutionContext& context) override;

private:
    NumberInput a{this, "A"};
    NumberInput b{this, "B"};
    Vantel::EnumParameter operation{Vantel::ParameterScope(this), "Operation"};
    Vantel::FloatParameter valueA{Vantel::ParameterScope(this), "Value A", 0.0};
    Vantel::FloatParameter valueB{Vantel::ParameterScope(this), "Value B", 0.0};
    Vantel::FloatParameter value{Vantel::ParameterScope(this), "Value", 0.0};
    NumberOutput result{this, "Result"};
};

// A periodic signal of the frame time; runs in every frame.
class OscillatorOperator : public Vantel::Operator {
public:
    OscillatorOperator();

    VANTEL_DECLARE_OBJECT_TYPE(OscillatorOperator);

    void Execute(Vantel::ExecutionContext& context) override;
    bool Outdated() const override { return true; }

private:
    Vantel::EnumParameter waveform{Vantel::ParameterScope(this), "Waveform"};
    Vantel::FloatParameter frequency{Vantel::ParameterScope(this), "Frequency", 1.0};
    Vantel::FloatParameter amplitude{Vantel::ParameterScope(this), "Amplitude", 1.0};
    Vantel::FloatParameter offset{Vantel::ParameterScope(this), "Offset", 0.0};
    Vantel::FloatParameter phase{Vantel::ParameterScope(this), "Phase", 0.0};
    Vantel::FloatParameter value{Vantel::ParameterScope(this), "Value", 0.0};
    NumberOutput signal{this, "Signal"};
};

// Counts frames or trigger pulses.
class CounterOperator : public Vantel::Operator {
public:
    CounterOperator();

    VANTEL_DECLARE_OBJECT_TYPE(CounterOperator);

    void Execute(Vantel::ExecutionContext& context) override;
    // Counting frames, it runs in every frame.
    bool Outdated() const override;

private:
    Vantel::EnumParameter mode{Vantel::ParameterScope(this), "Mode"};
    Vantel::TriggerParameter pulse{Vantel::ParameterScope(this), "Pulse", false};
    Vantel::TriggerParameter reset{Vantel::ParameterScope(this), "Reset", false};
    Vantel::FloatParameter start{Vantel::ParameterScope(this), "Start", 0.0};
    Vantel::FloatParameter step{Vantel::ParameterScope(this), "Step", 1.0};
    Vantel::BoolParameter wrap{Vantel::ParameterScope(this), "Wrap", false};
    Vantel::FloatParameter limit{Vantel::ParameterScope(this), "Limit", 10.0};
    Vantel::FloatParameter value{Vantel::ParameterScope(this), "Value", 0.0};
    NumberOutput count{this, "Count"};

    // Run state, not saved: a loaded counter starts again from Start.
    double current = 0.0;
    bool started = false;
};

}  // namespace VantelStandard
