#include <Vantel/Operators/DataInput.h>

#include <Vantel/Objects/ObjectType.h>
#include <Vantel/Operators/DataInputList.h>
#include <Vantel/Operators/DataPortImplementation.h>
#include <Vantel/Operators/Operator.h>
#include <Vantel/Operators/OperatorImplementation.h>

namespace Vantel {

DataInput::DataInput() : DataInput(std::make_unique<Implementation>()) {}

// The base keeps a view of the block, so the block is made before either.
DataInput::DataInput(std::unique_ptr<Implementation> block)
    : DataPort(*block), implementation(std::move(block)) {}

DataInput::DataInput(Operator* op, std::string_view name) : DataInput() {
    SetName(name);  // not recorded: there is no operator yet
    if (op != nullptr) {
        op->AddDataInput(this);
    }
}

DataInput::~DataInput() {
    if (GetOperator() != nullptr && implementation->list == nullptr) {
        GetOperator()->RemoveDataInput(this);
    }
}

VANTEL_DEFINE_OBJECT_TYPE(DataInput, Object, "Vantel.DataInput")

DataInputList* DataInput::GetList() const {
    return implementation->list;
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
    implementation->Store(data, Operator::Implementation::kInputs);
}

void DataInput::Clear() {
    Receive(nullptr);
}

Object* DataInput::GetParentObjectImplementation() {
    if (implementation->list != nullptr) {
        return implementation->list;
    }
    return DataPort::GetParentObjectImplementation();
}

void DataInput::SetAcceptedOutputType(const ObjectType* type) {
    implementation->acceptedOutputType = type;
}

}  // namespace Vantel
