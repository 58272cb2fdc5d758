// The edit session in process, on the library's test operators: requests whose types the bundled example and
// the Standard plug-in do not have.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <nlohmann/json.hpp>

#include <Vantel/Execution/ExecutionContext.h>
#include <Vantel/Objects/ObjectType.h>
#include <Vantel/Objects/TypeLibrary.h>
#include <Vantel/Operators/Graph.h>
#include <Vantel/Operators/OperatorInfo.h>
#include <Vantel/Parameters/ParameterBundle.h>
#include <Vantel/Projects/Project.h>
#include <Vantel/Projects/Serialization.h>

#include "Edit/EditSession.h"
#include "Edit/LogTee.h"
#include "Support/LogCapture.h"
#include "Support/ProjectOperators.h"

namespace {

using nlohmann::json;
using Vantel::Testing::Add;
using Vantel::Testing::AddOperator;
using Vantel::Testing::MixerOperator;
using Vantel::Testing::SourceOperator;

class EditSessionModel : public testing::Test {
protected:
    EditSessionModel() { Vantel::Testing::RegisterProjectTestTypes(); }

    json Reply(const json& request) { return json::parse(session.Handle(request)); }
    json Ok(const json& request) {
        const json reply = Reply(request);
        EXPECT_EQ(reply["ok"], true) << request.dump() << " -> " << reply.dump();
        return reply.value("result", json());
    }
    static std::string PathOf(Vantel::Object& object) { return object.GetPath().ToString(); }

