// DataInput.h: where an operator receives data from another operator's output.
//
//   class Sharpen : public Operator {
//       DataInput image{this, "Image"};           // listed by the operator, not owned by it
//       void Execute(ExecutionContext&) override { if (image.HasDataChanged()) { ... image.GetData() ... } }
//   };
#pragma once

#include <memory>
#include <string_view>

#include <Vantel/Export.h>
#include <Vantel/Operators/DataConnection.h>
#include <Vantel/Operators/DataPort.h>

namespace Vantel {

class Data;
class DataInputList;
class Operator;

// DataInput
//
// Holds the value last received and whether it changed in this frame (the rest it shares with outputs is
// DataPort's). Its object parent is the data input list that made it, else its operator. Plug-in data types
// derive typed inputs from it and may override Receive and Clear. The graph sets its connection; the runner
// clears its changed mark after each frame. Destroying it removes it from its operator, which disconnects
// it. Main thread only.
class VANTEL_API DataInput : public DataPort {
public:
    class Implementation;

    DataInput();
    // Registers the input with `op` (without handing over ownership) when `op` is not null.
    DataInput(Operator* op, std::string_view name);
    ~DataInput() override;

    VANTEL_DECLARE_OBJECT_TYPE(DataInput);

    // Null for a plain input.
    DataInputList* GetList() const;
    bool IsConnected() const;
    DataConnection GetConnection() const;
    // Null: any output is accepted.
    const ObjectType* GetAcceptedOutputType() const;

    // Takes a value; the same serial again is no change.
    virtual void Receive(const std::shared_ptr<Data>& data);
    // Receives nothing: a change only when the input held data.
    virtual void Clear();

protected:
    Object* GetParentObjectImplementation() override;
    void SetAcceptedOutputType(const ObjectType* type);

private:
    explicit DataInput(std::unique_ptr<Implementation> block);

    friend class Access;
    std::unique_ptr<Implementation> implementation;
};

}  // namespace Vantel
