#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <nlohmann/json.hpp>

#include <Vantel/Objects/ObjectType.h>
#include <Vantel/Objects/Path.h>
#include <Vantel/Objects/TypeLibrary.h>
#include <Vantel/Operators/Graph.h>
#include <Vantel/Parameters/EnumParameter.h>
#include <Vantel/Parameters/ParameterBundle.h>
#include <Vantel/Parameters/ParameterBundleList.h>
#include <Vantel/Projects/BuildInfo.h>
#include <Vantel/Projects/Deserialization.h>
#include <Vantel/Projects/Project.h>
#include <Vantel/Projects/Serialization.h>
#include <Vantel/Projects/Version.h>

#include "Support/LogCapture.h"
#include "Support/ProjectOperators.h"

namespace Vantel {
namespace {

using nlohmann::json;
using Testing::LogCapture;
using Testing::MirrorOperator;
using Testing::MixerOperator;
using Testing::NumberParameter;
using Testing::SourceOperator;

constexpr const char* kVersion = R"("version": {"format": 1, "software": "2640"})";

// A file loads or fails as a whole by its version and its root; a loaded file tells whether it is older or
// newer than this build.
TEST(Loader, WholeFilesLoadOrFailWithTheirReason) {
    Testing::RegisterProjectTestTypes();
    const std::string root = std::string("{") + kVersion + R"(, "root": )";
    const std::string failedRoot = "[Error] DeserializeProject: failed to read the root entry.\n";
    const std::string graph = R"(}, "root": {"type": "Vantel.General.Graph"}})";
    const struct {
        const char* name;
        std::string document;
        std::string log;
        bool loads = false;
        bool newer = false;
        bool older = false;
    } rows[] = {
        {"newer release", R"({"version": {"format": 1, "software": "2641")" + graph,
         "[Warning] DeserializeProject: the file was written by a newer Vantel than this build. Anything "
         "this build does not know is dropped.\n",
         true, true},
        {"older release", R"({"version": {"format": 1, "software": "2639")" + graph, "", true, false, true},
        {"development build",
         R"({"version": {"format": 1, "dev": {"commit": "abc", "modified": true})" + graph, "", true},
        {"not an object", "[1]", "[Error] DeserializeProject: expected a JSON object.\n"},
        {"no version", R"({"root": {"type": "Vantel.General.Graph"}})",
         "[Error] DeserializeProject: the file has no recognisable version, this build reads format 1.\n"},
        {"version not an object", R"({"version": "2640"})",
         "[Error] DeserializeProject: the file has no recognisable version, this build reads format 1.\n"},
        {"later format", R"({"version": {"format": 2, "software": "2640"}})",
         "[Error] DeserializeProject: unsupported project file format 2, this build reads format 1.\n"},
        {"no root", std::string("{") + kVersion + "}",
         "[Error] DeserializeOperator: expected a JSON object.\n" + failedRoot},
        {"root without type", root + R"({"key": "R"}})",
         "[Error] DeserializeOperator: an operator entry has no \"type\", it is dropped.\n" + failedRoot},
        {"unknown root type", root + R"({"type": "Vantel.Test.Gone"}})",
         "[Error] DeserializeOperator: type 'Vantel.Test.Gone' not found in type library.\n" + failedRoot},
        {"root of a parameter type", root + R"({"type": "Vantel.Test.NumberParameter"}})",
         "[Error] DeserializeOperator: type 'Vantel.Test.NumberParameter' not found in type library.\n" +
             failedRoot},
        {"root not a graph", root + R"({"type": "Vantel.Test.Source"}})",
         "[Error] DeserializeProject: the root entry is not a graph.\n"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        LogCapture log;
        EXPECT_EQ(Deserialization::DeserializeProject(json::parse(row.document)) != nullptr, row.loads);
        EXPECT_EQ(log.Text(), row.log);
        if (row.loads) {
            const ProjectFileVersion version =
                Deserialization::ReadProjectFileVersion(json::parse(row.document));
            EXPECT_EQ(version.IsNewerThanThisBuild(), row.newer);
            EXPECT_EQ(version.IsOlderThanThisBuild(), row.older);
        }
    }
    const ProjectFileVersion dev = Deserialization::ReadProjectFileVersion(
        json::parse(R"({"version": {"format": 1, "dev": {"commit": "abc", "commitsAfterRelease": 3}}})"));
    ASSERT_TRUE(dev.dev.has_value());
    EXPECT_EQ(dev.dev->commit, "abc");
    EXPECT_EQ(dev.dev->commitsAfterRelease, 3);
    EXPECT_FALSE(dev.software.has_value());
    // An older format is older whatever wrote it.
    EXPECT_TRUE(Deserialization::ReadProjectFileVersion(
                    json::parse(R"({"version": {"format": 0, "software": "2641"}})"))
                    .IsOlderThanThisBuild());

    // Wrong JSON types inside an entry are the caller's to catch.
    EXPECT_THROW(Deserialization::DeserializeProject(
                     json::parse(root + R"({"type": "Vantel.General.Graph", "name": 5}})")),
                 json::type_error);

    // Through a project: the old root stays, the failed file's version record is kept.
    Project project;
    Graph* before = project.GetRootGraph();
    const std::string later =
        (std::filesystem::temp_directory_path() / GenerateKey("later", [](std::string_view) {
             return true;
         })).string();
    std::ofstream(later) << R"({"version": {"format": 2}})";
    LogCapture log;
    EXPECT_FALSE(project.Deserialize(later));
    EXPECT_FALSE(project.Deserialize(later + ".missing"));
    EXPECT_EQ(log.Text(),
              "[Error] DeserializeProject: unsupported project file format 2, this build reads format 1.\n"
              "[Error] Project::Deserialize: failed to deserialize project from: " +
                  later + "\n" + "[Error] Project::Deserialize: file does not exist: " + later +
                  ".missing\n");
    EXPECT_EQ(project.GetRootGraph(), before);
    EXPECT_EQ(project.GetFileVersion().format, 2);
    std::filesystem::remove(later);
}

TEST(Loader, DroppedEntriesAreNamedAndTheRestLoads) {
    Testing::RegisterProjectTestTypes();
    const json document = json::parse(std::string("{") + kVersion + R"(, "root": {
        "type": "Vantel.General.Graph", "key": "Project [abc]", "name": "Root",
        "parameters": [{"key": "Odd", "type": "Vantel.Test.Nothing", "name": "Odd"}], "operators": [
            {"type": "Vantel.Test.Source", "key": "Source", "name": "Source", "position": [1, "x"],
             "parameters": [{"key": "Value", "value": 4.0}, {"key": "Nope", "value": 3}, [{"key": "In", "value": 1}]]},
            {"type": "Vantel.Test.Gone", "key": "Gone", "name": "Gone"},
            {"type": "Vantel.Test.Mixer", "key": "Mixer", "name": "Mixer", "position": [1, 2, 3],
             "dataInputs": [{"key": "Ghost", "inputs": [{"key": "C"}]},
                            {"key": "Layers", "inputs": [{"key": "A"}, {"key": "B"}]}],
             "parameters": [{"key": "Mix", "value": 0.25},
                            {"key": "Extra", "type": "Vantel.Test.NumberParameter", "name": "Extra"},
                            {"key": "More", "type": "Vantel.Test.NumberParameter", "name": "More"},
                            {"key": "Missing", "bundles": []},
                            {"key": "Bands", "bundles": [{"key": "Low", "kind": "Band",
                                                          "parameters": [{"key": "Q", "value": 2}]}]},
                            {"key": "Focus", "value": "Nowhere"}]},
            {"type": "Vantel.Test.Mirror", "key": "Copy", "name": "Copy",
             "parameters": [{"key": "Model", "value": "Source"}, {"key": "Bogus", "value": 1.0},
                            {"key": "Value", "value": null}]}],
        "dataConnections": [{"output": "Source/Out", "input": "Mixer/Layers/A"},
                            {"output": "Source/Out", "input": "Mixer/Layers/A"},
                            {"output": "Gone/Out", "input": "Mixer/Layers/B"},
                            {"output": "Source/Out", "input": "Mixer/Layers"}],
        "parameterConnections": [{"output": "Gone/Result", "input": "Mixer/Mix", "links": [[0, 0]]},
                                 {"output": "Source/Value", "input": "Mixer/Mix", "links": []},
                                 {"output": "Source/Value", "input": "Copy/Value", "links": [[0, 0]]},
                                 {"output": "Mixer/Mix", "input": "Copy/Value", "links": [[0, 0]]}]}})");
    LogCapture log;
    std::unique_ptr<Project> project = Deserialization::DeserializeProject(document);
    ASSERT_NE(project, nullptr);
    EXPECT_EQ(
        log.Text(),
        "[Error] DeserializeParameter: type 'Vantel.Test.Nothing' not found in type library.\n"
        "[Error] DeserializeOperator: the position of operator 'Source' is not two numbers, it is dropped.\n"
        "[Error] ApplyParameterValues: parameter 'Nope' not found in operator 'Source', its value is "
        "dropped.\n"
        "[Error] ApplyParameterValues: scope '2' not found in operator 'Source', its values are dropped.\n"
        "[Error] DeserializeOperator: type 'Vantel.Test.Gone' not found in type library.\n"
        "[Error] DeserializeOperator: failed to deserialize an operator of graph 'Root'.\n"
        "[Error] DeserializeOperator: the position of operator 'Mixer' is not two numbers, it is dropped.\n"
        "[Error] CreateListInputs: data input list 'Ghost' not found in operator 'Mixer', its inputs are "
        "dropped.\n"
        "[Error] CreateAddedMembers: operator 'Mixer' is not a graph, the added entry 'Extra' in "
        "\"parameters\" is dropped.\n"
        "[Error] CreateAddedMembers: operator 'Mixer' is not a graph, the added entry 'More' in "
        "\"parameters\" is dropped.\n"
        "[Error] CreateBundles: bundle list 'Missing' not found in operator 'Mixer', its bundles are "
        "dropped.\n"
        "[Error] ApplyParameterValues: parameter 'Q' not found in operator 'Mixer', its value is dropped.\n"
        "[Warning] PtrParameter::DeserializeValue: could not resolve 'Nowhere', the value is cleared.\n"
        "[Error] NumberParameter: null is no number, the value is kept.\n"
        "[Warning] Context::ResolveReferences: some stored values of operator 'Copy' did not match a member "
        "and are dropped.\n"
        "[Error] DeserializeDataConnections: failed to add connection 'Source/Out -> Mixer/Layers/A'.\n"
        "[Error] DeserializeDataConnections: could not resolve connection 'Gone/Out -> Mixer/Layers/B', it "
        "is dropped.\n"
        "[Error] DeserializeParameterConnections: could not resolve connection 'Gone/Result -> Mixer/Mix', "
        "it is dropped.\n"
        "[Error] DeserializeParameterConnections: connection 'Source/Value -> Mixer/Mix' has no links, it "
        "is dropped.\n"
        "[Error] DeserializeParameterConnections: failed to add connection 'Mixer/Mix -> Copy/Value'.\n"
        "[Warning] PruneOrphanListInputs: input 'B' of list 'Layers' in operator 'Mixer' has no connection "
        "and is removed. The file lost the connection to it, or the connection could not be made (see the "
        "error above it); connecting the source again recreates the input.\n");

