#include <Vantel/Parameters/VectorParameter.h>

#include <string>
#include <vector>

#include <Vantel/Objects/ObjectType.h>

#include "Parameters/ValueParameterSupport.h"

namespace Vantel {

template <int N>
class VectorParameter<N>::Implementation {
public:
    ValueType value{0.0};
};

template <int N>
VectorParameter<N>::VectorParameter() : VectorParameter(nullptr, "", ValueType(0.0)) {}

template <int N>
VectorParameter<N>::VectorParameter(ParameterScope scope, std::string_view name, const ValueType& value)
    : Parameter(scope, name), implementation(std::make_unique<Implementation>()) {
    implementation->value = value;
}

template <int N>
VectorParameter<N>::~VectorParameter() = default;

template <int N>
const ObjectType* VectorParameter<N>::Type() {
    static const ObjectType type("Vantel.Vector" + std::to_string(N) + "Parameter", Parameter::Type(),
                                 MakeFactory<VectorParameter<N>>());
    return &type;
}

template <int N>
const ObjectType* VectorParameter<N>::GetType() const {
    return Type();
}

template <int N>
const typename VectorParameter<N>::ValueType& VectorParameter<N>::Value() const {
    return implementation->value;
}

template <int N>
void VectorParameter<N>::SetValue(const ValueType& value) {
    if (value == implementation->value) {
        return;
    }
    nlohmann::json previous = ValueParameterSupport::PreviousValue(*this);
    implementation->value = value;
    MarkChanged(std::move(previous));
}

template <int N>
VectorParameter<N>& VectorParameter<N>::operator=(const ValueType& value) {
    SetValue(value);
    return *this;
}

template <int N>
void VectorParameter<N>::SetFromData(const ParameterData& data) {
    const std::vector<double>& floats = data.GetFloats();
    if (floats.empty()) {
        return;
    }
    ValueType value = implementation->value;
    if (floats.size() == 1) {
        value = ValueType(floats[0]);
    } else {
        for (std::size_t i = 0; i < std::min<std::size_t>(floats.size(), N); ++i) {
            value[static_cast<int>(i)] = floats[i];
        }
    }
    SetValue(value);
}

template <int N>
nlohmann::json VectorParameter<N>::SerializeValue() const {
    nlohmann::json array = nlohmann::json::array();
    for (int i = 0; i < N; ++i) {
        array.push_back(implementation->value[i]);
    }
    return array;
}

template <int N>
void VectorParameter<N>::DeserializeValue(const nlohmann::json& value) {
    ValueType read(0.0);
    ValueParameterSupport::ReadArrayElements(value, N, [&](std::size_t i, const nlohmann::json& element) {
        read[static_cast<int>(i)] = element.get<double>();
    });
    SetValue(read);
}

template <int N>
int VectorParameter<N>::GetComponentCount() const {
    return N;
}

template <int N>
void VectorParameter<N>::SetComponent(int component, double value) {
    if (component < 0 || component >= N) {
        return;
    }
    double& stored = implementation->value[component];
    if (stored == value) {
        return;
    }
    const double previous = stored;
    stored = value;
    MarkComponentChanged(component, previous, value);
}

template <int N>
ParameterData VectorParameter<N>::BuildData() const {
    std::vector<double> floats(N);
    for (int i = 0; i < N; ++i) {
        floats[i] = implementation->value[i];
    }
    return ParameterData(floats);
}

template class VectorParameter<2>;
template class VectorParameter<3>;
template class VectorParameter<4>;

}  // namespace Vantel
