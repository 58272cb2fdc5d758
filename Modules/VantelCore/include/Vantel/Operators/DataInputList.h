// DataInputList.h: an operator's growing row of inputs of one data type, one input per connection.
//
//   class Combine : public Operator {
//       DataInputList layers{this, "Layers", ImageInput::Type(), {}};
//       void Execute(ExecutionContext&) override { for (DataInput* layer : layers.GetInputs()) { ... } }
//   };
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <Vantel/Export.h>
#include <Vantel/Objects/Object.h>
#include <Vantel/Parameters/Color.h>

namespace Vantel {

class DataInput;
class Operator;

// What the operator type does around the life of the list's inputs; each handler may be empty.
struct InputHandlers {
    std::function<void(DataInput&)> created = {};   // after an input was created and appended
    std::function<void(DataInput&)> removing = {};  // before an input is removed and destroyed
    std::function<void()> reordered = {};           // after the order of the inputs changed
};

// DataInputList
//
// One of its operator's input slots. Each connection the graph makes to the list gets a new input, which the
// list owns and names "Input 1", "Input 2", … in list order (keys stay as they are); an input goes when its
// connection goes, except the spare input. The inputs' object parent is the list, so their paths run
// through it. Main thread only.
class VANTEL_API DataInputList : public Object {
public:
    class Implementation;
    // An enumerator rather than a static member: MinGW's g++ leaves an inline member of an exported class out
    // of the DLL, so a caller that binds it to a reference (as EXPECT_EQ does) would fail to link.
    enum : std::size_t { npos = static_cast<std::size_t>(-1) };

    // Registers the list as an input slot of `op` when `op` is not null. `inputType` must derive from
    // DataInput: it is the type of the inputs the list creates.
    DataInputList(Operator* op, std::string_view name, const ObjectType* inputType, InputHandlers handlers);
    ~DataInputList() override;

    VANTEL_DECLARE_OBJECT_TYPE(DataInputList);

    const std::string& GetName() const;
    // Recorded in a model, like a port's rename, and announced through the operator's MemberRenamedEvent.
    void SetName(std::string_view name);
    Operator* GetOperator();
    const Operator* GetOperator() const;
    const ObjectType* GetInputType() const;
    // The colour of the list's inputs, taken from a prototype of the input type.
    Color GetUIColor() const;

    const std::vector<DataInput*>& GetInputs();
    const std::vector<const DataInput*>& GetInputs() const;
    // Null past the end.
    DataInput* GetInput(std::size_t index) const;
    std::size_t GetInputCount() const;
    std::size_t IndexOf(const DataInput* input) const;
    // False for an input of another list, the current index, or an index not below the input count.
    bool MoveInput(DataInput* input, std::size_t index);

protected:
    Object* GetParentObjectImplementation() override;
    // An input of the list by key.
    Object* FindChildImplementation(std::string_view key) override;

private:
    friend class Access;
    std::unique_ptr<Implementation> implementation;
};

}  // namespace Vantel