    Graph& root = *project->GetRootGraph();
    EXPECT_EQ(root.GetKey(), "Project [abc]");
    ASSERT_EQ(root.GetOperators().size(), 3u);
    auto& source = dynamic_cast<SourceOperator&>(*root.Resolve(*Path::Parse("Source")));
    auto& mixer = dynamic_cast<MixerOperator&>(*root.Resolve(*Path::Parse("Mixer")));
    auto& copy = dynamic_cast<MirrorOperator&>(*root.Resolve(*Path::Parse("Copy")));
    EXPECT_EQ(source.value.Value(), 4.0);
    EXPECT_EQ(mixer.mix.Value(), 0.25);
    ASSERT_EQ(mixer.layers.GetInputCount(), 2u);  // A and the one the list connection made
    EXPECT_EQ(mixer.layers.GetInput(0)->GetKey(), "A");
    EXPECT_EQ(mixer.layers.GetInput(1)->GetConnection().output, &source.out);
    EXPECT_EQ(copy.model.Value(), &source);
    const Parameter* copied = copy.GetParameterGroup().FindParameter("Value");
    ASSERT_NE(copied, nullptr);
    ASSERT_EQ(copied->GetIncomingConnections().size(), 1u);  // the first of two into one component
    EXPECT_EQ(copied->GetIncomingConnections()[0].source, &source.value);

