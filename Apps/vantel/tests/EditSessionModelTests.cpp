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

TEST(EditSessionModel, FrameUpdatesReachNestedGraphsAndTheGraphReplyNamesFlags) {
    Vantel::Testing::RegisterProjectTestTypes();
    Vantel::Project project;
    auto nested = std::make_unique<Vantel::Graph>();
    auto owned = std::make_unique<Vantel::Testing::MixerOperator>();
    Vantel::Testing::MixerOperator& mixer = *owned;
    mixer.mix.SetParameterFlag(Vantel::ParameterFlag::Structural, true);
    nested->AddOperator(std::move(owned));
    project.GetRootGraph()->AddOperator(std::move(nested));
    std::ostringstream sink;
    VantelHost::LogTee log(sink);
    VantelHost::EditSession session(project, std::filesystem::temp_directory_path() / "vantel-nested.json",
                                    60.0, log);
    std::vector<json> updates;
    session.SetPublisher([&updates](const json& update) { updates.push_back(update); });

    const json graph =
        json::parse(session.Handle({{"type", "getGraph"}, {"path", mixer.GetGraph()->GetPath().ToString()}}));
    const json& mix = graph["result"]["operators"][0]["parameters"][2];
    EXPECT_EQ(mix["name"], "Mix");
    EXPECT_EQ(mix["flags"], json::array({"marksOutdated", "structural"}));

    session.Handle({{"type", "pause"}});
    session.Handle({{"type", "step"}});
    session.PublishFrameUpdate();
    const auto frame = std::find_if(updates.begin(), updates.end(),
                                    [](const json& update) { return update["event"] == "frame"; });
    ASSERT_NE(frame, updates.end());
    EXPECT_EQ((*frame)["values"][mixer.mix.GetPath().ToString()], 0.0);
}

}  // namespace
