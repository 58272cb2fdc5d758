// EditOperators.h: an operator type for edit sequences, with every kind of member that editing reshapes.
//
//   RegisterEditTestTypes();
//   auto& shelf = Add<ShelfOperator>(graph);
//   shelf.count = 3;                               // "Slot 0" to "Slot 2" once the structure settles
#pragma once

#include <algorithm>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include <Vantel/Objects/ObjectType.h>
#include <Vantel/Objects/TypeLibrary.h>
#include <Vantel/Operators/DataInputList.h>
#include <Vantel/Operators/DataOutput.h>
#include <Vantel/Operators/Operator.h>
#include <Vantel/Parameters/IntParameter.h>
#include <Vantel/Parameters/ParameterBundle.h>
#include <Vantel/Parameters/ParameterBundleList.h>
#include <Vantel/Parameters/PtrParameter.h>
#include <Vantel/Parameters/VectorParameter.h>

#include "Support/ProjectOperators.h"

namespace Vantel::Testing {

// A structural "Count" of "Slot <i>" numbers (0 to 4), a vector for component links, a reference, an input
// list, and shelves whose "Pair" bundles take the bundle after them along when removed.
class ShelfOperator : public Operator {
public:
    IntParameter count{ParameterScope(this), "Count", 0};
    Vector3Parameter offset{ParameterScope(this), "Offset", {0.0, 0.0, 0.0}};
    PtrParameter target{ParameterScope(this), "Target", nullptr};
    DataInputList items{this, "Items", DataInput::Type(), {}};
    ParameterBundleList shelves{
        this,
        "Shelves",
        {.created =
             [](ParameterBundle& shelf) { shelf.Add(std::make_unique<NumberParameter>(nullptr, "Height")); },
         .removing = [this](ParameterBundle& shelf) { RemovePartner(shelf); }}};
    DataOutput out{this, "Out"};

    ShelfOperator() {
        count.SetParameterFlag(ParameterFlag::Structural, true);
        target.SetFilter({.types = {Operator::Type()}, .scope = ObjectFilter::Scope::SameGraph});
    }
    VANTEL_OBJECT_TYPE(ShelfOperator, Operator, "Vantel.Test.Shelf");

protected:
    void UpdateStructure() override {
        const std::int64_t wanted = std::clamp<std::int64_t>(count.Value(), 0, 4);
        while (static_cast<std::int64_t>(slots.size()) > wanted) {
            Parameter* last = slots.back();
            slots.pop_back();
            RemoveParameter(last);
        }
        while (static_cast<std::int64_t>(slots.size()) < wanted) {
            auto slot = std::make_unique<NumberParameter>(nullptr, "Slot " + std::to_string(slots.size()));
            slots.push_back(slot.get());
            AddParameter(std::move(slot));
        }
    }

private:
    // A handler that edits its own list while the list removes: the case that reshapes a group mid-removal.
    void RemovePartner(ParameterBundle& shelf) {
        if (shelf.GetKind() != "Pair") {
            return;
        }
        const std::size_t index = shelves.IndexOf(&shelf);
        if (index + 1 < shelves.GetBundleCount()) {
            shelves.RemoveBundle(shelves.GetBundle(index + 1));
        }
    }

    std::vector<Parameter*> slots;
};

// The project test types and the shelf, registered once per process.
inline void RegisterEditTestTypes() {
    static const bool registered = [] {
        RegisterProjectTestTypes();
        TypeLibrary::Get()->RegisterType(ShelfOperator::Type());
        return true;
    }();
    static_cast<void>(registered);
}

}  // namespace Vantel::Testing
