// TestOperators.h: small operator types for tests of graphs, runners and projects.
#pragma once

#include <algorithm>
#include <memory>
#include <string_view>
#include <vector>

#include <Vantel/Execution/Clock.h>
#include <Vantel/Execution/ExecutionContext.h>
#include <Vantel/Objects/ObjectType.h>
#include <Vantel/Operators/Data.h>
#include <Vantel/Operators/DataInput.h>
#include <Vantel/Operators/DataOutput.h>
#include <Vantel/Operators/Graph.h>
#include <Vantel/Operators/Operator.h>

#include "Support/TestParameters.h"

namespace Vantel::Testing {

// A clock whose frames all last `step` seconds (the runner asks it once).
class FixedClock : public Clock {
public:
    explicit FixedClock(double step) : step(step) {}
    void Reset() override {}
    double GetFirstFrameDuration() const override { return step; }

private:
    double step;
};

// Adds a new operator of type T (named `name`) to `graph` and returns it.
template <typename T>
T& Add(Graph& graph, std::string_view name = "") {
    auto op = std::make_unique<T>();
    op->SetName(name);
    T& added = *op;
    graph.AddOperator(std::move(op));
    return added;
}

// A number flowing through data ports.
class NumberData : public Data {
public:
    explicit NumberData(double value) : value(value) {}
    const double value;
};

// The value carried by an input, 0 without data.
inline double NumberOf(const DataInput& input) {
    const auto* data = dynamic_cast<const NumberData*>(input.GetData().get());
    return data != nullptr ? data->value : 0.0;
}

// Publishes its "Value" parameter on "Out" each time it runs.
class SourceOperator : public Operator {
public:
    NumberParameter value{this, "Value", 0.0};
    DataOutput out{this, "Out"};
    int runs = 0;

    VANTEL_OBJECT_TYPE(SourceOperator, Operator, "Vantel.Test.Source");
    void Execute(ExecutionContext&) override {
        ++runs;
        out.Activate(std::make_shared<NumberData>(value.Value()));
    }
};

// Out = In + Offset; "Result" (an output parameter) mirrors Out, so parameter connections can leave it.
class AddOperator : public Operator {
public:
    DataInput in{this, "In"};
    NumberParameter offset{this, "Offset", 0.0};
    NumberParameter result{this, "Result", 0.0};
    DataOutput out{this, "Out"};
    int runs = 0;
    double lastFrameTime = -1.0;

    AddOperator() { result.SetParameterFlag(ParameterFlag::Output, true); }
    VANTEL_OBJECT_TYPE(AddOperator, Operator, "Vantel.Test.Add");
    void Execute(ExecutionContext& context) override {
        ++runs;
        lastFrameTime = context.GetTime();
        const double sum = NumberOf(in) + offset.Value();
        result.SetValue(sum);
        out.Activate(std::make_shared<NumberData>(sum));
    }
};

// Adds a parameter "Item" per unit of its structural "Count" at each rebuild (the keys after the first are
// settled, and logged), and then marks its structure dirty again if it `neverSettles`. A run raises the count
// to `countOnRun`.
class CountedOperator : public Operator {
public:
    NumberParameter count{this, "Count", 0.0};
    double countOnRun = 0.0;
    bool neverSettles = false;
    int runs = 0, rebuilds = 0;

    CountedOperator() {
        count.SetParameterFlag(ParameterFlag::Structural, true);
        SetKey("Counted");
    }
    void Execute(ExecutionContext&) override {
        ++runs;
        count.SetValue(std::max(count.Value(), countOnRun));
    }

protected:
    void UpdateStructure() override {
        ++rebuilds;
        while (static_cast<double>(items.size()) < count.Value()) {
            items.push_back(std::make_unique<NumberParameter>(this, "Item"));
        }
        if (neverSettles) {
            Access::GetImplementation(*this)->MarkStructureDirty();
        }
    }

private:
    std::vector<std::unique_ptr<NumberParameter>> items;
};

}  // namespace Vantel::Testing
