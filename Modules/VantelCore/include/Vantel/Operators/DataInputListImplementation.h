// DataInputListImplementation.h: how graphs and loaders grow and shrink a data input list.
//
//   DataInputList::Implementation& impl = *Access::GetImplementation(list);
//   DataInput* input = impl.CreateInput("");     // a key is made from the data type's name
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <Vantel/Export.h>
#include <Vantel/Objects/Access.h>
#include <Vantel/Operators/DataInputList.h>

namespace Vantel {

// DataInputList::Implementation
//
// The private block of a data input list, reached through Access::GetImplementation; its data stays private.
class VANTEL_API DataInputList::Implementation {
public:
    Implementation(DataInputList& list, Operator* op, const ObjectType* inputType, InputHandlers handlers);
    ~Implementation();

    // Makes an input of the input type with `key` (settled among the list's inputs; made from the data type's
    // name when empty) and appends it. Logs and gives null when the list has no input type
    // ("DataInputList::CreateInput: list '<key>' has no input type.") or it is not a data input type
    // ("DataInputList::CreateInput: '<type>' is not a data input type.").
    DataInput* CreateInput(std::string_view key);
    // Disconnects the input in the operator's graph, then destroys it. False when it is not in this list.
    bool RemoveInput(DataInput* input);
    // Names the inputs "Input 1", "Input 2", … in list order, without recording.
    void RenumberInputs();
    // Disconnects every input in the operator's graph, in list order.
    void DisconnectAllInputs();
    // The output type that inputs of the input type accept (null: any).
    const ObjectType* GetAcceptedOutputType() const;

    // The input that the graph keeps when its connection goes (null when there is none).
    DataInput* GetSpareInput() const { return spareInput; }
    void SetSpareInput(DataInput* input) { spareInput = input; }
    // Whether the graph leaves `input` in the list when its connection goes: the spare, or the input that
    // RemoveInput is disconnecting (it removes that one itself).
    bool KeepsWhenDisconnected(const DataInput* input) const {
        return input == spareInput || input == removing;
    }

    // Forgets the operator, for an operator that is going away before the list.
    void DetachFromOperator();

private:
    friend class DataInputList;
    void TakePrototypeValues() const;

    DataInputList& list;
    Operator* op;
    std::string name;
    const ObjectType* inputType;
    InputHandlers handlers;
    std::vector<std::unique_ptr<DataInput>> inputs;
    std::vector<DataInput*> inputPointers;
    std::vector<const DataInput*> constInputPointers;
    DataInput* spareInput = nullptr;
    DataInput* removing = nullptr;
    mutable bool prototypeRead = false;
    mutable const ObjectType* acceptedOutputType = nullptr;
    mutable Color uiColor{1.0f, 1.0f, 1.0f, 1.0f};
};

inline auto& Access::GetImplementation(DataInputList& list) {
    return list.implementation;
}

}  // namespace Vantel
