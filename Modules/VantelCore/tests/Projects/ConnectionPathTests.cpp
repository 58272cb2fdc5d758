#include <gtest/gtest.h>

#include <memory>
#include <string>

#include <nlohmann/json.hpp>

#include <Vantel/Objects/Path.h>
#include <Vantel/Operators/Graph.h>
#include <Vantel/Projects/Deserialization.h>
#include <Vantel/Projects/Project.h>
#include <Vantel/Projects/Serialization.h>

#include "Support/LogCapture.h"
#include "Support/ProjectOperators.h"

namespace Vantel {
namespace {

using nlohmann::json;
using Testing::Add;
using Testing::AddOperator;
using Testing::LogCapture;
using Testing::MixerOperator;
using Testing::NumberParameter;
using Testing::SourceOperator;

TEST(ConnectionPaths, EndpointsAreWrittenBelowTheConsumersGraphSortedAndReadBack) {
    Testing::RegisterProjectTestTypes();
    Project project;
    Graph& root = *project.GetRootGraph();
    auto& inner = Add<Graph>(root, "Inner");
    auto& source = Add<SourceOperator>(inner, "Source");
    auto& mixer = Add<MixerOperator>(inner, "Mixer");
    auto& top = Add<SourceOperator>(root, "Top");
    auto& add = Add<AddOperator>(root, "Add");
    ParameterBundle* band = mixer.bands.CreateBundle("Band", "Low");
    ASSERT_NE(band, nullptr);
    auto* gain = dynamic_cast<NumberParameter*>(band->Find("Gain"));
    ASSERT_NE(gain, nullptr);
    EXPECT_EQ(gain->GetOperator(), &mixer);  // from a bundle, two groups below the root group
    EXPECT_EQ(band->GetOperator(), &mixer);
    EXPECT_EQ(NumberParameter(nullptr, "Loose").GetOperator(), nullptr);

    // Made in the reverse of the written order.
    ASSERT_TRUE(inner.AddParameterConnection(
        {&source.value, &mixer.mix, WholeValueLinks(source.value, mixer.mix)}, false));
    ASSERT_TRUE(
        inner.AddParameterConnection({&source.value, gain, WholeValueLinks(source.value, *gain)}, false));
    DataInput* layer = inner.AddDataConnection(source.out, mixer.layers);
    ASSERT_NE(layer, nullptr);
    ASSERT_TRUE(root.AddDataConnection({&top.out, &add.in}));

    const std::string sourceKey = source.GetKey() + "/";
    const std::string mixerKey = mixer.GetKey() + "/";
    EXPECT_EQ(gain->GetRelativePath(inner).ToString(), mixerKey + "Bands/Low/Gain");
    EXPECT_EQ(
        Serialization::SerializeParameterConnections(inner.GetParameterConnections()),
        json::parse(R"([{"input": ")" + mixerKey + R"(Bands/Low/Gain", "links": [[0, 0]], "output": ")" +
                    sourceKey + R"(Value"}, {"input": ")" + mixerKey +
                    R"(Mix", "links": [[0, 0]], "output": ")" + sourceKey + R"(Value"}])"));
    EXPECT_EQ(Serialization::SerializeDataConnections(inner.GetDataConnections()),
              json::parse(R"([{"input": ")" + layer->GetRelativePath(inner).ToString() + R"(", "output": ")" +
                          sourceKey + R"(Out"}])"));
    EXPECT_EQ(
        Serialization::SerializeDataConnections(root.GetDataConnections()),
        json::parse(R"([{"input": ")" + add.GetKey() + R"(/In", "output": ")" + top.GetKey() + R"(/Out"}])"));

    // Both graphs' connections come back from one load, and the loaded tree writes the same document.
    const json document = Serialization::SerializeProject(project);
    LogCapture log;
    const std::unique_ptr<Project> loaded = Deserialization::DeserializeProject(document);
    ASSERT_NE(loaded, nullptr);
    EXPECT_EQ(log.Text(), "");
    EXPECT_EQ(Serialization::SerializeProject(*loaded), document);
    auto* loadedInner = dynamic_cast<Graph*>(loaded->Resolve(*Path::Parse("/" + inner.GetKey())));
    ASSERT_NE(loadedInner, nullptr);
    EXPECT_EQ(loadedInner->GetDataConnections().size(), 1u);
    EXPECT_EQ(loadedInner->GetParameterConnections().size(), 2u);
    EXPECT_EQ(loaded->GetRootGraph()->GetDataConnections().size(), 1u);
}

TEST(ConnectionPaths, StoredTextsResolveAsPathsDo) {
    Testing::RegisterProjectTestTypes();
    const auto load = [](const std::string& connections) {
        return Deserialization::DeserializeProject(json::parse(
            R"({"version": {"format": 1, "software": "2640"}, "root": {"type": "Vantel.General.Graph", "operators": [
                {"type": "Vantel.Test.Source", "key": "Source"}, {"type": "Vantel.Test.Add", "key": "Add"}],
                )" +
            connections + "}}"));
    };
    const std::string dropped = "[Error] DeserializeDataConnections: could not resolve connection '";
    LogCapture log;
    // A leading "/" is allowed; an empty piece, "..", no text or an empty one resolve nothing (the empty
    // text is the graph itself, which is no output).
    std::unique_ptr<Project> project = load(R"("dataConnections": [
        {"output": "Source//Out", "input": "Add/In"}, {"output": "Source/..", "input": "Add/In"},
        {"input": "Add/In"}, {"output": "/", "input": "Add/In"}, {"output": "/Source/Out", "input": "Add/In"}],
        "parameterConnections": [{"output": "/Source/Value", "input": "Add/Offset", "links": [[0, 0]]}])");
    ASSERT_NE(project, nullptr);
    EXPECT_EQ(log.Text(), dropped + "Source//Out -> Add/In', it is dropped.\n" + dropped +
                              "Source/.. -> Add/In', it is dropped.\n" + dropped +
                              " -> Add/In', it is dropped.\n" + dropped + "/ -> Add/In', it is dropped.\n");
    EXPECT_EQ(project->GetRootGraph()->GetDataConnections().size(), 1u);
    EXPECT_EQ(project->GetRootGraph()->GetParameterConnections().size(), 1u);

    // A text of the wrong type is the file's type error, as before.
    EXPECT_THROW(load(R"("dataConnections": [{"output": 5, "input": "Add/In"}])"), json::type_error);
    EXPECT_THROW(
        load(R"("parameterConnections": [{"output": "Source/Value", "input": [], "links": [[0, 0]]}])"),
        json::type_error);
}

}  // namespace
}  // namespace Vantel
