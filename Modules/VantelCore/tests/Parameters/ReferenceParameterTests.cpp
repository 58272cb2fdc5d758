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
#include "Support/ProjectOperators.h"

namespace Vantel {
namespace {

using nlohmann::json;
using Scope = ObjectFilter::Scope;
using Testing::AddOperator;
using Testing::LogCapture;
using Testing::NumberParameter;
using Testing::SourceOperator;

using Testing::Add;
using Testing::MixerOperator;

// root: holder, sibling, adder, inner (a graph: deep, nested). A mixer holds both kinds of reference (focus,
// picks) beside a plain parameter (mix), an input list (layers) and a bundle list (bands).
struct Scene {
    Graph root;
    MixerOperator& holder = Add<MixerOperator>(root);
    SourceOperator& sibling = Add<SourceOperator>(root);
    AddOperator& adder = Add<AddOperator>(root);
    Graph& inner = Add<Graph>(root);
    SourceOperator& deep = Add<SourceOperator>(inner);
    MixerOperator& nested = Add<MixerOperator>(inner);
};

TEST(ReferenceParameters, FilterChecksTypeFlagsAndScopeInOrder) {
    Scene s;
    MixerOperator loose;    // in no graph
    PtrParameter detached;  // no operator at all
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
    PtrParameter* held = &s.holder.focus;
    check("null always passes", held, {}, nullptr, true);
    check("no types admit nothing", held, {}, &s.holder, false);
    check("type must inherit", held, params, &s.holder, false);
    check("own operator", held, params, &s.holder.mix, true);
    check("own operator refuses a sibling", held, params, &s.sibling.value, false);
    check("the graph itself", held, in(Object::Type(), Scope::ContainingGraph), &s.root, true);
    check("not its operators", held, in(Object::Type(), Scope::ContainingGraph), &s.sibling, false);
    check("same graph", held, in(Parameter::Type(), Scope::SameGraph), &s.sibling.value, true);
    check("same graph holds the nested graph", held, in(Graph::Type(), Scope::SameGraph), &s.inner, true);
    check("same graph stops there", held, in(Parameter::Type(), Scope::SameGraph), &s.deep.value, false);
    check("below: any depth", held, in(Parameter::Type(), Scope::BelowContainingGraph), &s.deep.value, true);
    check("below: not the graph", held, in(Object::Type(), Scope::BelowContainingGraph), &s.root, false);
    check("unknown scope", held, in(Object::Type(), static_cast<Scope>(4)), &s.holder, false);
    check("own operator excluded", held, others, &s.holder.mix, false);
    check("others stay", held, others, &s.sibling.value, true);
    check("required flag missing", held, needsOutput, &s.adder.offset, false);
    check("required flag present", held, needsOutput, &s.adder.result, true);
    check("flags ignore non-parameters", held, opsNeedOutput, &s.adder, true);
    check("forbidden flag", held, noOutput, &s.adder.result, false);
    check("object without operator", held, params, &detached, false);
    check("no graph: own operator", &loose.focus, in(Operator::Type(), Scope::OwnOperator), &loose, true);
    check("no graph: no graph", &loose.focus, in(Object::Type(), Scope::SameGraph), &loose.mix, false);
    check("no operator: type and flags only", &detached, noOutput, &s.deep.value, true);
}

TEST(ReferenceParameters, NarrowedFilterAndDeadReferentsClearTheValue) {
    Scene s;
    PtrParameter& target = s.holder.focus;
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
    MixerOperator& copy = Add<MixerOperator>(s.root);
    const ObjectFilter below{.types = {Object::Type()}, .scope = Scope::BelowContainingGraph};
    for (MixerOperator* op : {&s.holder, &copy, &s.nested}) {
        op->focus.SetFilter(below);
        op->picks.SetFilter(below);
    }
    s.holder.focus = &s.deep.value;
    s.holder.picks.SetValue({&s.deep.out, &s.inner, &s.sibling});
    const std::string deepPath = s.inner.GetKey() + "/" + s.deep.GetKey();
    EXPECT_EQ(s.holder.focus.SerializeValue(), deepPath + "/Value");
    EXPECT_EQ(s.holder.picks.SerializeValue(),
              json({deepPath + "/Out", s.inner.GetKey(), s.sibling.GetKey()}));
    copy.focus.DeserializeValue(s.holder.focus.SerializeValue());
    copy.picks.DeserializeValue(s.holder.picks.SerializeValue());
    EXPECT_EQ(copy.focus.Value(), &s.deep.value);
    EXPECT_EQ(copy.picks.Value(), s.holder.picks.Value());
    s.nested.focus = &s.deep.value;  // the nested graph is the context one level down
    EXPECT_EQ(s.nested.focus.SerializeValue(), s.deep.GetKey() + "/Value");
    // Moved into the nested graph, the holder's referent lies outside its context: no path names it.
    s.holder.focus = &s.sibling.value;
    s.inner.AddOperator(s.root.RemoveOperator(&s.holder));
    EXPECT_EQ(s.holder.focus.SerializeValue(), json());

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

    MixerOperator loose;  // in no graph and no graph itself: nothing to be relative to
    loose.focus.SetFilter({.types = {Object::Type()}});
    loose.picks.SetFilter({.types = {Object::Type()}});
    loose.focus = &loose.mix;
    loose.picks.Add(&loose.mix);
    EXPECT_EQ(loose.focus.SerializeValue(), json());
    EXPECT_EQ(loose.picks.SerializeValue(), json::array());
}

TEST(ReferenceParameters, UnresolvablePathsWarnAndLeaveNothing) {
    Scene s;
    const ObjectFilter same{.types = {Object::Type()}, .scope = Scope::SameGraph};
    s.holder.focus.SetFilter(same);
    s.holder.picks.SetFilter(same);
    s.holder.focus = &s.sibling;
    LogCapture log;
    s.holder.focus.DeserializeValue("Nowhere/Value");
    EXPECT_EQ(s.holder.focus.Value(), nullptr);
    const std::string deepPath =
        s.inner.GetKey() + "/" + s.deep.GetKey();  // resolves, but the filter refuses
    s.holder.picks.DeserializeValue({"a//b", s.sibling.GetKey(), 3, deepPath, "Gone"});
    EXPECT_EQ(s.holder.picks.Value(), std::vector<Object*>{&s.sibling});
    s.holder.focus = &s.sibling;
    s.holder.focus.DeserializeValue(42);  // not a path: cleared without a word
    s.holder.picks.DeserializeValue("not a list");
    EXPECT_EQ(s.holder.focus.Value(), nullptr);
    EXPECT_TRUE(s.holder.picks.Value().empty());
    EXPECT_EQ(
        log.Text(),
        "[Warning] PtrParameter::DeserializeValue: could not resolve 'Nowhere/Value', the value is cleared.\n"
        "[Warning] PtrListParameter::DeserializeValue: could not resolve 'a//b', the entry is dropped.\n"
        "[Warning] PtrListParameter::DeserializeValue: could not resolve '3', the entry is dropped.\n"
        "[Warning] PtrListParameter::DeserializeValue: could not resolve 'Gone', the entry is dropped.\n");
}

TEST(ReferenceParameters, AllowedObjectsAreExactlyThoseThatPassInWalkOrder) {
    Scene s;
    DataInput* listed = s.root.AddDataConnection(s.sibling.out, s.holder.layers);
    ASSERT_NE(listed, nullptr);
    ParameterBundle* band = s.holder.bands.CreateBundle("Band", "Low");
    Object* bandGain = band->Find("Gain");
    const auto check = [&s](const char* name, const ObjectFilter& filter,
                            const std::vector<Object*>& expected) {
        SCOPED_TRACE(name);
        s.holder.focus.SetFilter(filter);
        EXPECT_EQ(s.holder.focus.GetAllowedObjects(), expected);
    };
    check("operators at any depth", {{Operator::Type()}, Scope::BelowContainingGraph},
          {&s.holder, &s.sibling, &s.adder, &s.inner, &s.deep, &s.nested});
    check("ports, list inputs after their list",
          {{DataInput::Type(), DataInputList::Type(), DataOutput::Type()}, Scope::SameGraph},
          {&s.holder.layers, listed, &s.holder.out, &s.sibling.out, &s.adder.in, &s.adder.out});
    check("parameter nodes, groups before children", {{ParameterNode::Type()}, Scope::OwnOperator},
          {&s.holder.bands, band, bandGain, &s.holder.focus, &s.holder.picks, &s.holder.mix});
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
    PtrListParameter& targets = s.holder.picks;
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
    ParameterBundle* band = s.nested.bands.CreateBundle("Band", "Low");
    Object* bandGain = band->Find("Gain");
    const ObjectFilter below{.types = {Object::Type()}, .scope = Scope::BelowContainingGraph};
    s.holder.focus.SetFilter(below);  // from the root graph into the nested one
    s.holder.picks.SetFilter(below);
    s.holder.focus = bandGain;
    s.holder.picks.SetValue({&s.deep, band, &s.nested.mix});
    const json targetBefore = s.holder.focus.SerializeValue();
    const json listBefore = s.holder.picks.SerializeValue();
    Transaction transaction("Remove band");
    ASSERT_TRUE(s.nested.bands.RemoveBundle(band));
    EXPECT_EQ(s.holder.focus.Value(), nullptr);
    EXPECT_EQ(s.holder.picks.Value(), (std::vector<Object*>{&s.deep, &s.nested.mix}));
    const std::vector<Record>& records = transaction.GetRecords();
    ASSERT_EQ(records.size(), 3u);  // both clearings, recorded before the bundle goes
    EXPECT_EQ(records[0], Record(ParameterValueRecord{s.holder.focus.GetPath(), targetBefore, nullptr}));
    EXPECT_EQ(records[1], Record(ParameterValueRecord{s.holder.picks.GetPath(), listBefore,
                                                      json({listBefore[0], listBefore[2]})}));
    EXPECT_TRUE(std::holds_alternative<BundleRemovedRecord>(records[2]));
}

}  // namespace
}  // namespace Vantel
