#include <Vantel/Operators/DataOutput.h>

#include <algorithm>
#include <typeinfo>
#include <utility>

#include <Vantel/Objects/ObjectType.h>
#include <Vantel/Operators/DataPortImplementation.h>
#include <Vantel/Operators/Operator.h>
#include <Vantel/Operators/OperatorImplementation.h>
#include <Vantel/Support/Logging.h>

#include "Projects/EditRecorder.h"

namespace Vantel {

bool DataOutput::Implementation::RemoveConnection(DataConnection connection) {
    const auto found = std::find(connections.begin(), connections.end(), connection);
    if (found == connections.end()) {
        return false;
    }
    connections.erase(found);
    return true;
}

DataOutput::DataOutput() : DataOutput(std::make_unique<Implementation>()) {}

// The base keeps a view of the block, so the block is made before either.
DataOutput::DataOutput(std::unique_ptr<Implementation> block)
    : DataPort(*block), implementation(std::move(block)) {}

DataOutput::DataOutput(Operator* op, std::string_view name) : DataOutput() {
    SetName(name);  // not recorded: there is no operator yet
    if (op != nullptr) {
        op->AddDataOutput(this);
    }
}

DataOutput::~DataOutput() {
    if (GetOperator() != nullptr) {
        GetOperator()->RemoveDataOutput(this);
    }
}

VANTEL_DEFINE_OBJECT_TYPE(DataOutput, Object, "Vantel.DataOutput")

Operator* DataOutput::GetOperator() {
    return DataPort::GetOperator();
}

const Operator* DataOutput::GetOperator() const {
    return DataPort::GetOperator();
}

bool DataOutput::HasConnections() const {
    return !implementation->connections.empty();
}

const std::vector<DataConnection>& DataOutput::GetConnections() const {
    return implementation->connections;
}

namespace {

// After a store that wrote nothing or wrote twice in a frame.
void AnnounceUnusual(DataOutput& output, const Event<>& activated, DataPort::Implementation::Stored stored) {
    if (stored == DataPort::Implementation::Stored::kNothing) {
        return;
    }
    LogWarning("DataOutput '" + output.GetPath().ToString() +
               "' is written more than once per frame, whichever write happens last wins.");
    activated.Fire();
}

// The warning and the event that follow a store. Small, so that the usual case costs no call on every value
// of every frame; handed the event, as asking the output for it would be a call through the library's
// exported symbols.
inline void Announce(DataOutput& output, const Event<>& activated, DataPort::Implementation::Stored stored) {
    if (stored == DataPort::Implementation::Stored::kNew) {
        activated.Fire();
        return;
    }
    AnnounceUnusual(output, activated, stored);
}

}  // namespace

void DataOutput::Activate(const std::shared_ptr<Data>& data) {
    Announce(*this, implementation->activatedEvent,
             implementation->Store(data, Operator::Implementation::kOutputs));
}

void DataOutput::Activate(std::shared_ptr<Data>&& data) {
    // The exact type, not the declared one: a subclass without a type of its own may still override.
    if (typeid(*this) != typeid(DataOutput)) {
        Activate(std::as_const(data));
        return;
    }
    Announce(*this, implementation->activatedEvent,
             implementation->Store(std::move(data), Operator::Implementation::kOutputs));
}

void DataOutput::Clear() {
    Activate(nullptr);
}

Event<>& DataOutput::ActivatedEvent() {
    return implementation->activatedEvent;
}

}  // namespace Vantel
