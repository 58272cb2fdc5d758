#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <variant>
#include <vector>

#include <Vantel/Operators/DataInputList.h>
#include <Vantel/Operators/Graph.h>
#include <Vantel/Parameters/ParameterBundle.h>
#include <Vantel/Parameters/ParameterBundleList.h>
#include <Vantel/Parameters/PtrListParameter.h>
#include <Vantel/Parameters/PtrParameter.h>
#include <Vantel/Projects/Transaction.h>

#include "Support/LogCapture.h"
#include "Support/TestOperators.h"

namespace Vantel {
namespace {

using nlohmann::json;
using Scope = ObjectFilter::Scope;
using Testing::AddOperator;
using Testing::LogCapture;
using Testing::NumberParameter;
using Testing::SourceOperator;

// Both kinds of reference beside a plain parameter, an input list and a bundle list.
class ReferrerOperator : public Operator {
public:
    PtrParameter target{this, "Target", nullptr};
    PtrListParameter targets{this, "Targets"};
    NumberParameter gain{this, "Gain"};
    DataInputList sources{this, "Sources", DataInput::Type(), {}};
    ParameterBundleList layers{this, "Layers", {.created = [](ParameterBundle& layer) {
                                   layer.Add(std::make_unique<NumberParameter>(nullptr, "Opacity"));
                               }}};

