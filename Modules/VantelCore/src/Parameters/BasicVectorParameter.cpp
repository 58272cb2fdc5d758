#include <Vantel/Parameters/BasicVectorParameter.h>

#include <cstdint>
#include <string>
#include <vector>

#include <Vantel/Objects/ObjectType.h>

#include "Parameters/ValueParameterSupport.h"
#include "Support/SameValue.h"

namespace Vantel {
namespace {

// How each scalar reads and writes what the vector exchanges with data, JSON and single-component writes;
// everything else is the same for both.
template <typename Scalar>
struct ScalarPolicy;

template <>
struct ScalarPolicy<double> {
    using Number = double;  // what ParameterData holds for it
    static constexpr const char* kTypeSuffix = "Parameter";
    static const std::vector<double>& Numbers(const ParameterData& data) { return data.GetFloats(); }
    static double FromNumber(double number) { return number; }
    static double FromJson(const nlohmann::json& element) { return element.get<double>(); }
    static double FromComponentWrite(double value) { return value; }
};

template <>
struct ScalarPolicy<int> {
    using Number = std::int64_t;
    static constexpr const char* kTypeSuffix = "IntParameter";
    static const std::vector<std::int64_t>& Numbers(const ParameterData& data) { return data.GetInts(); }
    static int FromNumber(std::int64_t number) { return ValueParameterSupport::ClampToInt32(number); }
    static int FromJson(const nlohmann::json& element) { return ValueParameterSupport::ReadInt32(element); }
    static int FromComponentWrite(double value) { return ValueParameterSupport::RoundToInt32(value); }
};

}  // namespace

template <typename Scalar, int N>
class BasicVectorParameter<Scalar, N>::Implementation {
public:
    ValueType value{Scalar(0)};
};

template <typename Scalar, int N>
BasicVectorParameter<Scalar, N>::BasicVectorParameter()
    : BasicVectorParameter(nullptr, "", ValueType(Scalar(0))) {}

template <typename Scalar, int N>
BasicVectorParameter<Scalar, N>::BasicVectorParameter(ParameterScope scope, std::string_view name,
                                                      const ValueType& value)
    : Parameter(scope, name), implementation(std::make_unique<Implementation>()) {
    implementation->value = value;
}

template <typename Scalar, int N>
BasicVectorParameter<Scalar, N>::~BasicVectorParameter() = default;

template <typename Scalar, int N>
const ObjectType* BasicVectorParameter<Scalar, N>::Type() {
    // By hand: the name is computed, and the class is a template, which the type macros cannot take.
    static_assert(Detail::kNamesItsTypedBase<BasicVectorParameter, Parameter>);
    static const ObjectType& type =
        ObjectType::Declare("Vantel.Vector" + std::to_string(N) + ScalarPolicy<Scalar>::kTypeSuffix,
                            Parameter::Type(), MakeFactory<BasicVectorParameter>(), {});
    return &type;
}

template <typename Scalar, int N>
const ObjectType* BasicVectorParameter<Scalar, N>::GetType() const {
    return Type();
}

template <typename Scalar, int N>
auto BasicVectorParameter<Scalar, N>::Value() const -> const ValueType& {
    return implementation->value;
}

template <typename Scalar, int N>
void BasicVectorParameter<Scalar, N>::SetValue(const ValueType& value) {
    if (IsSameValue(value, implementation->value)) {
        return;
    }
    nlohmann::json previous = ValueParameterSupport::PreviousValue(*this);
    implementation->value = value;
    MarkChanged(std::move(previous));
}

template <typename Scalar, int N>
BasicVectorParameter<Scalar, N>& BasicVectorParameter<Scalar, N>::operator=(const ValueType& value) {
    SetValue(value);
    return *this;
}

template <typename Scalar, int N>
void BasicVectorParameter<Scalar, N>::SetFromData(const ParameterData& data) {
    using Policy = ScalarPolicy<Scalar>;
    const auto& numbers = Policy::Numbers(data);
    if (numbers.empty()) {
        return;
    }
    ValueType value = implementation->value;
    if (numbers.size() == 1) {
        value = ValueType(Policy::FromNumber(numbers[0]));
    } else {
        for (std::size_t i = 0; i < std::min<std::size_t>(numbers.size(), N); ++i) {
            value[static_cast<int>(i)] = Policy::FromNumber(numbers[i]);
        }
    }
    SetValue(value);
}

template <typename Scalar, int N>
nlohmann::json BasicVectorParameter<Scalar, N>::SerializeValue() const {
    nlohmann::json array = nlohmann::json::array();
    for (int i = 0; i < N; ++i) {
        array.push_back(implementation->value[i]);
    }
    return array;
}

template <typename Scalar, int N>
void BasicVectorParameter<Scalar, N>::DeserializeValue(const nlohmann::json& value) {
    ValueType read(Scalar(0));
    ValueParameterSupport::ReadArrayElements(value, N, [&](std::size_t i, const nlohmann::json& element) {
        read[static_cast<int>(i)] = ScalarPolicy<Scalar>::FromJson(element);
    });
    SetValue(read);
}

template <typename Scalar, int N>
int BasicVectorParameter<Scalar, N>::GetComponentCount() const {
    return N;
}

template <typename Scalar, int N>
double BasicVectorParameter<Scalar, N>::GetComponent(int component) const {
    if (component < 0 || component >= N) {
        return 0.0;
    }
    return static_cast<double>(implementation->value[component]);
}

template <typename Scalar, int N>
void BasicVectorParameter<Scalar, N>::SetComponent(int component, double value) {
    if (component < 0 || component >= N) {
        return;
    }
    const Scalar next = ScalarPolicy<Scalar>::FromComponentWrite(value);
    Scalar& stored = implementation->value[component];
    if (IsSameValue(stored, next)) {
        return;
    }
    const Scalar previous = stored;
    stored = next;
    MarkComponentChanged(component, previous, next);
}

template <typename Scalar, int N>
ParameterData BasicVectorParameter<Scalar, N>::BuildData() const {
    std::vector<typename ScalarPolicy<Scalar>::Number> numbers(N);
    for (int i = 0; i < N; ++i) {
        numbers[i] = implementation->value[i];
    }
    return ParameterData(numbers);
}

template class BasicVectorParameter<double, 2>;
template class BasicVectorParameter<double, 3>;
template class BasicVectorParameter<double, 4>;
template class BasicVectorParameter<int, 2>;
template class BasicVectorParameter<int, 3>;
template class BasicVectorParameter<int, 4>;

}  // namespace Vantel