    // The same losses for the host, one entry per item, each owned by the object it belonged to.
    using Kind = DroppedEntry::Kind;
    const std::pair<Kind, std::string> expected[] = {
        {Kind::AddedMember, "/: Odd"},
        {Kind::Position, "/Source: position"},
        {Kind::ParameterValue, "/Source: Nope"},
        {Kind::ParameterScope, "/Source: 2"},  // a group, named by its place: the operator has none there
        {Kind::Operator, "/: Gone"},
        {Kind::Position, "/Mixer: position"},
        {Kind::ListInputs, "/Mixer: Ghost"},
        {Kind::AddedMember, "/Mixer: Extra"},
        {Kind::AddedMember, "/Mixer: More"},
        {Kind::BundleList, "/Mixer: Missing"},
        {Kind::ParameterValue, "/Mixer/Bands/Low: Q"},  // owned by the bundle it was in
        {Kind::ParameterValue, "/Mixer: Focus"},        // refused by the parameter itself
        {Kind::ParameterValue, "/Copy: Value"},         // so, with an error
        {Kind::ParameterValue, "/Copy: Bogus"},
        {Kind::DataConnection, "/: Source/Out -> Mixer/Layers/A"},
        {Kind::DataConnection, "/: Gone/Out -> Mixer/Layers/B"},
        {Kind::ParameterConnection, "/: Gone/Result -> Mixer/Mix"},
        {Kind::ParameterConnection, "/: Source/Value -> Mixer/Mix"},
        {Kind::ParameterConnection, "/: Mixer/Mix -> Copy/Value"},
        {Kind::ListInput, "/Mixer: Layers/B"},
    };
    const std::vector<DroppedEntry>& dropped = project->GetDroppedEntries();
    ASSERT_EQ(dropped.size(), std::size(expected));
    for (std::size_t i = 0; i < dropped.size(); ++i) {
        SCOPED_TRACE(expected[i].second);
        EXPECT_EQ(dropped[i].kind, expected[i].first);
        EXPECT_EQ(dropped[i].owner + ": " + dropped[i].key, expected[i].second);
        EXPECT_NE(log.Text().find(dropped[i].reason + "\n"), std::string::npos);
    }
    EXPECT_EQ(dropped[4].reason, "DeserializeOperator: type 'Vantel.Test.Gone' not found in type library.");
}

// Takes no more bundles than its operator has stages.
class StepList : public ParameterBundleList {
public:
    using ParameterBundleList::ParameterBundleList;
    std::size_t limit = 0;

protected:
    bool AcceptsChild(const ParameterNode& node) override {
        return GetBundleCount() < limit && ParameterBundleList::AcceptsChild(node);
    }
};

// Structural through a plain value: a positive "Stages" makes the bundle list "Steps", whose bundles (no more
// than "Stages") hold a "Gain", so the list's stored bundles find it only once the operator was rebuilt.
class StagedOperator : public Operator {
public:
    NumberParameter stages{this, "Stages", 0.0};
    EnumParameter order{this, "Order"};

