// DataOutput.h: where an operator publishes the data it produced.
//
//   class Blur : public Operator {
//       DataOutput result{this, "Result"};
//       void Execute(ExecutionContext&) override { result.Activate(std::make_shared<ImageData>(...)); }
//   };
#pragma once

#include <memory>
#include <string_view>
#include <vector>

#include <Vantel/Export.h>
#include <Vantel/Objects/Event.h>
#include <Vantel/Operators/DataConnection.h>
#include <Vantel/Operators/DataPort.h>

namespace Vantel {

class Data;
class Operator;

// DataOutput
//
// Holds the value last written and whether it changed in this frame (the rest it shares with inputs is
// DataPort's); the graph hands a changed value to every connected input. Writing twice in one frame is
// allowed (the last write wins) and warned about. Plug-in data types derive typed outputs and may override
// Activate and Clear. Destroying it removes it from its operator, which disconnects it. Main thread only.
class VANTEL_API DataOutput : public DataPort {
public:
    class Implementation;

    DataOutput();
    // Registers the output with `op` (without handing over ownership) when `op` is not null.
    DataOutput(Operator* op, std::string_view name);
    ~DataOutput() override;

    VANTEL_DECLARE_OBJECT_TYPE(DataOutput);

    // An output keeps its operator const when it is const itself.
    Operator* GetOperator();
    const Operator* GetOperator() const;
    bool HasConnections() const;
    const std::vector<DataConnection>& GetConnections() const;

    // Writes a value. A different value while this frame's change is still marked logs "DataOutput '<path>'
    // is written more than once per frame, whichever write happens last wins."
    virtual void Activate(const std::shared_ptr<Data>& data);
    // The same for a value the caller gives up, as a fresh one from a pool: a plain output takes it over
    // rather than sharing it, which spares a frame two atomic count changes per output. On a subclass it is
    // the virtual Activate that runs, so that an override sees every value.
    void Activate(std::shared_ptr<Data>&& data);
    // Writes nothing, which is a write like any other.
    virtual void Clear();
    Event<>& ActivatedEvent();

private:
    explicit DataOutput(std::unique_ptr<Implementation> block);

    friend class Access;
    std::unique_ptr<Implementation> implementation;
};

}  // namespace Vantel
