// ProjectOperators.h: operator types that exercise what project files store, and the one registration of
// the types that the files name.
#pragma once

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include <Vantel/Objects/ObjectType.h>
#include <Vantel/Objects/TypeLibrary.h>
#include <Vantel/Operators/DataInputList.h>
#include <Vantel/Operators/DataOutput.h>
#include <Vantel/Operators/Operator.h>
#include <Vantel/Parameters/ParameterBundle.h>
#include <Vantel/Parameters/ParameterBundleList.h>
#include <Vantel/Parameters/ParameterRootGroup.h>
#include <Vantel/Parameters/PtrListParameter.h>
#include <Vantel/Parameters/PtrParameter.h>

#include "Support/TestOperators.h"

namespace Vantel::Testing {

// An input list, a bundle list whose bundles hold a "Gain", and references to operators of its graph.
class MixerOperator : public Operator {
public:
    DataInputList layers{this, "Layers", DataInput::Type(), {}};
    ParameterBundleList bands{this, "Bands", {.created = [](ParameterBundle& band) {
                                  band.Add(std::make_unique<NumberParameter>(nullptr, "Gain"));
                              }}};
    PtrParameter focus{this, "Focus", nullptr};
    PtrListParameter picks{this, "Picks"};
    NumberParameter mix{this, "Mix", 0.0};
    DataOutput out{this, "Out"};

    MixerOperator() {
        focus.SetFilter({.types = {Operator::Type()}, .scope = ObjectFilter::Scope::SameGraph});
        picks.SetFilter({.types = {Operator::Type()}, .scope = ObjectFilter::Scope::SameGraph});
    }
    VANTEL_OBJECT_TYPE(MixerOperator, Operator, "Vantel.Test.Mixer");
};

// Structural through a reference: one number per parameter of the model operator, keyed like it, so that
// its stored values find their members only once the reference is resolved.
class MirrorOperator : public Operator {
public:
    PtrParameter model{this, "Model", nullptr};

    MirrorOperator() {
        model.SetParameterFlag(ParameterFlag::Structural, true);
        model.SetFilter({.types = {Operator::Type()},
                         .scope = ObjectFilter::Scope::SameGraph,
                         .excludeOwnOperator = true});
    }
    VANTEL_OBJECT_TYPE(MirrorOperator, Operator, "Vantel.Test.Mirror");

protected:
    void UpdateStructure() override {
        std::vector<std::string> wanted;
        if (auto* source = dynamic_cast<Operator*>(model.Value())) {
            for (const Parameter* parameter : source->GetAllParameters()) {
                wanted.push_back(parameter->GetKey());
            }
        }
        for (Parameter* copy : std::vector<Parameter*>(copies)) {
            if (std::find(wanted.begin(), wanted.end(), copy->GetKey()) == wanted.end()) {
                std::erase(copies, copy);
                RemoveParameter(copy);
            }
        }
        for (const std::string& key : wanted) {
            if (GetParameterGroup().Find(key) == nullptr) {
                auto copy = std::make_unique<NumberParameter>(nullptr, key);
                copies.push_back(copy.get());
                AddParameter(std::move(copy));
            }
        }
    }

private:
    std::vector<Parameter*> copies;
};

// Structural through a number: "Count" layers, each a bundle in "Layers", a parameter "Weight n" and a data
// input "In n" that the rebuild makes and keeps by pointer, as operator types do. "Focus" points at a layer.
class StackOperator : public Operator {
public:
    NumberParameter count{this, "Count", 0.0};
    ParameterBundleList layers{this, "Layers", {.created = [](ParameterBundle& layer) {
                                   layer.Add(std::make_unique<NumberParameter>(nullptr, "Opacity", 1.0));
                               }}};
    PtrParameter focus{this, "Focus", nullptr};

    StackOperator() {
        count.SetParameterFlag(ParameterFlag::Structural, true);
        focus.SetFilter({.types = {ParameterBundle::Type()}});
    }
    VANTEL_OBJECT_TYPE(StackOperator, Operator, "Vantel.Test.Stack");

protected:
    void UpdateStructure() override {
        const auto wanted = static_cast<std::size_t>(std::max(0.0, count.Value()));
        while (weights.size() > wanted) {
            Parameter* last = weights.back();
            weights.pop_back();
            RemoveParameter(last);
            RemoveDataInput(inputs.back());
            inputs.pop_back();
        }
        while (weights.size() < wanted) {
            auto weight =
                std::make_unique<NumberParameter>(nullptr, "Weight " + std::to_string(weights.size() + 1));
            weights.push_back(weight.get());
            AddParameter(std::move(weight));
            auto input = std::make_unique<DataInput>();
            input->SetName("In " + std::to_string(weights.size()));
            inputs.push_back(input.get());
            AddDataInput(std::move(input));
        }
        while (layers.GetBundleCount() > wanted) {
            layers.RemoveBundle(layers.GetBundle(layers.GetBundleCount() - 1));
        }
        while (layers.GetBundleCount() < wanted) {
            layers.CreateBundle("Layer", "Layer " + std::to_string(layers.GetBundleCount() + 1));
        }
    }

private:
    std::vector<Parameter*> weights;
    std::vector<DataInput*> inputs;
};

// The core types and the test types above, registered once per process (a second registration warns).
inline void RegisterProjectTestTypes() {
    [[maybe_unused]] static const bool registered = [] {
        RegisterCoreTypes();
        for (const ObjectType* type :
             {SourceOperator::Type(), AddOperator::Type(), NumberParameter::Type(), MixerOperator::Type(),
              MirrorOperator::Type(), StackOperator::Type()}) {
            TypeLibrary::Get()->RegisterType(type);
        }
        return true;
    }();
}

}  // namespace Vantel::Testing
