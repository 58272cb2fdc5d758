// ParameterImplementation.h: the operations that graphs, operators and the runner perform on a parameter.
//
//   Parameter::Implementation& impl = *Access::GetImplementation(parameter);
//   impl.AddIncomingConnection(connection);
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include <Vantel/Export.h>
#include <Vantel/Objects/Access.h>
#include <Vantel/Parameters/Parameter.h>

namespace Vantel {

// Parameter::Implementation
//
// The private block of a parameter. Library code and plug-ins reach it through Access::GetImplementation; its
// data stays private to Parameter.
class VANTEL_API Parameter::Implementation {
public:
    // Beside its operator, apart from the general heap (see Operator::operator new).
    static void* operator new(std::size_t size);
    static void operator delete(void* block, std::size_t size) noexcept;

    explicit Implementation(std::string_view name);

    // Set by operators and graphs on the parameters that a user added.
    void SetAddedByUser(bool addedByUser);

    // The copies of the graph's connections that this parameter takes part in.
    void AddIncomingConnection(const ParameterConnection& connection);
    void AddOutgoingConnection(const ParameterConnection& connection);
    // Drops the copy with these endpoints; false when there is none.
    bool RemoveIncomingConnection(ParameterConnectionEndpoints endpoints);
    bool RemoveOutgoingConnection(ParameterConnectionEndpoints endpoints);
    // Drops, in one pass over each list, every copy whose endpoints `dropped` holds true for; the others keep
    // their order.
    template <typename Dropped>
    void RemoveConnectionsIf(Dropped&& dropped) {
        const auto drop = [&](const ParameterConnection& connection) {
            return dropped(connection.GetEndpoints());
        };
        std::erase_if(incoming, drop);
        std::erase_if(outgoing, drop);
    }

    // Called once the change has been consumed (after a frame, or by the writer).
    void ClearValueChanged() { valueChanged = false; }

private:
    friend class Parameter;

    std::string name;
    bool valueChanged = false;
    mutable ParameterData dataCache;
    mutable bool dataInvalid = true;
    Event<> valueChangedEvent;
    std::vector<ParameterConnection> incoming;
    std::vector<ParameterConnection> outgoing;
    Flags<ParameterFlag> flags = ParameterFlag::MarksOutdated;
    UpdatePolicy updatePolicy = UpdatePolicy::Immediate;
    bool updatePolicySet = false;
    bool addedByUser = false;
};

inline auto& Access::GetImplementation(Parameter& parameter) {
    return parameter.implementation;
}

}  // namespace Vantel
