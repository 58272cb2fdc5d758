// The edit session in process, on the library's test operators: requests whose types the bundled example and
// the Standard plug-in do not have.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include <Vantel/Operators/Graph.h>
#include <Vantel/Parameters/ParameterBundle.h>
#include <Vantel/Projects/Project.h>
#include <Vantel/Projects/Serialization.h>

#include "Edit/EditSession.h"
#include "Edit/LogTee.h"
#include "Support/ProjectOperators.h"

namespace {

using nlohmann::json;

TEST(EditSessionModel, BundlesAreAddedMovedAndRemovedAsEditsThatUndo) {
    Vantel::Testing::RegisterProjectTestTypes();
    Vantel::Project project;
    auto owned = std::make_unique<Vantel::Testing::MixerOperator>();
    Vantel::Testing::MixerOperator& mixer = *owned;
    project.GetRootGraph()->AddOperator(std::move(owned));
    std::ostringstream sink;
    VantelHost::LogTee log(sink);
    VantelHost::EditSession session(project, std::filesystem::temp_directory_path() / "vantel-bundles.json",
                                    60.0, log);
    const auto ok = [&session](const json& request) {
        const json reply = json::parse(session.Handle(request));
        EXPECT_EQ(reply["ok"], true) << request.dump() << " -> " << reply.dump();
        return reply["result"];
    };
    const auto keys = [&mixer] {
        std::string text;
        for (const Vantel::ParameterBundle* bundle : mixer.bands.GetBundles()) {
            text += bundle->GetKey() + ";";
        }
        return text;
    };

    const std::string list = mixer.bands.GetPath().ToString();
    const std::string first = ok({{"type", "addBundle"}, {"list", list}, {"kind", "Band"}})["path"];
    const std::string second = ok({{"type", "addBundle"}, {"list", list}, {"kind", "Band"}})["path"];
    const std::string added = keys();
    ok({{"type", "moveBundle"}, {"path", second}, {"index", 0}});
    const std::string moved = keys();
    const json bands =
        json::parse(session.Handle({{"type", "getGraph"}}))["result"]["operators"][0]["parameters"][0];
    EXPECT_EQ(bands["kind"], "bundleList");
    EXPECT_EQ(bands["children"][0]["kind"], "bundle");
    EXPECT_EQ(json::parse(session.Handle({{"type", "moveBundle"}, {"path", first}, {"index", -1}}))["error"],
              "'index' must be a whole number, 0 or more");
    ok({{"type", "removeBundle"}, {"path", second}});  // the first: undo puts it back in front
    EXPECT_EQ(mixer.bands.GetBundles().size(), 1u);

    ok({{"type", "undo"}});
    EXPECT_EQ(keys(), moved);
    ok({{"type", "undo"}});
    EXPECT_EQ(keys(), added);
    ok({{"type", "undo"}});
    ok({{"type", "undo"}});
    EXPECT_TRUE(mixer.bands.GetBundles().empty());
    EXPECT_EQ(ok({{"type", "getHistory"}})["redo"].size(), 4u);

    // A list input whose source stayed behind is not pasted.
    auto source = std::make_unique<Vantel::Testing::SourceOperator>();
    Vantel::DataOutput& out = source->out;
    project.GetRootGraph()->AddOperator(std::move(source));
    ok({{"type", "connectData"},
        {"output", out.GetPath().ToString()},
        {"input", mixer.layers.GetPath().ToString()}});
    const json clipboard = ok({{"type", "copy"}, {"paths", {mixer.GetPath().ToString()}}});
    const std::string pasted = ok({{"type", "paste"}, {"clipboard", clipboard}})["paths"][0];
    auto& copy =
        dynamic_cast<Vantel::Testing::MixerOperator&>(*project.Resolve(*Vantel::Path::Parse(pasted)));
    EXPECT_EQ(mixer.layers.GetInputs().size(), 1u);
    EXPECT_TRUE(copy.layers.GetInputs().empty());
}

// Each refusal names what was wrong and leaves no step in the history.
TEST(EditSessionModel, RefusalsSayWhy) {
    Vantel::Testing::RegisterProjectTestTypes();
    Vantel::Project project;
    Vantel::Graph& root = *project.GetRootGraph();
    auto& mixer = Vantel::Testing::Add<Vantel::Testing::MixerOperator>(root);
    auto& nested = Vantel::Testing::Add<Vantel::Graph>(root);
    auto& inner = Vantel::Testing::Add<Vantel::Testing::SourceOperator>(nested);
    auto& source = Vantel::Testing::Add<Vantel::Testing::SourceOperator>(root);
    Vantel::DataInput* layer = root.AddDataConnection(source.out, mixer.layers);
    mixer.bands.CreateBundle("Band", "Low");
    std::ostringstream sink;
    VantelHost::LogTee log(sink);
    VantelHost::EditSession session(project, std::filesystem::temp_directory_path() / "vantel-refusals.json",
                                    60.0, log);
    const auto path = [](Vantel::Object& object) { return object.GetPath().ToString(); };
    const std::string mix = path(mixer.mix);
    const std::string low = path(mixer.bands) + "/Low";
    const struct {
        json request;
        std::string error;
    } rows[] = {
        {json::array(), "a request is a JSON object"},
        {{{"type", "getGraph"}, {"path", 5}}, "'path' must be a string"},
        {{{"type", "getGraph"}, {"path", "Mixer"}}, "not an absolute path: 'Mixer'"},
        {{{"type", "moveOperator"}, {"path", path(mixer)}}, "the request has no 'position'"},
        {{{"type", "removeOperator"}, {"path", "/"}}, "the project's root graph cannot be removed"},
        {{{"type", "setComponent"}, {"path", mix}, {"component", 0}, {"value", "x"}},
         "'value' must be a number"},
        {{{"type", "setComponent"}, {"path", mix}, {"component", 1}, {"value", 1}}, "Mix has no component 1"},
        {{{"type", "connectData"},
          {"output", path(mixer.out)},
          {"input", path(mixer.layers)},
          {"replace", 1}},
         "'replace' must be true or false"},
        {{{"type", "connectData"}, {"output", path(mixer.out)}, {"input", path(mixer.layers)}},
         "the list does not take this output"},
        {{{"type", "connectParameter"}, {"output", mix}, {"input", mix}}, "the connection is not allowed"},
        {{{"type", "addUserPort"}, {"graph", path(nested)}, {"direction", "across"}},
         "'direction' must be \"input\" or \"output\""},
        {{{"type", "addUserPort"}, {"graph", path(nested)}, {"direction", "input"}, {"dataType", "Nope"}},
         "no data type 'Nope'"},
        {{{"type", "addUserParameter"}, {"graph", path(nested)}, {"parameterType", "Vantel.Test.Mixer"}},
         "'Vantel.Test.Mixer' is not a parameter type"},
        {{{"type", "moveListInput"}, {"path", path(mixer.out)}, {"index", 0}},
         path(mixer.out) + " is a Vantel.DataOutput, not a Vantel.DataInput"},
        {{{"type", "moveListInput"}, {"path", path(*layer)}, {"index", 5}}, "the input cannot move to 5"},
        {{{"type", "removeListInput"}}, "the request has no 'path'"},
        {{{"type", "moveBundle"}, {"path", low}, {"index", 2.5}},
         "'index' must be a whole number, 0 or more"},
        {{{"type", "moveBundle"}, {"path", low}, {"index", 7}}, "the bundle cannot move to 7"},
        {{{"type", "copy"}, {"paths", {path(mixer), path(inner)}}},
         "the operators to copy must be of one graph"},
        {{{"type", "copy"}, {"paths", path(mixer)}}, "'paths' must be a list of operator paths"},
        {{{"type", "paste"}, {"clipboard", 5}}, "'clipboard' must be what \"copy\" gave"},
    };
    const std::string before = Vantel::Serialization::SerializeProjectText(project);
    for (const auto& row : rows) {
        const json reply = json::parse(session.Handle(row.request));
        EXPECT_EQ(reply["ok"], false) << row.request.dump();
        // A refusal of the library's own comes with its log lines below the reason.
        EXPECT_EQ(reply.value("error", "").substr(0, row.error.size()), row.error) << row.request.dump();
    }
    EXPECT_EQ(Vantel::Serialization::SerializeProjectText(project), before);
    EXPECT_TRUE(json::parse(session.Handle({{"type", "getHistory"}}))["result"]["undo"].empty());
}

TEST(EditSessionModel, FrameUpdatesReachNestedGraphsAndTheGraphReplyCarriesLayoutFlagsAndLists) {
    Vantel::Testing::RegisterProjectTestTypes();
    Vantel::Project project;
    auto nested = std::make_unique<Vantel::Graph>();
    auto owned = std::make_unique<Vantel::Testing::MixerOperator>();
    Vantel::Testing::MixerOperator& mixer = *owned;
    mixer.mix.SetParameterFlag(Vantel::ParameterFlag::Structural, true);
    mixer.GetParameterGroup().MakeRow({&mixer.focus, &mixer.mix}, "Pair");
    mixer.GetParameterGroup().SetSeparatorAbove(&mixer.focus, true);
    auto& source = Vantel::Testing::Add<Vantel::Testing::SourceOperator>(*nested);
    nested->AddOperator(std::move(owned));
    Vantel::DataInput* layer = nested->AddDataConnection(source.out, mixer.layers);
    project.GetRootGraph()->AddOperator(std::move(nested));
    std::ostringstream sink;
    VantelHost::LogTee log(sink);
    VantelHost::EditSession session(project, std::filesystem::temp_directory_path() / "vantel-nested.json",
                                    60.0, log);
    std::vector<json> updates;
    session.SetPublisher([&updates](const json& update) { updates.push_back(update); });

    const json graph =
        json::parse(session.Handle({{"type", "getGraph"}, {"path", mixer.GetGraph()->GetPath().ToString()}}));
    const json& described = graph["result"]["operators"][1];
    const json& focus = described["parameters"][1];
    const json& mix = described["parameters"][2];
    EXPECT_EQ(mix["name"], "Mix");
    EXPECT_EQ(mix["flags"], json::array({"marksOutdated", "structural"}));
    EXPECT_EQ(focus.value("rowLabel", ""), "Pair");
    EXPECT_EQ(focus.value("separatorAbove", false), true);
    EXPECT_EQ(mix.value("rowContinuation", false), true);
    EXPECT_FALSE(mix.contains("separatorAbove"));
    EXPECT_EQ(described["inputs"][0]["path"], layer->GetPath().ToString());
    EXPECT_EQ(described["inputs"][0]["list"], mixer.layers.GetPath().ToString());

    session.Handle({{"type", "pause"}});
    session.Handle({{"type", "step"}});
    session.PublishFrameUpdate();
    const auto frame = std::find_if(updates.begin(), updates.end(),
                                    [](const json& update) { return update["event"] == "frame"; });
    ASSERT_NE(frame, updates.end());
    EXPECT_EQ((*frame)["values"][mixer.mix.GetPath().ToString()], 0.0);
}

}  // namespace