    Vantel::Project project;
    Vantel::Graph& root = *project.GetRootGraph();
    std::ostringstream sink;
    VantelHost::LogTee log{sink};
    VantelHost::EditSession session{project, std::filesystem::temp_directory_path() / "vantel-model.json",
                                    60.0, log};
};

TEST_F(EditSessionModel, BundlesAreAddedMovedAndRemovedAsEditsThatUndo) {
    auto& mixer = Add<MixerOperator>(root);
    const auto keys = [&mixer] { return Vantel::Testing::KeysOf(mixer.bands.GetBundles()); };

    const std::string list = PathOf(mixer.bands);
    Ok({{"type", "addBundle"}, {"list", list}, {"kind", "Band"}});
    const std::string second = Ok({{"type", "addBundle"}, {"list", list}, {"kind", "Band"}})["path"];
    const std::vector<std::string> added = keys();
    Ok({{"type", "moveBundle"}, {"path", second}, {"index", 0}});
    const std::vector<std::string> moved = keys();
    const json bands = Ok({{"type", "getGraph"}})["operators"][0]["parameters"][0];
    EXPECT_EQ(bands["kind"], "bundleList");
    EXPECT_EQ(bands["children"][0]["kind"], "bundle");
    Ok({{"type", "removeBundle"}, {"path", second}});  // the first: undo puts it back in front
    EXPECT_EQ(mixer.bands.GetBundles().size(), 1u);

    Ok({{"type", "undo"}});
    EXPECT_EQ(keys(), moved);
    Ok({{"type", "undo"}});
    EXPECT_EQ(keys(), added);
    Ok({{"type", "undo"}});
    Ok({{"type", "undo"}});
    EXPECT_TRUE(mixer.bands.GetBundles().empty());
    EXPECT_EQ(Ok({{"type", "getHistory"}})["redo"].size(), 4u);
}

TEST_F(EditSessionModel, LinksReplacementListInputsAndPasteAreEdits) {
    auto& first = Add<SourceOperator>(root);
    auto& second = Add<SourceOperator>(root);
    auto& adder = Add<AddOperator>(root);
    auto& mixer = Add<MixerOperator>(root);
    Ok({{"type", "connectParameter"},
        {"output", PathOf(first.value)},
        {"input", PathOf(mixer.mix)},
        {"links", {{0, 0}}}});
    EXPECT_EQ(mixer.mix.FindIncomingConnection(0)->source, &first.value);
    Ok({{"type", "connectData"}, {"output", PathOf(first.out)}, {"input", PathOf(adder.in)}});
    Ok({{"type", "connectData"},
        {"output", PathOf(second.out)},
        {"input", PathOf(adder.in)},
        {"replace", true}});
    EXPECT_EQ(adder.in.GetConnection().output, &second.out);
    const json layer =
        Ok({{"type", "connectData"}, {"output", PathOf(first.out)}, {"input", PathOf(mixer.layers)}});
    Ok({{"type", "removeListInput"}, {"path", layer["input"]}});
    EXPECT_EQ(mixer.layers.GetInputCount(), 0u);
    EXPECT_EQ(Ok({{"type", "getHistory"}})["undo"].size(), 5u);

    // A list input whose source stayed behind is not pasted.
    Ok({{"type", "connectData"}, {"output", PathOf(first.out)}, {"input", PathOf(mixer.layers)}});
    const json clipboard = Ok({{"type", "copy"}, {"paths", {PathOf(mixer)}}});
    const std::string pasted = Ok({{"type", "paste"}, {"clipboard", clipboard}})["paths"][0];
    auto& copy = dynamic_cast<MixerOperator&>(*project.Resolve(*Vantel::Path::Parse(pasted)));
    EXPECT_EQ(mixer.layers.GetInputCount(), 1u);
    EXPECT_EQ(copy.layers.GetInputCount(), 0u);

    // A clipboard's connections that name an operator it does not hold, or no port, are left out.
    json foreign = clipboard;
    const json saved = json::parse(Vantel::Serialization::SerializeProjectText(project));
    for (const json& connection : saved["root"]["dataConnections"]) {
        foreign["dataConnections"].push_back(connection);
    }
    foreign["dataConnections"].push_back({{"output", 5}, {"input", PathOf(mixer.layers)}});
    Vantel::Testing::LogCapture pasting;
    const std::string again = Ok({{"type", "paste"}, {"clipboard", foreign}})["paths"][0];
    EXPECT_EQ(pasting.Text().find("[Error]"), std::string::npos) << pasting.Text();  // not tried and refused
    EXPECT_EQ(mixer.layers.GetInputCount(), 1u);
    EXPECT_EQ(
        dynamic_cast<MixerOperator&>(*project.Resolve(*Vantel::Path::Parse(again))).layers.GetInputCount(),
        0u);
}

// Each refusal names what was wrong and leaves no step in the history.
// The palette describes a bundle list by its summary and kinds, every other member by its type.
TEST_F(EditSessionModel, TypesDescribeBundleListsByTheirKinds) {
    const auto entry = [](const char* name, const char* type) {
        Vantel::OperatorInfo::Entry made;
        made.name = name;
        made.type = type;
        return made;
    };
    Vantel::OperatorInfo::Entry bands = entry("Bands", "");
    bands.summary = "One band per bundle.";
    bands.kinds.push_back({"Band", {entry("Gain", "Float")}});
    Vantel::OperatorInfo info;
    info.type = MixerOperator::Type();
    info.name = "Mixer";
    info.parameters = {entry("Mix", "Float"), bands};
    Vantel::TypeLibrary::Get()->RegisterOperator(info);
    const json types = Ok({{"type", "getTypes"}});
    for (const json& described : types["operators"]) {
        if (described["type"] == "Vantel.Test.Mixer") {
            EXPECT_EQ(described["parameters"], json::parse(R"([
                {"name": "Mix", "type": "Float", "description": ""},
                {"name": "Bands", "type": "", "description": "", "summary": "One band per bundle.",
                 "kinds": [{"name": "Band", "parameters": [{"name": "Gain", "type": "Float", "description": ""}]}]}])"));
            return;
        }
    }
    ADD_FAILURE() << "the mixer is not in the palette";
}

TEST_F(EditSessionModel, RefusalsSayWhy) {
    auto& mixer = Add<MixerOperator>(root);
    auto& nested = Add<Vantel::Graph>(root);
    auto& inner = Add<SourceOperator>(nested);
    auto& source = Add<SourceOperator>(root);
    Vantel::DataInput* layer = root.AddDataConnection(source.out, mixer.layers);
    mixer.bands.CreateBundle("Band", "Low");
    const std::string mix = PathOf(mixer.mix);
    const std::string low = PathOf(mixer.bands) + "/Low";
    const auto link = [&](const json& links) {
        return json{
            {"type", "connectParameter"}, {"output", PathOf(source.value)}, {"input", mix}, {"links", links}};
    };
    const struct {
        json request;
        std::string error;
    } rows[] = {
        {json::array(), "a request is a JSON object"},
        {{{"type", "flyAway"}}, "unknown request type 'flyAway'"},
        {{{"type", "removeOperator"}, {"path", "/Nobody"}}, "nothing answers to /Nobody"},
        {{{"type", "moveOperator"}, {"path", PathOf(mixer)}, {"position", {1, 2, 3}}},
         "'position' must be [x, y]"},
        {{{"type", "addOperator"}, {"operatorType", "Vantel.FloatParameter"}},
         "'Vantel.FloatParameter' is not an operator type that can be made"},
        {{{"type", "setValue"}, {"path", mix}, {"value", "fast"}}, "[json.exception.type_error.302]"},
        {{{"type", "connectData"}, {"output", PathOf(mixer.out)}, {"input", mix}},
         mix + " is neither a data input nor an input list"},
        {link({{4294967296LL, 0}}), "'links' must be a list of [source, target] component pairs"},
        {link({{0, 0, 0}}), "'links' must be a list of [source, target] component pairs"},
        {{{"type", "disconnectParameter"}, {"output", PathOf(source.value)}, {"input", mix}},
         "there is no such connection"},
        {{{"type", "disconnectData"}, {"output", PathOf(mixer.out)}, {"input", PathOf(*layer)}},
         "there is no such connection"},
        {{{"type", "copy"}, {"paths", json::array()}}, "'paths' must be a list of operator paths"},
        {{{"type", "batch"},
          {"name", "Two"},
          {"requests",
           {{{"type", "moveOperator"}, {"path", PathOf(mixer)}, {"position", {9, 9}}},
            {{"type", "removeOperator"}, {"path", "/Nobody"}}}}},
         "edit 2 of 2 (removeOperator): nothing answers to /Nobody"},
        {{{"type", "batch"}, {"name", "Back"}, {"requests", {{{"type", "undo"}}}}},
         "a batch holds edits only, not 'undo'"},
        {{{"type", "batch"}, {"name", "None"}, {"requests", json::array()}},
         "'requests' must be a non-empty list of edits"},
        {{{"type", "getGraph"}, {"path", 5}}, "'path' must be a string"},
        {{{"type", "getGraph"}, {"path", "Mixer"}}, "not an absolute path: 'Mixer'"},
        {{{"type", "moveOperator"}, {"path", PathOf(mixer)}}, "the request has no 'position'"},
        {{{"type", "removeOperator"}, {"path", "/"}}, "the project's root graph cannot be removed"},
        {{{"type", "setComponent"}, {"path", mix}, {"component", 0}, {"value", "x"}},
         "'value' must be a number"},
        {{{"type", "setComponent"}, {"path", mix}, {"component", 1}, {"value", 1}}, "Mix has no component 1"},
        {{{"type", "connectData"},
          {"output", PathOf(mixer.out)},
          {"input", PathOf(mixer.layers)},
          {"replace", 1}},
         "'replace' must be true or false"},
        {{{"type", "connectData"}, {"output", PathOf(mixer.out)}, {"input", PathOf(mixer.layers)}},
         "the list does not take this output"},
        {{{"type", "connectParameter"}, {"output", mix}, {"input", mix}}, "the connection is not allowed"},
        {{{"type", "connectParameter"},
          {"output", PathOf(source.value)},
          {"input", mix},
          {"links", {{2147483647, -2147483647 - 1}}}},
         "the connection is not allowed"},  // a component an int holds goes to the library
        {{{"type", "addUserPort"}, {"graph", PathOf(nested)}, {"direction", "across"}},
         "'direction' must be \"input\" or \"output\""},
        {{{"type", "addUserPort"}, {"graph", PathOf(nested)}, {"direction", "input"}, {"dataType", "Nope"}},
         "no data type 'Nope'"},
        {{{"type", "addUserParameter"}, {"graph", PathOf(nested)}, {"parameterType", "Vantel.Test.Mixer"}},
         "'Vantel.Test.Mixer' is not a parameter type"},
        {{{"type", "moveListInput"}, {"path", PathOf(mixer.out)}, {"index", 0}},
         PathOf(mixer.out) + " is a Vantel.DataOutput, not a Vantel.DataInput"},
        {{{"type", "moveListInput"}, {"path", PathOf(*layer)}, {"index", 5}}, "the input cannot move to 5"},
        {{{"type", "removeListInput"}}, "the request has no 'path'"},
        {{{"type", "moveBundle"}, {"path", low}, {"index", 2.5}},
         "'index' must be a whole number, 0 or more"},
        {{{"type", "moveBundle"}, {"path", low}, {"index", -1}}, "'index' must be a whole number, 0 or more"},
        {{{"type", "moveBundle"}, {"path", low}, {"index", 7}}, "the bundle cannot move to 7"},
        {{{"type", "copy"}, {"paths", {PathOf(mixer), PathOf(inner)}}},
         "the operators to copy must be of one graph"},
        {{{"type", "copy"}, {"paths", PathOf(mixer)}}, "'paths' must be a list of operator paths"},
        {{{"type", "paste"}, {"clipboard", 5}}, "'clipboard' must be what \"copy\" gave"},
    };
    const std::string before = Vantel::Serialization::SerializeProjectText(project);
    for (const auto& row : rows) {
        const json reply = Reply(row.request);
        EXPECT_EQ(reply["ok"], false) << row.request.dump();
        // A refusal of the library's own comes with its log lines below the reason.
        EXPECT_EQ(reply.value("error", "").substr(0, row.error.size()), row.error) << row.request.dump();
    }
    EXPECT_EQ(Vantel::Serialization::SerializeProjectText(project), before);
    EXPECT_TRUE(Ok({{"type", "getHistory"}})["undo"].empty());
}

TEST_F(EditSessionModel, FrameUpdatesReachNestedGraphsAndTheGraphReplyCarriesLayoutFlagsAndLists) {
    auto& nested = Add<Vantel::Graph>(root);
    auto& source = Add<SourceOperator>(nested);
    auto& mixer = Add<MixerOperator>(nested);
    mixer.mix.SetParameterFlag(Vantel::ParameterFlag::Structural, true);
    mixer.GetParameterGroup().MakeRow({&mixer.focus, &mixer.mix}, "Pair");
    mixer.GetParameterGroup().SetSeparatorAbove(&mixer.focus, true);
    mixer.SetPosition({1.5f, -2.0f});
    Vantel::DataInput* layer = nested.AddDataConnection(source.out, mixer.layers);
    std::vector<json> updates;
    session.SetPublisher([&updates](const json& update) { updates.push_back(update); });
    Ok({{"type", "setReference"}, {"path", PathOf(mixer.focus)}, {"target", PathOf(source)}});
    EXPECT_EQ(mixer.focus.Value(), &source);

    const json described = Ok({{"type", "getGraph"}, {"path", PathOf(nested)}})["operators"][1];
    EXPECT_EQ(described["position"], json::array({1.5, -2.0}));
    const json& focus = described["parameters"][1];
    const json& mix = described["parameters"][2];
    EXPECT_EQ(mix["name"], "Mix");
    EXPECT_EQ(mix["flags"], json::array({"marksOutdated", "structural"}));
    EXPECT_EQ(focus["referent"], PathOf(source));
    EXPECT_EQ(focus.value("rowLabel", ""), "Pair");
    EXPECT_EQ(focus.value("separatorAbove", false), true);
    EXPECT_EQ(mix.value("rowContinuation", false), true);
    EXPECT_FALSE(mix.contains("separatorAbove"));
    EXPECT_EQ(described["inputs"][0]["path"], PathOf(*layer));
    EXPECT_EQ(described["inputs"][0]["list"], PathOf(mixer.layers));

    Ok({{"type", "pause"}});
    Ok({{"type", "step"}});
    session.PublishFrameUpdate();
    const auto frame = std::find_if(updates.begin(), updates.end(),
                                    [](const json& update) { return update["event"] == "frame"; });
    ASSERT_NE(frame, updates.end());
    EXPECT_EQ((*frame)["values"][PathOf(mixer.mix)], 0.0);
    EXPECT_FALSE((*frame)["ran"].empty());

    // The next update lists only what ran since: in this frame, nothing.
    std::this_thread::sleep_for(std::chrono::milliseconds(50));  // updates come at most 30 times a second
    updates.clear();
    Ok({{"type", "step"}});
    session.PublishFrameUpdate();
    const auto next = std::find_if(updates.begin(), updates.end(),
                                   [](const json& update) { return update["event"] == "frame"; });
    ASSERT_NE(next, updates.end());
    EXPECT_EQ(next->value("ran", json::array({"absent"})), json::array());
    EXPECT_FALSE(next->value("values", json::object()).contains(PathOf(mixer.mix)));  // only changed values
}

class FailingOperator : public Vantel::Operator {
public:
    VANTEL_OBJECT_TYPE(FailingOperator, Operator, "Vantel.Test.Failing");
    void Execute(Vantel::ExecutionContext&) override { throw std::runtime_error("out of ink"); }
};

// A frame that throws pauses the session, says why, and tells the clients at once, not at their next request.
TEST_F(EditSessionModel, AFailingFramePausesTheSessionAndTellsTheClients) {
    Add<FailingOperator>(root);
    std::vector<json> updates;
    session.SetPublisher([&updates](const json& update) { updates.push_back(update); });
    const Vantel::Testing::LogCapture captured;
    while (session.RunDueFrame() > 0.0) {
    }
    EXPECT_EQ(captured.Text(), "[Error] The frame failed and the session paused: out of ink\n");
    ASSERT_FALSE(updates.empty());
    EXPECT_EQ(updates.back()["event"], "state");
    EXPECT_EQ(updates.back()["running"], false);
    EXPECT_EQ(Ok({{"type", "getState"}})["running"], false);
}

TEST(LogTee, KeepsTheMostRecentLinesAndPassesEveryLineOn) {
    std::ostringstream terminal;
    VantelHost::LogTee tee(terminal);
    const std::uint64_t start = tee.GetNextLineNumber();
    for (int i = 0; i < 300; ++i) {
        terminal << "line " << i << "\n";
    }
    EXPECT_EQ(tee.GetNextLineNumber(), start + 300);
    const std::vector<std::string> kept = tee.LinesSince(start);
    ASSERT_EQ(kept.size(), 256u);  // the most recent only
    EXPECT_EQ(kept.front(), "line 44");
    EXPECT_EQ(kept.back(), "line 299");
    EXPECT_EQ(tee.LinesSince(start + 299), std::vector<std::string>{"line 299"});
    EXPECT_NE(terminal.str().find("line 0\nline 1\n"), std::string::npos);  // the stream still gets all
}

}  // namespace
