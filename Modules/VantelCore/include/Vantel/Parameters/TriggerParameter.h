// TriggerParameter.h: a parameter without a value that fires when pressed, shown as a button.
//
//   TriggerParameter reload{ParameterScope(this), "Reload", true};   // pressing it rebuilds the structure
//   EventSubscription s = reload.TriggeredEvent().Subscribe([&] { cache.clear(); });
//   reload.Trigger();
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include <nlohmann/json.hpp>

#include <Vantel/Export.h>
#include <Vantel/Objects/Event.h>
#include <Vantel/Parameters/Parameter.h>
#include <Vantel/Parameters/ParameterScope.h>

namespace Vantel {

// TriggerParameter
//
// An action rather than a value: Trigger() sets the value-changed mark (so the operator runs again), fires
// TriggeredEvent and, for a structural trigger, rebuilds the operator's structure. It records nothing for
// undo and does not fire ValueChangedEvent; there is nothing to store in the project file. Any data driving
// it fires it, whatever the data holds. Owned like every parameter; main thread only.
class VANTEL_API TriggerParameter : public Parameter {
public:
    // Detached, with an empty name, not structural.
    TriggerParameter();
    // `structural` makes it a Structural parameter: pressing it marks the operator's structure dirty and
    // rebuilds it (a "Reload" that re-reads a file defining the ports, say). Being structural, it then
    // accepts no incoming connection.
    TriggerParameter(ParameterScope scope, std::string_view name, bool structural);
    ~TriggerParameter() override;

    // "Vantel.TriggerParameter"
    VANTEL_DECLARE_OBJECT_TYPE(TriggerParameter);

    // Does not rebuild while a rebuild runs on this thread, nor while the operator is in no graph.
    void Trigger();
    // True from Trigger() until the execution side consumes the change (the value-changed mark).
    bool IsTriggered() const;
    Event<>& TriggeredEvent();

    // Empty unless set: the interface then shows the name.
    const std::string& GetButtonText() const;
    void SetButtonText(std::string_view text);

    // Fires the trigger.
    void SetFromData(const ParameterData& data) override;
    // JSON null.
    nlohmann::json SerializeValue() const override;
    // Ignores the value.
    void DeserializeValue(const nlohmann::json& value) override;

private:
    // The empty value.
    ParameterData BuildData() const override;

    class Implementation;
    std::unique_ptr<Implementation> implementation;
};

}  // namespace Vantel
