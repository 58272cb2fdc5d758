#include <Vantel/Parameters/VectorIntParameter.h>

#include <cstdint>
#include <string>
#include <vector>

#include <Vantel/Objects/ObjectType.h>

#include "Parameters/ValueParameterSupport.h"

namespace Vantel {

template <int N>
class VectorIntParameter<N>::Implementation {
public:
    ValueType value{0};
};

template <int N>
VectorIntParameter<N>::VectorIntParameter() : VectorIntParameter(nullptr, "", ValueType(0)) {}

template <int N>
VectorIntParameter<N>::VectorIntParameter(ParameterScope scope, std::string_view name, const ValueType& value)
    : Parameter(scope, name), implementation(std::make_unique<Implementation>()) {
    implementation->value = value;
}

template <int N>
VectorIntParameter<N>::~VectorIntParameter() = default;

template <int N>
const ObjectType* VectorIntParameter<N>::Type() {
    static const ObjectType type("Vantel.Vector" + std::to_string(N) + "IntParameter", Parameter::Type(),
                                 MakeFactory<VectorIntParameter<N>>());
    return &type;
}

template <int N>
const ObjectType* VectorIntParameter<N>::GetType() const {
    return Type();
}

template <int N>
const typename VectorIntParameter<N>::ValueType& VectorIntParameter<N>::Value() const {
    return implementation->value;
}

template <int N>
void VectorIntParameter<N>::SetValue(const ValueType& value) {
    if (value == implementation->value) {
        return;
    }
    nlohmann::json previous = ValueParameterSupport::PreviousValue(*this);
    implementation->value = value;
    MarkChanged(std::move(previous));
}

template <int N>
VectorIntParameter<N>& VectorIntParameter<N>::operator=(const ValueType& value) {
    SetValue(value);
    return *this;
}

template <int N>
void VectorIntParameter<N>::SetFromData(const ParameterData& data) {
    const std::vector<std::int64_t>& ints = data.GetInts();
    if (ints.empty()) {
        return;
    }
    using ValueParameterSupport::ClampToInt32;
    ValueType value = implementation->value;
    if (ints.size() == 1) {
        value = ValueType(ClampToInt32(ints[0]));
    } else {
        for (std::size_t i = 0; i < std::min<std::size_t>(ints.size(), N); ++i) {
            value[static_cast<int>(i)] = ClampToInt32(ints[i]);
        }
    }
    SetValue(value);
}

template <int N>
nlohmann::json VectorIntParameter<N>::SerializeValue() const {
    nlohmann::json array = nlohmann::json::array();
    for (int i = 0; i < N; ++i) {
        array.push_back(implementation->value[i]);
    }
    return array;
}

template <int N>
void VectorIntParameter<N>::DeserializeValue(const nlohmann::json& value) {
    ValueType read(0);
    ValueParameterSupport::ReadArrayElements(value, N, [&](std::size_t i, const nlohmann::json& element) {
        read[static_cast<int>(i)] =
            ValueParameterSupport::ClampToInt32(ValueParameterSupport::ReadInt64(element));
    });
    SetValue(read);
}

template <int N>
int VectorIntParameter<N>::GetComponentCount() const {
    return N;
}

template <int N>
void VectorIntParameter<N>::SetComponent(int component, double value) {
    if (component < 0 || component >= N) {
        return;
    }
    const int rounded = ValueParameterSupport::RoundToInt32(value);
    int& stored = implementation->value[component];
    if (stored == rounded) {
        return;
    }
    const int previous = stored;
    stored = rounded;
    MarkComponentChanged(component, previous, rounded);
}

template <int N>
ParameterData VectorIntParameter<N>::BuildData() const {
    std::vector<std::int64_t> ints(N);
    for (int i = 0; i < N; ++i) {
        ints[i] = implementation->value[i];
    }
    return ParameterData(ints);
}

template class VectorIntParameter<2>;
template class VectorIntParameter<3>;
template class VectorIntParameter<4>;

}  // namespace Vantel
