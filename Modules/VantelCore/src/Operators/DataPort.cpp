#include <Vantel/Operators/DataPort.h>

#include <utility>

#include <Vantel/Objects/Access.h>
#include <Vantel/Operators/DataPortImplementation.h>
#include <Vantel/Operators/Operator.h>
#include <Vantel/Operators/OperatorImplementation.h>

#include "Projects/EditRecorder.h"
#include "Support/OperatorArena.h"

namespace Vantel {
namespace {

// Epochs count up from 1 and never come near it.
constexpr std::uint64_t kMarkedAlone = ~std::uint64_t{0};

}  // namespace

void* DataPort::Implementation::operator new(std::size_t size) {
    return OperatorArena::Allocate(size);
}

void DataPort::Implementation::operator delete(void* block, std::size_t size) noexcept {
    OperatorArena::Free(block, size);
}

bool DataPort::Implementation::IsMarked() const {
    if (op == nullptr) {
        return markedAt == kMarkedAlone;
    }
    return markedAt == Access::GetImplementation(*op)->GetMarkEpoch();
}

void DataPort::Implementation::SetOperator(Operator* newOperator) {
    const bool marked = IsMarked();
    op = newOperator;
    if (!marked) {
        markedAt = 0;
    } else {
        markedAt = op != nullptr ? Access::GetImplementation(*op)->GetMarkEpoch() : kMarkedAlone;
    }
}

template <typename Value>
DataPort::Implementation::Stored DataPort::Implementation::StoreValue(Value&& value, std::uint8_t kind) {
    const std::uint64_t serial = value ? value->GetSerial() : 0;
    if (serial == lastSerial) {
        return Stored::kNothing;
    }
    lastSerial = serial;
    data = std::forward<Value>(value);
    Operator::Implementation* owner = op != nullptr ? Access::GetImplementation(*op).get() : nullptr;
    const std::uint64_t mark = owner != nullptr ? owner->GetMarkEpoch() : kMarkedAlone;
    const Stored stored = markedAt == mark ? Stored::kOverMark : Stored::kNew;
    markedAt = mark;
    if (owner != nullptr) {
        owner->NoteMembersMarked(static_cast<Operator::Implementation::MemberKind>(kind));
    }
    return stored;
}

DataPort::Implementation::Stored DataPort::Implementation::Store(const std::shared_ptr<Data>& value,
                                                                 std::uint8_t kind) {
    return StoreValue(value, kind);
}

DataPort::Implementation::Stored DataPort::Implementation::Store(std::shared_ptr<Data>&& value,
                                                                 std::uint8_t kind) {
    return StoreValue(std::move(value), kind);
}

DataPort::DataPort(Implementation& implementation) : implementation(&implementation) {}

// The block belongs to the derived port and is gone by now.
DataPort::~DataPort() = default;

const std::string& DataPort::GetName() const {
    return implementation->name;
}

void DataPort::SetName(std::string_view name) {
    if (name == implementation->name) {
        return;
    }
    EditRecorder::Renamed(*this, implementation->op, implementation->name, name);
    implementation->name = name;
    if (implementation->op != nullptr) {
        Access::GetImplementation(*implementation->op)->MemberRenamedEvent().Fire(this);
    }
}

Operator* DataPort::GetOperator() const {
    return implementation->op;
}

Color DataPort::GetUIColor() const {
    return implementation->uiColor;
}

void DataPort::SetUIColor(Color color) {
    implementation->uiColor = color;
}

bool DataPort::HasData() const {
    return implementation->data != nullptr;
}

bool DataPort::HasDataChanged() const {
    return implementation->IsMarked();
}

const std::shared_ptr<Data>& DataPort::GetData() const {
    return implementation->data;
}

std::uint64_t DataPort::GetDataSerial() const {
    return implementation->lastSerial;
}

bool DataPort::IsAddedByUser() const {
    return implementation->addedByUser;
}

Object* DataPort::GetParentObjectImplementation() {
    return implementation->op;
}

}  // namespace Vantel
