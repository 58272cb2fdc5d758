// DataPortImplementation.h: what operators, lists and graphs set on data ports.
//
//   Access::GetImplementation(input)->SetConnection({&output, &input});
//   Access::GetImplementation(output)->ClearChanged();     // the runner, after each frame
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include <Vantel/Export.h>
#include <Vantel/Objects/Event.h>
#include <Vantel/Operators/Data.h>
#include <Vantel/Operators/DataInput.h>
#include <Vantel/Operators/DataOutput.h>

namespace Vantel {

// DataInput::Implementation
//
// The private block of a data input; its data stays private to DataInput.
class VANTEL_API DataInput::Implementation {
public:
    void SetOperator(Operator* op) { this->op = op; }
    void SetList(DataInputList* list) { this->list = list; }
    void SetConnection(DataConnection connection) { this->connection = connection; }
    void SetAddedByUser(bool addedByUser) { this->addedByUser = addedByUser; }
    void ClearChanged() { changed = false; }

private:
    friend class DataInput;

    std::string name;
    Color uiColor{1.0f, 1.0f, 1.0f, 1.0f};
    Operator* op = nullptr;
    DataInputList* list = nullptr;
    DataConnection connection;
    const ObjectType* acceptedOutputType = nullptr;
    bool addedByUser = false;
    std::uint64_t lastSerial = 0;
    bool changed = false;
    std::shared_ptr<Data> data;
};

// DataOutput::Implementation
//
// The private block of a data output; its data stays private to DataOutput.
class VANTEL_API DataOutput::Implementation {
public:
    void SetOperator(Operator* op) { this->op = op; }
    void SetAddedByUser(bool addedByUser) { this->addedByUser = addedByUser; }
    void AddConnection(DataConnection connection) { connections.push_back(connection); }
    // False when the output has no such connection.
    bool RemoveConnection(DataConnection connection);
    void ClearChanged() { changed = false; }

private:
    friend class DataOutput;

    std::string name;
    Color uiColor{1.0f, 1.0f, 1.0f, 1.0f};
    Operator* op = nullptr;
    std::vector<DataConnection> connections;
    bool addedByUser = false;
    std::uint64_t lastSerial = 0;
    bool changed = false;
    Event<> activatedEvent;
    std::shared_ptr<Data> data;
};

}  // namespace Vantel
