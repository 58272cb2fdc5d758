// The test plug-in: a data type (Sample), a parameter type (Factor) and an operator that uses both (Scale),
// each registered with its documentation, so that the type library's tests can load, use and unload a real
// plug-in. The docs are embedded as string literals: a plug-in that is copied or renamed by a test still
// finds them.
#include <memory>
#include <string_view>

#include <Vantel/Documentation/TypeDocumentation.h>
#include <Vantel/Objects/ObjectType.h>
#include <Vantel/Objects/Plugin.h>
#include <Vantel/Objects/TypeLibrary.h>
#include <Vantel/Operators/Data.h>
#include <Vantel/Operators/DataInput.h>
#include <Vantel/Operators/DataOutput.h>
#include <Vantel/Operators/Operator.h>
#include <Vantel/Parameters/FloatParameter.h>
#include <Vantel/Parameters/ParameterScope.h>
#include <Vantel/Support/Logging.h>

namespace VantelTestPlugin {

using Vantel::ObjectType;

// ---- Types ----

// One number. The Type() functions are defined out of line, so that their types are plain statics of this
// library and go away with it when it is unloaded.
class SampleData : public Vantel::Data {
public:
    explicit SampleData(double value) : value(value) {}

    VANTEL_DECLARE_OBJECT_TYPE(SampleData);

    double GetValue() const { return value; }

private:
    const double value;
};

class SampleOutput : public Vantel::DataOutput {
public:
    SampleOutput() = default;
    SampleOutput(Vantel::Operator* op, std::string_view name) : DataOutput(op, name) {}

    VANTEL_DECLARE_OBJECT_TYPE(SampleOutput);
};

// Accepts only sample outputs.
class SampleInput : public Vantel::DataInput {
public:
    SampleInput() : SampleInput(nullptr, "") {}
    SampleInput(Vantel::Operator* op, std::string_view name) : DataInput(op, name) {
        SetAcceptedOutputType(SampleOutput::Type());
    }

    VANTEL_DECLARE_OBJECT_TYPE(SampleInput);

    // Null when the input holds no sample.
    const SampleData* GetSample() const { return dynamic_cast<const SampleData*>(GetData().get()); }
};

// A float under a type of its own, which a user interface might show as a multiplier.
class FactorParameter : public Vantel::FloatParameter {
public:
    FactorParameter() = default;
    FactorParameter(Vantel::ParameterScope scope, std::string_view name, double value)
        : FloatParameter(scope, name, value) {}

    VANTEL_DECLARE_OBJECT_TYPE(FactorParameter);
};

// Writes the incoming sample times the factor, or nothing when no sample came in.
class ScaleOperator : public Vantel::Operator {
public:
    VANTEL_DECLARE_OBJECT_TYPE(ScaleOperator);

    void Execute(Vantel::ExecutionContext& context) override;

private:
    SampleInput sample{this, "Sample"};
    FactorParameter factor{Vantel::ParameterScope(this), "Factor", 1.0};
    SampleOutput result{this, "Result"};
};

// Values are made by operators, never by name, so there is no factory.
VANTEL_DEFINE_OBJECT_TYPE_NO_FACTORY(SampleData, Data, "TestPlugin.SampleData")

VANTEL_DEFINE_OBJECT_TYPE(SampleOutput, DataOutput, "TestPlugin.SampleOutput")

VANTEL_DEFINE_OBJECT_TYPE(SampleInput, DataInput, "TestPlugin.SampleInput")

VANTEL_DEFINE_OBJECT_TYPE(FactorParameter, FloatParameter, "TestPlugin.FactorParameter")

VANTEL_DEFINE_OBJECT_TYPE(ScaleOperator, Operator, "TestPlugin.Math.Scale")

void ScaleOperator::Execute(Vantel::ExecutionContext&) {
    const SampleData* input = sample.GetSample();
    if (input == nullptr) {
        result.Clear();
        return;
    }
    result.Activate(std::make_shared<SampleData>(input->GetValue() * factor.Value()));
}

// ---- Documentation ----

constexpr std::string_view kSampleDocPath = "Docs/DataTypes/Sample.md";
constexpr std::string_view kSampleDoc = R"(---
type: TestPlugin.Sample
summary: A single number handed from one operator to the next.
tags: [number, value]
---
# Sample

A Sample carries one number. It exists to test plug-in data types: an operator writes it to a Sample output,
and every connected Sample input receives the same value.
)";

constexpr std::string_view kFactorDocPath = "Docs/ParameterTypes/Factor.md";
constexpr std::string_view kFactorDoc = R"(---
type: TestPlugin.FactorParameter
summary: A number that something is multiplied by.
tags: [number, multiplier, scale]
---
# Factor

A Factor holds a number like a [Float](<param:Float>) does, and is shown as a multiplier. It is driven and
saved exactly like a Float.)";  // no line end: the host adds it

constexpr std::string_view kScaleDocPath = "Docs/Operators/Math/Scale.md";
constexpr std::string_view kScaleDoc = R"(---
type: TestPlugin.Math.Scale
summary: Multiplies the incoming sample by a factor.
tags: [multiply, scale, sample]
outputs:
  Result:
    type: Sample
    description: The incoming sample times the factor; nothing while no sample comes in.
inputs:
  Sample:
    type: Sample
    description: The sample to scale.
parameters:
  Factor:
    type: Factor
    description: What the sample is multiplied by.
---
# Scale

Scale multiplies each sample it receives by its [Factor](<param:Factor>) and writes the product.
)";

}  // namespace VantelTestPlugin

// ---- Entry points ----

VANTEL_PLUGIN_EXPORT void VantelPluginLoad() {
    using namespace VantelTestPlugin;
    Vantel::TypeLibrary* library = Vantel::TypeLibrary::Get();
    library->RegisterDataType(Vantel::ParseDataTypeDoc("Sample", SampleOutput::Type(), SampleInput::Type(),
                                                       kSampleDocPath, kSampleDoc));
    library->RegisterParameter(
        Vantel::ParseParameterDoc(FactorParameter::Type(), kFactorDocPath, kFactorDoc));
    library->RegisterOperator(Vantel::ParseOperatorDoc(ScaleOperator::Type(), kScaleDocPath, kScaleDoc));
}

// The tests see that unloading called this entry by the line it writes.
VANTEL_PLUGIN_EXPORT void VantelPluginUnload() {
    Vantel::LogInfo("VantelTestPlugin: unload entry called");
}