    StagedOperator() {
        stages.SetParameterFlag(ParameterFlag::Structural, true);
        order.SetPossibleValues({"forward", "backward"});
    }
    VANTEL_OBJECT_TYPE(StagedOperator, Operator, "Vantel.Test.Staged");
    std::unique_ptr<StepList> steps;

protected:
    void UpdateStructure() override {
        if (stages.Value() > 0.0 && steps == nullptr) {
            steps = std::make_unique<StepList>(
                this, "Steps", BundleHandlers{.created = [](ParameterBundle& step) {
                    step.Add(std::make_unique<NumberParameter>(nullptr, "Gain"));
                }});
            steps->limit = static_cast<std::size_t>(stages.Value());
        }
    }
};

// What the parameters and lists refuse themselves is lost as well: logged by them, listed by the load.
TEST(Loader, ValuesOfMembersThatAStructuralValueCreatesAreRestored) {
    Testing::RegisterProjectTestTypes();
    static const bool registered = (TypeLibrary::Get()->RegisterType(StagedOperator::Type()), true);
    static_cast<void>(registered);
    const auto load = [](const char* stages) {
        return Deserialization::DeserializeProject(json::parse(std::string("{") + kVersion + R"(, "root": {
            "type": "Vantel.General.Graph", "operators": [{"type": "Vantel.Test.Staged", "key": "Staged",
            "name": "Staged", "parameters": [{"key": "Stages", "value": )" +
                                                               stages +
                                                               R"(}, {"key": "Order", "value": "sideways"},
            {"key": "Steps", "bundles": [
                {"key": "A", "kind": "Step", "parameters": [{"key": "Gain", "value": 0.5}]},
                {"key": "B", "kind": "Step"}, {"key": "C", "kind": "Step"}]}]}]}})"));
    };
    using Kind = DroppedEntry::Kind;
    const std::string order = "EnumParameter '/Order': 'sideways' is not one of the choices.";
    LogCapture log;
    const std::unique_ptr<Project> project = load("1");
    ASSERT_NE(project, nullptr);
    const auto refused = [](const std::string& key) {
        return "CreateBundles: bundle list 'Steps' in operator 'Staged' refused bundle '" + key +
               "' of kind 'Step', it is dropped.";
    };
    EXPECT_EQ(log.Text(),
              "[Warning] " + order + "\n[Error] " + refused("B") + "\n[Error] " + refused("C") + "\n");
    EXPECT_EQ(project->GetDroppedEntries(),
              (std::vector<DroppedEntry>{{Kind::ParameterValue, "/Staged", "Order", order},
                                         {Kind::Bundle, "/Staged/Steps", "B", refused("B")},
                                         {Kind::Bundle, "/Staged/Steps", "C", refused("C")}}));
    const auto* staged = dynamic_cast<StagedOperator*>(project->GetRootGraph()->GetOperators().at(0));
    ASSERT_NE(staged->steps, nullptr);
    ASSERT_EQ(staged->steps->GetBundles().size(), 1u);
    EXPECT_EQ(static_cast<NumberParameter*>(staged->steps->GetBundles()[0]->Find("Gain"))->Value(), 0.5);

