// TestParameters.h: a minimal parameter type for tests of the parameter tree and of recording.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include <Vantel/Objects/Access.h>
#include <Vantel/Objects/ObjectType.h>
#include <Vantel/Operators/OperatorImplementation.h>
#include <Vantel/Parameters/Parameter.h>
#include <Vantel/Parameters/ParameterScope.h>
#include <Vantel/Projects/Transaction.h>
#include <Vantel/Support/Logging.h>

namespace Vantel::Testing {

// An operator that stands alone in a test but records its edits, as a project's root graph does.
inline void JoinModel(Operator& op) {
    Access::GetImplementation(op)->SetProjectRoot(true);
}

// The keys of `objects`, a range of pointers, in its order.
template <typename Objects>
std::vector<std::string> KeysOf(const Objects& objects) {
    std::vector<std::string> keys;
    for (const auto* object : objects) {
        keys.push_back(object->GetKey());
    }
    return keys;
}

// One double, following the setter pattern of real parameters.
class NumberParameter : public Parameter {
public:
    NumberParameter() = default;
    NumberParameter(ParameterScope scope, std::string_view name, double value = 0.0)
        : Parameter(scope, name), value(value) {}

    VANTEL_OBJECT_TYPE(NumberParameter, Parameter, "Vantel.Test.NumberParameter");

    double Value() const { return value; }
    void SetValue(double newValue) {
        if (newValue == value) {
            return;
        }
        nlohmann::json previous = Transaction::IsRecording() ? SerializeValue() : nlohmann::json();
        value = newValue;
        MarkChanged(std::move(previous));
    }
    void SetFromData(const ParameterData& data) override { SetValue(data.GetFloat(0)); }
    nlohmann::json SerializeValue() const override { return value; }
    // A plug-in's parameter may refuse a value with an exception (any text, here) or with an error (null).
    void DeserializeValue(const nlohmann::json& json) override {
        if (json.is_null()) {
            LogError("NumberParameter: null is no number, the value is kept.");
            return;
        }
        SetValue(json.get<double>());
    }
    void SetComponent(int component, double newValue) override {
        if (component != 0 || newValue == value) {
            return;
        }
        const double previous = value;
        value = newValue;
        MarkComponentChanged(0, previous, newValue);
    }

private:
    ParameterData BuildData() const override { return ParameterData(std::vector<double>{value}); }

    double value = 0.0;
};

}  // namespace Vantel::Testing
