#include <Vantel/Operators/DataInput.h>

#include <Vantel/Objects/Access.h>
#include <Vantel/Objects/ObjectType.h>
#include <Vantel/Operators/DataInputList.h>
#include <Vantel/Operators/DataPortImplementation.h>
#include <Vantel/Operators/Operator.h>
#include <Vantel/Operators/OperatorImplementation.h>

#include "Projects/EditRecorder.h"

namespace Vantel {
namespace {

const std::shared_ptr<Data>& NoData() {
    static const std::shared_ptr<Data> none;
    return none;
}

std::uint64_t SerialOf(const std::shared_ptr<Data>& data) {
    return data ? data->GetSerial() : 0;
}

}  // namespace

DataInput::DataInput() : implementation(std::make_unique<Implementation>()) {}

DataInput::DataInput(Operator* op, std::string_view name) : DataInput() {
    implementation->name = name;
    if (op != nullptr) {
        op->AddDataInput(this);
    }
}

DataInput::~DataInput() {
    if (implementation->op != nullptr && implementation->list == nullptr) {
        implementation->op->RemoveDataInput(this);
    }
}

const ObjectType* DataInput::Type() {
    static const ObjectType type("Vantel.DataInput", Object::Type(), MakeFactory<DataInput>());
    return &type;
}

const ObjectType* DataInput::GetType() const {
    return Type();
}

const std::string& DataInput::GetName() const {
    return implementation->name;
}

void DataInput::SetName(std::string_view name) {
    if (name == implementation->name) {
        return;
    }
    EditRecorder::Renamed(*this, implementation->op, implementation->name, name);
    implementation->name = name;
    if (implementation->op != nullptr) {
        Access::GetImplementation(*implementation->op)->MemberRenamedEvent().Fire(this);
    }
}

Operator* DataInput::GetOperator() const {
    return implementation->op;
}

DataInputList* DataInput::GetList() const {
    return implementation->list;
}

Color DataInput::GetUIColor() const {
    return implementation->uiColor;
}

void DataInput::SetUIColor(Color color) {
    implementation->uiColor = color;
}

bool DataInput::HasData() const {
    return implementation->data != nullptr;
}

bool DataInput::HasDataChanged() const {
    return implementation->changed;
}

const std::shared_ptr<Data>& DataInput::GetData() const {
    return implementation->data ? implementation->data : NoData();
}

std::uint64_t DataInput::GetDataSerial() const {
    return SerialOf(implementation->data);
}

bool DataInput::IsAddedByUser() const {
    return implementation->addedByUser;
}

bool DataInput::IsConnected() const {
    return implementation->connection.output != nullptr;
}

DataConnection DataInput::GetConnection() const {
    return implementation->connection;
}

const ObjectType* DataInput::GetAcceptedOutputType() const {
    return implementation->acceptedOutputType;
}

void DataInput::Receive(const std::shared_ptr<Data>& data) {
    const std::uint64_t serial = SerialOf(data);
    if (serial == implementation->lastSerial) {
        return;
    }
    implementation->lastSerial = serial;
    implementation->data = data;
    implementation->changed = true;
    if (implementation->op != nullptr) {
        Access::GetImplementation(*implementation->op)->NoteMemberMarked();
    }
}

void DataInput::Clear() {
    Receive(nullptr);
}

Object* DataInput::GetParentObjectImplementation() {
    if (implementation->list != nullptr) {
        return implementation->list;
    }
    return implementation->op;
}

void DataInput::SetAcceptedOutputType(const ObjectType* type) {
    implementation->acceptedOutputType = type;
}

}  // namespace Vantel