    // Without the structural value the list never comes, and its bundles are reported once.
    log.Clear();
    const std::unique_ptr<Project> flat = load("0");
    ASSERT_NE(flat, nullptr);
    const std::string reason =
        "CreateBundles: bundle list 'Steps' not found in operator 'Staged', its bundles are dropped.";
    EXPECT_EQ(log.Text(), "[Warning] " + order + "\n[Error] " + reason + "\n");
    EXPECT_EQ(flat->GetDroppedEntries(),
              (std::vector<DroppedEntry>{{Kind::ParameterValue, "/Staged", "Order", order},
                                         {Kind::BundleList, "/Staged", "Steps", reason}}));
}

TEST(Loader, OwnStructureIsRebuiltOnlyWhenItDiffersAndAContextKeepsWhatItDefers) {
    Testing::RegisterProjectTestTypes();
    Graph graph;
    graph.AddUserParameter(NumberParameter::Type(), false)->SetName("First");
    graph.AddUserParameter(NumberParameter::Type(), true);
    const json structure = Serialization::SerializeOwnStructure(graph);
    Deserialization::Context context;
    EXPECT_FALSE(Deserialization::RestoreOwnStructure(graph, structure, context));

    const json other = json::parse(R"([{"key": "Only", "name": "Only", "type": "Vantel.Test.NumberParameter",
                                        "value": 2.0, "output": true}])");
    EXPECT_TRUE(Deserialization::RestoreOwnStructure(graph, other, context));
    EXPECT_EQ(Serialization::SerializeOwnStructure(graph), json::parse(R"([{"key": "Only", "name": "Only",
        "type": "Vantel.Test.NumberParameter", "output": true}])"));  // an output's value is not stored
    EXPECT_EQ(static_cast<NumberParameter*>(graph.GetParameterGroup().FindParameter("Only"))->Value(), 2.0);
    EXPECT_TRUE(Deserialization::RestoreOwnStructure(graph, structure, context));
    EXPECT_EQ(Serialization::SerializeOwnStructure(graph), structure);

    // An operator that is no graph takes them as parameters its user added, too.
    Operator plain;
    EXPECT_TRUE(Deserialization::RestoreOwnStructure(plain, other, context));
    Parameter* only = plain.GetParameterGroup().FindParameter("Only");
    ASSERT_NE(only, nullptr);
    EXPECT_TRUE(only->IsAddedByUser());

    // Into an existing member, the stored key is taken only while it is detached; the name always.
    LogCapture log;
    Deserialization::DeserializeParameter(json{{"key", "Renamed"}, {"name", "Shown"}}, *only, context);
    EXPECT_EQ(only->GetKey(), "Only");
    EXPECT_EQ(only->GetName(), "Shown");
    DataOutput detached;
    Deserialization::DeserializeDataOutput(json{{"name", "Unkeyed"}}, detached, context);
    EXPECT_EQ(detached.GetKey(), "");  // no operator gave it one
    Deserialization::DeserializeDataOutput(json{{"key", "Stored"}}, detached, context);
    EXPECT_EQ(detached.GetKey(), "Stored");
    EXPECT_EQ(log.Text(), "");

    // What a context defers it keeps: the entry may be gone by the time the connections are made.
    Deserialization::Context deferring;
    std::unique_ptr<Operator> made;
    {
        const json entry = json::parse(R"({"type": "Vantel.General.Graph", "key": "G", "operators": [
            {"type": "Vantel.Test.Source", "key": "S"}, {"type": "Vantel.Test.Add", "key": "A"}],
            "dataConnections": [{"output": "S/Out", "input": "A/In"}],
            "parameterConnections": [{"output": "S/Value", "input": "A/Offset", "links": [[0, 0]]}]})");
        made = Deserialization::DeserializeOperator(entry, deferring);
    }
    deferring.ResolveReferences();
    const auto* loaded = dynamic_cast<const Graph*>(made.get());
    ASSERT_NE(loaded, nullptr);
    EXPECT_EQ(loaded->GetDataConnections().size(), 1u);
    EXPECT_EQ(loaded->GetParameterConnections().size(), 1u);
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

    // A component number no int holds names no component: the connection is refused, not wrapped round.
    const std::string connection =
        R"("parameterConnections": [{"output": "Source/Value", "input": "Add/Offset", )";
    for (const char* component : {"4294967296", "-4294967296", "1e99", "-1e99"}) {
        log.Clear();
        project = load(connection + R"("links": [[)" + component + ", 0]]}]");
        ASSERT_NE(project, nullptr);
        EXPECT_EQ(log.Text(),
                  "[Error] DeserializeParameterConnections: failed to add connection 'Source/Value -> "
                  "Add/Offset'.\n")
            << component;
        EXPECT_TRUE(project->GetRootGraph()->GetParameterConnections().empty()) << component;
    }

    // A text of the wrong type is the file's type error, as before, with the JSON library's own message.
    const auto typeError = [&load](const std::string& connections) -> std::string {
        try {
            load(connections);
        } catch (const json::type_error& error) {
            return error.what();
        }
        return "no type error";
    };
    EXPECT_EQ(typeError(R"("dataConnections": [{"output": 5, "input": "Add/In"}])"),
              "[json.exception.type_error.302] type must be string, but is number");
    EXPECT_EQ(
        typeError(R"("parameterConnections": [{"output": "Source/Value", "input": [], "links": [[0, 0]]}])"),
        "[json.exception.type_error.302] type must be string, but is array");
}

