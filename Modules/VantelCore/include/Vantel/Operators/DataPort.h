// DataPort.h: what a data input and a data output have in common.
//
//   void Tint(DataPort& port) { port.SetUIColor({1.0f, 0.5f, 0.0f}); }   // either kind of port
//   if (port.HasDataChanged()) { use(port.GetData()); }
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include <Vantel/Export.h>
#include <Vantel/Objects/Object.h>
#include <Vantel/Parameters/Color.h>

namespace Vantel {

class Data;
class Operator;

// DataPort
//
// The base of DataInput and DataOutput: a display name, the owning operator, a UI colour, whether a user
// added it, and the value held with its change mark for this frame (by serial, never by contents). Only the
// two port classes derive from it directly; plug-ins derive from those. Main thread only.
class VANTEL_API DataPort : public Object {
public:
    class Implementation;

    ~DataPort() override;

    const std::string& GetName() const;
    // Recorded while a transaction records and the operator is in a graph.
    void SetName(std::string_view name);
    // Null while the port has no operator.
    Operator* GetOperator() const;
    Color GetUIColor() const;
    void SetUIColor(Color color);

    bool HasData() const;
    bool HasDataChanged() const;
    const std::shared_ptr<Data>& GetData() const;
    // 0 when there is no data.
    std::uint64_t GetDataSerial() const;
    bool IsAddedByUser() const;

protected:
    // `implementation` is the derived port's own block, which extends DataPort::Implementation; the derived
    // port owns it and it must outlive every call made here.
    explicit DataPort(Implementation& implementation);
    // The operator; DataInput puts its list first.
    Object* GetParentObjectImplementation() override;

private:
    // A view: each derived port keeps its block in its own pointer, whose full type Access hands out.
    Implementation* implementation;
};

}  // namespace Vantel
