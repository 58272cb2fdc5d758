// Parameter.h: the base of every typed value an operator shows to the user.
//
//   class Blur : public Operator {
//       FloatParameter radius{ParameterScope(this), "Radius", 2.0};
//   };
//   blur.radius.GetData().GetFloat(0);     // the value as a ParameterData, built once per change
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json.hpp>

#include <Vantel/Export.h>
#include <Vantel/Objects/Event.h>
#include <Vantel/Operators/ParameterConnection.h>
#include <Vantel/Parameters/ParameterData.h>
#include <Vantel/Parameters/ParameterFlag.h>
#include <Vantel/Parameters/ParameterNode.h>

namespace Vantel {

class ParameterScope;

// Parameter
//
// Owns what every parameter type shares: a name, flags, an update policy, a value-changed mark, a cached
// ParameterData view of the value, the parameter connections it takes part in, and the recording of changes
// for undo. Typed parameters fill in the hooks (BuildData, SetFromData, SetComponent, SerializeValue,
// DeserializeValue). A parameter lives in the tree of its operator: declared ones as members of the operator
// class, user-added ones owned by a group. Destroying it detaches it from its group first. Main thread only;
// even GetData may rebuild its cache.
//
// A setter that changes the value records the change while a transaction records (unless NotUndoable),
// sets the value-changed mark, and fires ValueChangedEvent; a structural parameter then rebuilds its
// operator's structure.
class VANTEL_API Parameter : public ParameterNode {
public:
    class Implementation;

    // A detached parameter with an empty name.
    Parameter();
    // Sets the name, then appends the parameter to the scope's group (if it has one).
    Parameter(ParameterScope scope, std::string_view name);
    ~Parameter() override;

    VANTEL_DECLARE_OBJECT_TYPE(Parameter);

    const std::string& GetName() const;
    // Records the rename while a transaction records and the operator is in a graph; the key is not touched.
    void SetName(std::string_view name);

    Flags<ParameterFlag> GetParameterFlags() const;
    bool HasParameterFlag(ParameterFlag flag) const;
    // Making a parameter both Output and Structural is refused with an error; clearing always works.
    void SetParameterFlag(ParameterFlag flag, bool on);
    // Sets NotSaved and NotUndoable and clears MarksOutdated.
    void SetTransient();
    UpdatePolicy GetUpdatePolicy() const;
    void SetUpdatePolicy(UpdatePolicy policy);
    bool IsAddedByUser() const;

    // Rebuilt through BuildData only after a change.
    const ParameterData& GetData() const;
    // True for Floats and Ints data.
    bool HasNumericComponents() const;
    bool HasValueChanged() const;
    Event<>& ValueChangedEvent();

    const std::vector<ParameterConnection>& GetIncomingConnections() const;
    const std::vector<ParameterConnection>& GetOutgoingConnections() const;
    bool HasIncomingConnection() const;
    // The first incoming connection with a link to `component`; null if none.
    const ParameterConnection* FindIncomingConnection(int component) const;
    // False for Output, Structural and NotConnectable parameters.
    bool AcceptsInputConnection() const;

    // Takes a value from another parameter's data; the base ignores it.
    virtual void SetFromData(const ParameterData& data);
    // The value in its project-file form; the base gives JSON null.
    virtual nlohmann::json SerializeValue() const;
    // Sets the value from its project-file form; a mismatching form throws the JSON library's type error.
    virtual void DeserializeValue(const nlohmann::json& value);
    // True for parameters that hold references to other objects, which are resolved after loading.
    virtual bool ValueReferencesObjects() const;
    virtual int GetComponentCount() const;
    // Reads one numeric component: what GetData().GetFloat(component) gives (0 for a component the value
    // lacks), which the numeric types answer without building the data.
    virtual double GetComponent(int component) const;
    // Writes one numeric component; the base ignores it.
    virtual void SetComponent(int component, double value);

protected:
    Object* FindChildImplementation(std::string_view key) override;
    // Describes the current value; the base gives the empty value.
    virtual ParameterData BuildData() const;
    // True when BuildData always gives Floats or Ints data, so that HasNumericComponents knows it without
    // building the description (a frame asks it of every parameter that a connection drives).
    virtual bool BuildsNumericData() const;

    // Records the whole-value change (previousValue is null when nothing records), marks and notifies.
    void MarkChanged(nlohmann::json previousValue);
    // As MarkChanged for a single component; a structural parameter is not recorded per component.
    void MarkComponentChanged(int component, double previousValue, double newValue);
    // Marks the value changed without recording or notifying.
    void MarkDirty();
    void InvalidateData();
    // Rebuilds the operator's structure when it is dirty, unless a rebuild is running on this thread or the
    // operator is in no graph (its structure is then settled when it is added to one).
    void UpdateOperatorStructure();

private:
    friend class Access;
    void Notify();

    std::unique_ptr<Implementation> implementation;
};

}  // namespace Vantel
