// DataPortImplementation.h: what operators, lists and graphs set on data ports.
//
//   Access::GetImplementation(input)->SetConnection({&output, &input});
//   Access::GetImplementation(output)->Store(value, Operator::Implementation::kOutputs);
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include <Vantel/Export.h>
#include <Vantel/Objects/Access.h>
#include <Vantel/Objects/Event.h>
#include <Vantel/Operators/Data.h>
#include <Vantel/Operators/DataInput.h>
#include <Vantel/Operators/DataOutput.h>
#include <Vantel/Operators/DataPort.h>

namespace Vantel {

// DataPort::Implementation
//
// The part of a port's private block that inputs and outputs share; its data stays private to DataPort.
class VANTEL_API DataPort::Implementation {
public:
    // Beside its operator, apart from the general heap (see Operator::operator new).
    static void* operator new(std::size_t size);
    static void operator delete(void* block, std::size_t size) noexcept;

    // A port keeps its change mark as it joins or leaves an operator.
    void SetOperator(Operator* op);
    void SetAddedByUser(bool addedByUser) { this->addedByUser = addedByUser; }
    enum class Stored { kNothing, kNew, kOverMark };
    // kNothing, and nothing stored, when `value` has the serial already held. Otherwise keeps it, marks the
    // change and tells the operator that one of its members of kind `kind` is marked; kOverMark when the
    // port's change was marked already.
    Stored Store(const std::shared_ptr<Data>& value, std::uint8_t kind);
    // As above, taking the value over instead of sharing it: one count up and one down fewer.
    Stored Store(std::shared_ptr<Data>&& value, std::uint8_t kind);
    bool IsMarked() const;
    // Whether the port's change is marked, for a port of an operator in mark epoch `epoch`.
    bool IsMarkedIn(std::uint64_t epoch) const { return markedAt == epoch; }
    const std::shared_ptr<Data>& GetData() const { return data; }

private:
    friend class DataPort;

    template <typename Value>
    Stored StoreValue(Value&& value, std::uint8_t kind);

    // What Store reads and writes each frame first, in the block's first cache line.
    Operator* op = nullptr;
    std::uint64_t lastSerial = 0;
    // The change mark: the operator's mark epoch when it was set (the operator clears the marks of all its
    // ports at once by starting a new epoch), kMarkedAlone for a port of no operator, 0 when clear.
    std::uint64_t markedAt = 0;
    std::shared_ptr<Data> data;
    bool addedByUser = false;
    std::string name;
    Color uiColor{1.0f, 1.0f, 1.0f, 1.0f};
};

// DataInput::Implementation
//
// The private block of a data input; its data stays private to DataInput.
class VANTEL_API DataInput::Implementation : public DataPort::Implementation {
public:
    void SetList(DataInputList* list) { this->list = list; }
    void SetConnection(DataConnection connection) { this->connection = connection; }

private:
    friend class DataInput;

    DataInputList* list = nullptr;
    DataConnection connection;
    const ObjectType* acceptedOutputType = nullptr;
};

// DataOutput::Implementation
//
// The private block of a data output; its data stays private to DataOutput.
class VANTEL_API DataOutput::Implementation : public DataPort::Implementation {
public:
    void AddConnection(DataConnection connection) { connections.push_back(connection); }
    // Drops, in one pass, every connection that `dropped` holds true for; the others keep their order.
    template <typename Dropped>
    void RemoveConnectionsIf(Dropped&& dropped) {
        std::erase_if(connections, dropped);
    }
    const std::vector<DataConnection>& GetConnections() const { return connections; }
    // False when the output has no such connection.
    bool RemoveConnection(DataConnection connection);

private:
    friend class DataOutput;

    std::vector<DataConnection> connections;
    Event<> activatedEvent;
};

inline auto& Access::GetImplementation(DataInput& input) {
    return input.implementation;
}

inline auto& Access::GetImplementation(DataOutput& output) {
    return output.implementation;
}

}  // namespace Vantel