TEST(Version, ParseAndPrintAndCompareYearThenWeekThenPatch) {
    struct Row {
        const char* text;
        Version version;
        const char* printed;
    };
    const Row rows[] = {
        {"2609", {26, 9, 0}, "2609"},
        {"2610", {26, 10, 0}, "2610"},
        {"2640.3", {26, 40, 3}, "2640.3"},
        {"0000.1", {0, 0, 1}, "000.1"},
        {"2605.65535", {26, 5, 65535}, "2605.65535"},
        {"2605.0", {26, 5, 0}, "2605"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.text);
        const Version parsed = Version::Parse(row.text);
        EXPECT_EQ(parsed, row.version);
        EXPECT_EQ(parsed.ToString(), row.printed);
    }
    for (const char* bad : {"26050", "2605.", "2605.x", "2605.+1", "2605. 1", "2605.70000", "2605.65536",
                            "260a", "", "2605.1.2", "-605", "bad"}) {
        SCOPED_TRACE(bad);
        EXPECT_EQ(Version::Parse(bad), Version());
        EXPECT_TRUE(Version::Parse(bad).IsEmpty());
        EXPECT_EQ(Version::Parse(bad).ToString(), "000");
    }

    EXPECT_LT(Version::Parse("2639.9"), Version::Parse("2640"));
    EXPECT_LT(Version::Parse("2640"), Version::Parse("2640.1"));
    EXPECT_LT(Version::Parse("2552"), Version::Parse("2601"));
    EXPECT_GT(Version::Parse("2641"), BuildInfo::GetReleaseVersion());
    // The release's version is in every file; a release is built from its commit unchanged.
    EXPECT_EQ(BuildInfo::GetDisplayString(), "alpha 2640");
    EXPECT_FALSE(BuildInfo::IsModified());
}

}  // namespace
}  // namespace Vantel
