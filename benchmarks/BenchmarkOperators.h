// BenchmarkOperators.h: the two operator types that the benchmarks build their large graphs from.
//
//   auto source = std::make_unique<Vantel::Benchmarks::SourceOperator>();
//   graph.AddDataConnection({&source->out, &process->in});
#pragma once

#include <algorithm>
#include <cmath>
#include <memory>

#include <Vantel/Execution/ExecutionContext.h>
#include <Vantel/Objects/ObjectType.h>
#include <Vantel/Objects/TypeLibrary.h>
#include <Vantel/Operators/Data.h>
#include <Vantel/Operators/DataInput.h>
#include <Vantel/Operators/DataOutput.h>
#include <Vantel/Operators/DataPool.h>
#include <Vantel/Operators/Operator.h>
#include <Vantel/Parameters/FloatParameter.h>

namespace Vantel::Benchmarks {

class ValueData : public Data {
public:
    explicit ValueData(double value) : value(value) {}
    const double value;
};

// Publishes a new value each time it runs, from a pool.
class SourceOperator : public Operator {
public:
    FloatParameter frequency{this, "Frequency", 1.0};
    FloatParameter amplitude{this, "Amplitude", 1.0};
    FloatParameter phase{this, "Phase", 0.0};
    DataOutput out{this, "Out"};
    DataPool<ValueData> values;

    VANTEL_OBJECT_TYPE(SourceOperator, Operator, "Vantel.Benchmark.Source");
    void Execute(ExecutionContext& context) override {
        const double angle = frequency.Value() * context.GetTime() + phase.Value();
        out.Activate(values.Make(amplitude.Value() * std::sin(angle)));
    }
};

// Out = min(In * Gain + Offset, Limit), a new value each time it runs.
class ProcessOperator : public Operator {
public:
    DataInput in{this, "In"};
    FloatParameter gain{this, "Gain", 1.0};
    FloatParameter offset{this, "Offset", 0.0};
    FloatParameter limit{this, "Limit", 1e6};
    DataOutput out{this, "Out"};
    DataPool<ValueData> values;

    VANTEL_OBJECT_TYPE(ProcessOperator, Operator, "Vantel.Benchmark.Process");
    void Execute(ExecutionContext&) override {
        const auto* data = static_cast<const ValueData*>(in.GetData().get());
        const double value = (data != nullptr ? data->value : 0.0) * gain.Value() + offset.Value();
        out.Activate(values.Make(std::min(value, limit.Value())));
    }
};

// The core types and the two above, registered once per program.
inline void RegisterBenchmarkTypes() {
    static const bool registered = [] {
        RegisterCoreTypes();
        TypeLibrary::Get()->RegisterType(SourceOperator::Type());
        TypeLibrary::Get()->RegisterType(ProcessOperator::Type());
        return true;
    }();
    static_cast<void>(registered);
}

}  // namespace Vantel::Benchmarks