    VANTEL_OBJECT_TYPE(ReferrerOperator, Operator, "Vantel.Test.Referrer");
};

using Testing::Add;

// root: holder, sibling, adder, inner (a graph: deep, nested).
struct Scene {
    Graph root;
    ReferrerOperator& holder = Add<ReferrerOperator>(root);
    SourceOperator& sibling = Add<SourceOperator>(root);
    AddOperator& adder = Add<AddOperator>(root);
    Graph& inner = Add<Graph>(root);
    SourceOperator& deep = Add<SourceOperator>(inner);
    ReferrerOperator& nested = Add<ReferrerOperator>(inner);
};

TEST(ReferenceParameters, FilterChecksTypeFlagsAndScopeInOrder) {
    Scene s;
    ReferrerOperator loose;  // in no graph
    PtrParameter detached;   // no operator at all
    const auto in = [](const ObjectType* type, Scope scope) { return ObjectFilter{{type}, scope}; };
    const ObjectFilter params = in(Parameter::Type(), Scope::OwnOperator);
    const ObjectFilter others{{Parameter::Type()}, Scope::SameGraph, true};
    const ObjectFilter needsOutput{{Parameter::Type()}, Scope::SameGraph, false, ParameterFlag::Output};
    const ObjectFilter opsNeedOutput{{Operator::Type()}, Scope::SameGraph, false, ParameterFlag::Output};
    const ObjectFilter noOutput{{Parameter::Type()}, Scope::SameGraph, false, {}, ParameterFlag::Output};
    const auto check = [](const char* name, PtrParameter* parameter, const ObjectFilter& filter,
                          Object* object, bool passes) {
        SCOPED_TRACE(name);
        parameter->SetFilter(filter);
        EXPECT_EQ(parameter->PassesFilter(object), passes);
        parameter->SetValue(object);  // a refused object clears the value
        EXPECT_EQ(parameter->Value(), passes ? object : nullptr);
    };
    PtrParameter* held = &s.holder.target;
    check("null always passes", held, {}, nullptr, true);
    check("no types admit nothing", held, {}, &s.holder, false);
    check("type must inherit", held, params, &s.holder, false);
    check("own operator", held, params, &s.holder.gain, true);
    check("own operator refuses a sibling", held, params, &s.sibling.value, false);
    check("the graph itself", held, in(Object::Type(), Scope::ContainingGraph), &s.root, true);
    check("not its operators", held, in(Object::Type(), Scope::ContainingGraph), &s.sibling, false);
    check("same graph", held, in(Parameter::Type(), Scope::SameGraph), &s.sibling.value, true);
    check("same graph holds the nested graph", held, in(Graph::Type(), Scope::SameGraph), &s.inner, true);
    check("same graph stops there", held, in(Parameter::Type(), Scope::SameGraph), &s.deep.value, false);
    check("below: any depth", held, in(Parameter::Type(), Scope::BelowContainingGraph), &s.deep.value, true);
    check("below: not the graph", held, in(Object::Type(), Scope::BelowContainingGraph), &s.root, false);
    check("unknown scope", held, in(Object::Type(), static_cast<Scope>(4)), &s.holder, false);
    check("own operator excluded", held, others, &s.holder.gain, false);
    check("others stay", held, others, &s.sibling.value, true);
    check("required flag missing", held, needsOutput, &s.adder.offset, false);
    check("required flag present", held, needsOutput, &s.adder.result, true);
    check("flags ignore non-parameters", held, opsNeedOutput, &s.adder, true);
    check("forbidden flag", held, noOutput, &s.adder.result, false);
    check("object without operator", held, params, &detached, false);
    check("no graph: own operator", &loose.target, in(Operator::Type(), Scope::OwnOperator), &loose, true);
    check("no graph: no graph", &loose.target, in(Object::Type(), Scope::SameGraph), &loose.gain, false);
    check("no operator: type and flags only", &detached, noOutput, &s.deep.value, true);
}

TEST(ReferenceParameters, NarrowedFilterAndDeadReferentsClearTheValue) {
    Scene s;
    PtrParameter& target = s.holder.target;
    target.SetFilter({.types = {Operator::Type()}, .scope = Scope::SameGraph});
    target = &s.sibling;
    {
        Transaction transaction("Narrow");
        target.SetFilter({.types = {Operator::Type()}, .scope = Scope::OwnOperator});
        target.SetFilter(target.GetFilter());  // nothing left to clear
        EXPECT_EQ(target.Value(), nullptr);
        EXPECT_EQ(transaction.GetRecords(),
                  (std::vector<Record>{ParameterValueRecord{target.GetPath(), s.sibling.GetKey(), nullptr}}));
    }
    target.SetFilter({.types = {Operator::Type()}, .scope = Scope::BelowContainingGraph});
    target.SetFromData(ParameterData(Ptr<Object>(&s.deep)));
    EXPECT_EQ(target.GetData().GetPointer().Get(), &s.deep);
    EXPECT_EQ(target.SerializeValue(), s.inner.GetKey() + "/" + s.deep.GetKey());
    s.inner.RemoveOperator(&s.deep);  // the returned owner dies at once
    EXPECT_EQ(target.Value(), nullptr);
    EXPECT_EQ(target.SerializeValue(), json());
    EXPECT_EQ(target.GetData().GetPointer().Get(), nullptr);
    target = &s.inner;
    target.SetFromData(ParameterData("text"));  // not a pointer: cleared
    EXPECT_EQ(target.Value(), nullptr);
}

TEST(ReferenceParameters, JsonPathsAreRelativeToTheContextAndRoundTrip) {
    Scene s;
    ReferrerOperator& copy = Add<ReferrerOperator>(s.root);
    const ObjectFilter below{.types = {Object::Type()}, .scope = Scope::BelowContainingGraph};
    for (ReferrerOperator* op : {&s.holder, &copy, &s.nested}) {
        op->target.SetFilter(below);
        op->targets.SetFilter(below);
    }
    s.holder.target = &s.deep.value;
    s.holder.targets.SetValue({&s.deep.out, &s.inner, &s.sibling});
    const std::string deepPath = s.inner.GetKey() + "/" + s.deep.GetKey();
    EXPECT_EQ(s.holder.target.SerializeValue(), deepPath + "/Value");
    EXPECT_EQ(s.holder.targets.SerializeValue(),
              json({deepPath + "/Out", s.inner.GetKey(), s.sibling.GetKey()}));
    copy.target.DeserializeValue(s.holder.target.SerializeValue());
    copy.targets.DeserializeValue(s.holder.targets.SerializeValue());
    EXPECT_EQ(copy.target.Value(), &s.deep.value);
    EXPECT_EQ(copy.targets.Value(), s.holder.targets.Value());
    s.nested.target = &s.deep.value;  // the nested graph is the context one level down
    EXPECT_EQ(s.nested.target.SerializeValue(), s.deep.GetKey() + "/Value");
    // Moved into the nested graph, the holder's referent lies outside its context: no path names it.
    s.holder.target = &s.sibling.value;
    s.inner.AddOperator(s.root.RemoveOperator(&s.holder));
    EXPECT_EQ(s.holder.target.SerializeValue(), json());

    // A root graph is its own context, and names itself with the empty path.
    auto owned = std::make_unique<PtrParameter>(nullptr, "Pick", nullptr);
    PtrParameter& pick = *owned;
    ASSERT_TRUE(s.root.AddUserParameter(std::move(owned), ParameterNode::npos));
    pick.SetFilter({.types = {Object::Type()}});
    pick = &pick;
    EXPECT_EQ(pick.SerializeValue(), pick.GetKey());
    pick.DeserializeValue("");
    EXPECT_EQ(pick.Value(), &s.root);
    EXPECT_EQ(pick.SerializeValue(), "");

    ReferrerOperator loose;  // in no graph and no graph itself: nothing to be relative to
    loose.target.SetFilter({.types = {Object::Type()}});
    loose.targets.SetFilter({.types = {Object::Type()}});
    loose.target = &loose.gain;
    loose.targets.Add(&loose.gain);
    EXPECT_EQ(loose.target.SerializeValue(), json());
    EXPECT_EQ(loose.targets.SerializeValue(), json::array());
}

TEST(ReferenceParameters, UnresolvablePathsWarnAndLeaveNothing) {
    Scene s;
    const ObjectFilter same{.types = {Object::Type()}, .scope = Scope::SameGraph};
    s.holder.target.SetFilter(same);
    s.holder.targets.SetFilter(same);
    s.holder.target = &s.sibling;
    LogCapture log;
    s.holder.target.DeserializeValue("Nowhere/Value");
    EXPECT_EQ(s.holder.target.Value(), nullptr);
    const std::string deepPath =
        s.inner.GetKey() + "/" + s.deep.GetKey();  // resolves, but the filter refuses
    s.holder.targets.DeserializeValue({"a//b", s.sibling.GetKey(), 3, deepPath, "Gone"});
    EXPECT_EQ(s.holder.targets.Value(), std::vector<Object*>{&s.sibling});
    s.holder.target = &s.sibling;
    s.holder.target.DeserializeValue(42);  // not a path: cleared without a word
    s.holder.targets.DeserializeValue("not a list");
    EXPECT_EQ(s.holder.target.Value(), nullptr);
    EXPECT_TRUE(s.holder.targets.Value().empty());
    EXPECT_EQ(
        log.Text(),
        "[Warning] PtrParameter::DeserializeValue: could not resolve 'Nowhere/Value', the value is cleared.\n"
        "[Warning] PtrListParameter::DeserializeValue: could not resolve 'a//b', the entry is dropped.\n"
        "[Warning] PtrListParameter::DeserializeValue: could not resolve '3', the entry is dropped.\n"
        "[Warning] PtrListParameter::DeserializeValue: could not resolve 'Gone', the entry is dropped.\n");
}

TEST(ReferenceParameters, AllowedObjectsAreExactlyThoseThatPassInWalkOrder) {
    Scene s;
    DataInput* listed = s.root.AddDataConnection(s.sibling.out, s.holder.sources);
    ASSERT_NE(listed, nullptr);
    ParameterBundle* layer = s.holder.layers.CreateBundle("Layer", "Layer");
    Object* opacity = layer->Find("Opacity");
    const auto check = [&s](const char* name, const ObjectFilter& filter,
                            const std::vector<Object*>& expected) {
        SCOPED_TRACE(name);
        s.holder.target.SetFilter(filter);
        EXPECT_EQ(s.holder.target.GetAllowedObjects(), expected);
    };
    check("operators at any depth", {{Operator::Type()}, Scope::BelowContainingGraph},
          {&s.holder, &s.sibling, &s.adder, &s.inner, &s.deep, &s.nested});
    check("ports, list inputs after their list",
          {{DataInput::Type(), DataInputList::Type(), DataOutput::Type()}, Scope::SameGraph},
          {&s.holder.sources, listed, &s.sibling.out, &s.adder.in, &s.adder.out});
    check("parameter nodes, groups before children", {{ParameterNode::Type()}, Scope::OwnOperator},
          {&s.holder.target, &s.holder.targets, &s.holder.gain, &s.holder.layers, layer, opacity});
    check("the containing graph", {{Object::Type()}, Scope::ContainingGraph}, {&s.root});
    check("flags and exclusion",
          {.types = {Parameter::Type()},
           .scope = Scope::SameGraph,
           .excludeOwnOperator = true,
           .forbiddenFlags = ParameterFlag::Output},
          {&s.sibling.value, &s.adder.offset});
    PtrParameter detached;
    detached.SetFilter({{Object::Type()}});
    EXPECT_TRUE(detached.GetAllowedObjects().empty());
}

TEST(ReferenceParameters, ListAddRemoveContainsAndRemoveReferencesTo) {
    Scene s;
    PtrListParameter& targets = s.holder.targets;
    targets.SetFilter({.types = {Parameter::Type()}, .scope = Scope::BelowContainingGraph});
    EXPECT_FALSE(targets.Add(&s.sibling));  // not a parameter
    EXPECT_FALSE(targets.Add(nullptr));
    EXPECT_TRUE(targets.Add(&s.sibling.value));
    EXPECT_FALSE(targets.Add(&s.sibling.value));  // listed already
    EXPECT_TRUE(targets.Add(&s.adder.offset));
    EXPECT_TRUE(targets.Add(&s.deep.value));
    EXPECT_TRUE(targets.Contains(&s.adder.offset));
    EXPECT_FALSE(targets.Contains(nullptr));
    const json before = targets.SerializeValue();
    {
        Transaction transaction("Edit list");
        EXPECT_TRUE(targets.Remove(&s.adder.offset));
        EXPECT_FALSE(targets.Remove(&s.adder.offset));
        EXPECT_TRUE(targets.RemoveReferencesTo(s.inner));  // deep.value lies below the nested graph
        EXPECT_FALSE(targets.RemoveReferencesTo(s.inner));
        const std::vector<Record> expected = {
            ParameterValueRecord{targets.GetPath(), before, json({before[0], before[2]})},
            ParameterValueRecord{targets.GetPath(), json({before[0], before[2]}), json({before[0]})},
        };
        EXPECT_EQ(transaction.GetRecords(), expected);
    }
    targets.SetValue({&s.adder.result, &s.adder.result, nullptr, &s.adder, &s.deep.value});
    EXPECT_EQ(targets.Value(), (std::vector<Object*>{&s.adder.result, &s.deep.value}));
    targets.SetFilter(
        {.types = {Parameter::Type()}, .scope = Scope::SameGraph});  // narrowing drops deep.value
    EXPECT_EQ(targets.Value(), std::vector<Object*>{&s.adder.result});
    EXPECT_EQ(targets.GetData().GetType(), ParameterData::Type::Empty);
}

TEST(ReferenceParameters, RemovingANodeClearsReferencesIntoItsSubtree) {
    Scene s;
    ParameterBundle* layer = s.nested.layers.CreateBundle("Layer", "Layer");
    Object* opacity = layer->Find("Opacity");
    const ObjectFilter below{.types = {Object::Type()}, .scope = Scope::BelowContainingGraph};
    s.holder.target.SetFilter(below);  // from the root graph into the nested one
    s.holder.targets.SetFilter(below);
    s.holder.target = opacity;
    s.holder.targets.SetValue({&s.deep, layer, &s.nested.gain});
    const json targetBefore = s.holder.target.SerializeValue();
    const json listBefore = s.holder.targets.SerializeValue();
    Transaction transaction("Remove layer");
    ASSERT_TRUE(s.nested.layers.RemoveBundle(layer));
    EXPECT_EQ(s.holder.target.Value(), nullptr);
    EXPECT_EQ(s.holder.targets.Value(), (std::vector<Object*>{&s.deep, &s.nested.gain}));
    const std::vector<Record>& records = transaction.GetRecords();
    ASSERT_EQ(records.size(), 3u);  // both clearings, recorded before the bundle goes
    EXPECT_EQ(records[0], Record(ParameterValueRecord{s.holder.target.GetPath(), targetBefore, nullptr}));
    EXPECT_EQ(records[1], Record(ParameterValueRecord{s.holder.targets.GetPath(), listBefore,
                                                      json({listBefore[0], listBefore[2]})}));
    EXPECT_TRUE(std::holds_alternative<BundleRemovedRecord>(records[2]));
}

}  // namespace
}  // namespace Vantel
