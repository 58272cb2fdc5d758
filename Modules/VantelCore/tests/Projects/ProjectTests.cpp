#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <limits>
#include <memory>
#include <regex>
#include <set>
#include <string>
#include <system_error>

#include <Vantel/Operators/Graph.h>
#include <Vantel/Operators/GraphInputsOperator.h>
#include <Vantel/Operators/GraphOutputsOperator.h>
#include <Vantel/Parameters/BoolParameter.h>
#include <Vantel/Parameters/FloatParameter.h>
#include <Vantel/Parameters/IntParameter.h>
#include <Vantel/Parameters/ParameterGroup.h>
#include <Vantel/Parameters/StringParameter.h>
#include <Vantel/Parameters/VectorParameter.h>
#include <Vantel/Projects/Deserialization.h>
#include <Vantel/Projects/Project.h>
#include <Vantel/Projects/Serialization.h>
#include <Vantel/Projects/Transaction.h>
#include <Vantel/Support/Utf8Paths.h>

#include "Support/LogCapture.h"
#include "Support/ProjectOperators.h"
#include "Support/TestOperators.h"

namespace Vantel {
namespace {

using Testing::Add;
using Testing::AddOperator;
using Testing::LogCapture;
using Testing::MirrorOperator;
using Testing::MixerOperator;
using Testing::NumberParameter;
using Testing::SourceOperator;

std::string TempFile(std::string_view name) {
    return (std::filesystem::temp_directory_path() /
            (std::string(name) + GenerateKey("", [](std::string_view) { return true; }) + ".vantel"))
        .string();
}

std::string ReadFile(const std::string& path) {
    std::ifstream file(path);
    return std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

TEST(Project, NewProjectsKeyTheirRootWriteTheirExactDocumentAndKeepGivenRoots) {
    Project project;
    EXPECT_TRUE(std::regex_match(project.GetRootGraph()->GetKey(), std::regex(R"(Project \[[0-9a-z]+\])")));
    EXPECT_EQ(Serialization::SerializeProjectText(project), R"({
    "root": {
        "dataInputs": [],
        "dataOutputs": [],
        "key": ")" + project.GetRootGraph()->GetKey() +
                                                                R"(",
        "name": "",
        "operators": [],
        "parameters": [],
        "position": [
            0.0,
            0.0
        ],
        "type": "Vantel.General.Graph"
    },
    "version": {
        "format": 1,
        "software": "2640"
    }
})");

    SourceOperator& source = Add<SourceOperator>(*project.GetRootGraph(), "Source");
    EXPECT_EQ(project.Resolve(*Path::Parse("/" + source.GetKey() + "/Value")), &source.value);
    EXPECT_EQ(project.Resolve(*Path::Parse(source.GetKey() + "/Nothing")), nullptr);

    Graph* before = project.GetRootGraph();
    project.SetRootGraph(nullptr);
    EXPECT_EQ(project.GetRootGraph(), before);
    auto keyed = std::make_unique<Graph>();
    keyed->SetKey("Mine");
    project.SetRootGraph(std::move(keyed));
    EXPECT_EQ(project.GetRootGraph()->GetKey(), "Mine");
    EXPECT_EQ(project.Resolve(Path()), project.GetRootGraph());
}

// Everything a file stores: nested graph with boundary operators, user ports and parameters, an input list,
// bundles, both kinds of connection, plain and structural references.
struct Scene {
    Project project;
    Graph& root = *project.GetRootGraph();
    SourceOperator& source = Add<SourceOperator>(root, "Source");
    Graph& nested = Add<Graph>(root, "Nested");
    MixerOperator& mixer = Add<MixerOperator>(root, "Mixer \xC3\xBC");
    MirrorOperator& mirror = Add<MirrorOperator>(root, "Copy");
    GraphInputsOperator& inputs = Add<GraphInputsOperator>(nested, "In");
    AddOperator& adder = Add<AddOperator>(nested, "Add");
    GraphOutputsOperator& outputs = Add<GraphOutputsOperator>(nested, "Out");

    Scene() {
        source.value.SetValue(2.5);
        source.SetPosition({10.25f, -3.5f});
        source.out.Activate(std::make_shared<Testing::NumberData>(1.0));  // connected inputs receive a change
        DataInput* in = nested.AddUserDataInput(DataInput::Type());
        DataOutput* out = nested.AddUserDataOutput(DataOutput::Type());
        Parameter* gain = nested.AddUserParameter(NumberParameter::Type(), false);
        Parameter* total = nested.AddUserParameter(NumberParameter::Type(), true);
        gain->SetName("Gain");
        EXPECT_TRUE(root.AddDataConnection({&source.out, in}));
        EXPECT_NE(root.AddDataConnection(source.out, mixer.layers), nullptr);
        EXPECT_NE(root.AddDataConnection(*out, mixer.layers), nullptr);
        EXPECT_TRUE(root.AddParameterConnection({total, &mixer.mix, {{0, 0}}}, false));
        EXPECT_TRUE(nested.AddDataConnection({inputs.FindMirror(*in), &adder.in}));
        EXPECT_TRUE(nested.AddDataConnection({&adder.out, outputs.FindMirror(*out)}));
        EXPECT_TRUE(
            nested.AddParameterConnection({inputs.FindMirror(*gain), &adder.offset, {{0, 0}}}, false));
        EXPECT_TRUE(
            nested.AddParameterConnection({&adder.result, outputs.FindMirror(*total), {{0, 0}}}, false));
        static_cast<NumberParameter*>(mixer.bands.CreateBundle("Band", "Low")->GetChild(0))->SetValue(0.5);
        mixer.bands.CreateBundle("Band", "High");
        mixer.focus = &nested;
        mixer.picks.SetValue({&mirror, &source});  // the mirror comes later in the file
        mirror.model = &source;
        // Driven whole, the mirrored value is not stored: the resolved reference must rebuild it in time for
        // its connection.
        EXPECT_TRUE(root.AddParameterConnection(
            {&source.value, mirror.GetParameterGroup().FindParameter("Value"), {{0, 0}}}, false));
    }
};

// The file is written without building the JSON tree; it must still print what the tree prints, escapes and
// all, read back to the same bytes, and fail where printing the tree fails, before the old file is touched.
TEST(Project, SaveLoadSaveGivesTheSameBytesAndBrokenTextLeavesTheFileAlone) {
    Testing::RegisterProjectTestTypes();
    Scene scene;
    scene.source.SetName("say \"hi\"");
    scene.mirror.SetName("back\\slash");
    scene.adder.SetName("tab\tline\n\x01 \xC3\xBC \xE2\x82\xAC \x7F");
    // Positions that JSON has no number for are written as null and read back as NaN; -0 reads back as -0.
    scene.source.SetPosition({-0.0f, -0.0f});
    auto* negativeZero =
        dynamic_cast<FloatParameter*>(scene.nested.AddUserParameter(FloatParameter::Type(), false));
    ASSERT_NE(negativeZero, nullptr);
    negativeZero->SetValue(-0.0);
    // Each kind of stored value, printed by the writer itself or handed to the library: whole numbers at the
    // end of their range, flags, text to escape, vectors.
    auto* whole = dynamic_cast<IntParameter*>(scene.nested.AddUserParameter(IntParameter::Type(), false));
    auto* flag = dynamic_cast<BoolParameter*>(scene.nested.AddUserParameter(BoolParameter::Type(), false));
    auto* text =
        dynamic_cast<StringParameter*>(scene.nested.AddUserParameter(StringParameter::Type(), false));
    ASSERT_TRUE(whole != nullptr && flag != nullptr && text != nullptr);
    whole->SetValue(std::numeric_limits<std::int64_t>::min());
    flag->SetValue(true);
    text->SetValue("say \"hi\"\n");
    ASSERT_NE(scene.nested.AddUserParameter(Vector3Parameter::Type(), false), nullptr);
    // Deep enough that the indent outgrows the writer's ready-made blanks.
    Graph* deep = &scene.nested;
    for (int depth = 0; depth < 12; ++depth) {
        deep = &Add<Graph>(*deep);
    }
    scene.adder.SetPosition(
        {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity()});
    scene.mirror.SetPosition({-std::numeric_limits<float>::infinity(), 1.0f});
    EXPECT_EQ(Serialization::SerializeProjectText(scene.project),
              Serialization::SerializeProject(scene.project).dump(4));
    const std::string first = TempFile("first");
    scene.project.Serialize(first);
    EXPECT_TRUE(scene.source.value.HasValueChanged());  // saving leaves the marks to the next frame
    EXPECT_TRUE(scene.mixer.layers.GetInput(0)->HasDataChanged());
    const std::string written = ReadFile(first);
    EXPECT_NE(written.find("Mixer \xC3\xBC"), std::string::npos);   // written as it is, not escaped
    EXPECT_NE(written.find("\"value\": -0.0"), std::string::npos);  // what was set, sign and all

    Project loaded;
    LogCapture log;
    {
        Transaction transaction("Load");  // loading records nothing, even inside a transaction
        ASSERT_TRUE(loaded.Deserialize(first));
        EXPECT_TRUE(transaction.GetRecords().empty());
    }
    EXPECT_EQ(log.Text(), "");
    const auto* adder = dynamic_cast<const Operator*>(loaded.Resolve(scene.adder.GetPath()));
    ASSERT_NE(adder, nullptr);
    EXPECT_TRUE(std::isnan(adder->GetPosition().y));
    EXPECT_TRUE(loaded.GetDroppedEntries().empty());
    EXPECT_EQ(Serialization::SerializeProjectText(loaded),
              written);  // references, list inputs, bundles and mirrored values included

    // In a folder whose name is not ASCII: the library's narrow paths are UTF-8 on every platform.
    const std::filesystem::path folder = std::filesystem::temp_directory_path() /
                                         (u8"Vantel Ünïcode 計画 " + PathFromUtf8(first).stem().u8string());
    std::filesystem::create_directories(folder);
    const std::string inFolder = PathToUtf8(folder / u8"Szene ü.vantel");
    loaded.Serialize(inFolder);
    EXPECT_TRUE(std::filesystem::is_regular_file(folder / u8"Szene ü.vantel"));
    Project again;
    ASSERT_TRUE(again.Deserialize(inFolder));
    EXPECT_EQ(Serialization::SerializeProjectText(again), written);
    std::filesystem::remove_all(folder);

    scene.mixer.SetName("cut \xC3 off");
    std::string treeError;
    try {
        static_cast<void>(Serialization::SerializeProject(scene.project).dump(4));
    } catch (const nlohmann::json::type_error& error) {
        treeError = error.what();
    }
    EXPECT_NE(treeError, "");
    try {
        scene.project.Serialize(first);
        ADD_FAILURE() << "invalid UTF-8 was written";
    } catch (const nlohmann::json::type_error& error) {
        EXPECT_EQ(error.what(), treeError);
    }
    EXPECT_EQ(ReadFile(first), written);
    std::filesystem::remove(first);
}

// Connections are kept in the order they were made, but the file lists them sorted, each in the list of its
// consumer's graph and addressed from there: the same graph must write the same bytes however it was wired,
// or every reconnection would show as a change.
TEST(Project, ConnectionsMadeInAnotherOrderWriteTheSameBytes) {
    Testing::RegisterProjectTestTypes();
    Project project;
    Graph& root = *project.GetRootGraph();
    // Made in the reverse of their keys' order, so that neither order of making nor memory is the file's
    // order.
    SourceOperator& first = Add<SourceOperator>(root, "Zeta");
    SourceOperator& middle = Add<SourceOperator>(root, "M");
    SourceOperator& second = Add<SourceOperator>(root, "Alpha");
    AddOperator& left = Add<AddOperator>(root, "Left");
    AddOperator& right = Add<AddOperator>(root, "Right");
    Graph& spread = Add<Graph>(root, "Spread");
    Graph& crossed = Add<Graph>(root, "Crossed");
    Parameter* vector = spread.AddUserParameter(Vector3Parameter::Type(), true);
    Parameter* fully = spread.AddUserParameter(Vector3Parameter::Type(), false);
    Parameter* target = crossed.AddUserParameter(Vector3Parameter::Type(), false);
    Parameter* partly = crossed.AddUserParameter(Vector3Parameter::Type(), false);
    first.value.SetValue(3.0);
    const std::vector<DataConnection> data{{&first.out, &left.in}, {&second.out, &right.in}};
    // A value that its connections give it again after loading is not stored; one that a connection covers
    // only in part is. The file lists the chain's far link first ("M/Value" sorts before "Zeta/Value"): the
    // loaded end must still have the start's value, as it had when saved.
    const std::vector<ParameterConnection> parameters{
        {&first.value, &middle.value, {{0, 0}}},
        {&middle.value, &left.offset, {{0, 0}}},
        {&second.value, &right.offset, {{0, 0}}},
        {vector, target, {{0, 2}, {2, 1}}},
        {&first.value, partly, {{0, 0}, {0, 2}}},
        {&first.value, fully, WholeValueLinks(first.value, *fully)}};

    // Below a nested graph, into a bundle's parameter and a list's input, made once against the written
    // order.
    Graph& inner = Add<Graph>(root, "Inner");
    auto& source = Add<SourceOperator>(inner, "Source");
    auto& mixer = Add<MixerOperator>(inner, "Mixer");
    auto* gain = dynamic_cast<NumberParameter*>(mixer.bands.CreateBundle("Band", "Low")->Find("Gain"));
    ASSERT_NE(gain, nullptr);
    ASSERT_TRUE(inner.AddParameterConnection(
        {&source.value, &mixer.mix, WholeValueLinks(source.value, mixer.mix)}, false));
    ASSERT_TRUE(
        inner.AddParameterConnection({&source.value, gain, WholeValueLinks(source.value, *gain)}, false));
    DataInput* layer = inner.AddDataConnection(source.out, mixer.layers);
    ASSERT_NE(layer, nullptr);
    const std::string sourceKey = source.GetKey() + "/";
    const std::string mixerKey = mixer.GetKey() + "/";
    EXPECT_EQ(Serialization::SerializeParameterConnections(inner.GetParameterConnections()),
              nlohmann::json::parse(R"([{"input": ")" + mixerKey +
                                    R"(Bands/Low/Gain", "links": [[0, 0]], "output": ")" + sourceKey +
                                    R"(Value"}, {"input": ")" + mixerKey +
                                    R"(Mix", "links": [[0, 0]], "output": ")" + sourceKey + R"(Value"}])"));
    EXPECT_EQ(Serialization::SerializeDataConnections(inner.GetDataConnections()),
              nlohmann::json::parse(R"([{"input": ")" + layer->GetRelativePath(inner).ToString() +
                                    R"(", "output": ")" + sourceKey + R"(Out"}])"));

    const auto connect = [&](bool reversed) {
        for (std::size_t i = 0; i < data.size(); ++i) {
            EXPECT_TRUE(root.AddDataConnection(data[reversed ? data.size() - 1 - i : i]));
        }
        for (std::size_t i = 0; i < parameters.size(); ++i) {
            EXPECT_TRUE(
                root.AddParameterConnection(parameters[reversed ? parameters.size() - 1 - i : i], false));
        }
        return Serialization::SerializeProjectText(project);
    };
    const std::string forward = connect(false);
    EXPECT_NE(forward.find(R"("input": ")" + crossed.GetKey() + "/" + target->GetKey() + R"(",
                "links": [
                    [
                        0,
                        2
                    ],
                    [
                        2,
                        1
                    ]
                ],)"),
              std::string::npos);  // each link as [source component, target component]
    const nlohmann::json written = nlohmann::json::parse(forward)["root"];
    using Texts = std::vector<std::pair<std::string, std::string>>;
    const auto texts = [&](const char* list) {
        Texts found;
        for (const nlohmann::json& connection : written[list]) {
            found.emplace_back(connection["output"], connection["input"]);
        }
        return found;
    };
    const auto at = [](const Object& object, const std::string& member) {
        return object.GetKey() + "/" + member;
    };
    EXPECT_EQ(texts("dataConnections"),
              (Texts{{at(second, "Out"), at(right, "In")}, {at(first, "Out"), at(left, "In")}}));
    EXPECT_EQ(texts("parameterConnections"),
              (Texts{{at(second, "Value"), at(right, "Offset")},
                     {at(middle, "Value"), at(left, "Offset")},
                     {at(spread, vector->GetKey()), at(crossed, target->GetKey())},
                     {at(first, "Value"), at(crossed, partly->GetKey())},
                     {at(first, "Value"), at(middle, "Value")},
                     {at(first, "Value"), at(spread, fully->GetKey())}}));
    using Serialization::SerializeParameter;
    EXPECT_EQ(SerializeParameter(first.value)["value"], 3.0);
    EXPECT_FALSE(SerializeParameter(middle.value).contains("value"));
    EXPECT_FALSE(SerializeParameter(left.offset).contains("value"));
    EXPECT_EQ(SerializeParameter(*partly)["value"], nlohmann::json::parse("[3.0, 0.0, 3.0]"));
    EXPECT_FALSE(SerializeParameter(*fully).contains("value"));
    for (const DataConnection& connection : data) {
        root.RemoveDataConnection(connection);
    }
    for (const ParameterConnection& connection : parameters) {
        root.RemoveParameterConnection(connection.GetEndpoints());
    }
    EXPECT_EQ(connect(true), forward);

    // Every graph's connections come back from one load.
    LogCapture log;
    const std::unique_ptr<Project> loaded =
        Deserialization::DeserializeProject(nlohmann::json::parse(forward));
    ASSERT_NE(loaded, nullptr);
    EXPECT_EQ(log.Text(), "");
    EXPECT_EQ(Serialization::SerializeProjectText(*loaded), forward);
    const auto* loadedEnd = dynamic_cast<AddOperator*>(loaded->GetRootGraph()->FindChild(left.GetKey()));
    ASSERT_NE(loadedEnd, nullptr);
    EXPECT_EQ(loadedEnd->offset.Value(), 3.0);
}

// Outside an operator's tree a plain group may hold groups; it is written as the array of its children.
TEST(Project, APlainGroupIsWrittenAsItsScope) {
    ParameterGroup outer;
    NumberParameter first(nullptr, "First", 1.0);
    outer.Add(&first);
    auto inner = std::make_unique<ParameterGroup>();
    NumberParameter second(nullptr, "Second", 2.0);
    inner->Add(&second);
    outer.Add(std::move(inner));
    EXPECT_EQ(
        Serialization::SerializeParameterNode(outer),
        nlohmann::json::parse(R"([{"key": "First", "value": 1.0}, [{"key": "Second", "value": 2.0}]])"));
}

// A save replaces the old file only once the new text is whole on disk: whatever fails, the old file stays
// and nothing is left beside it.
TEST(Project, SavingReplacesTheFileWholeOrNotAtAll) {
    namespace fs = std::filesystem;
    Project project;
    const fs::path folder = TempFile("folder");
    fs::create_directory(folder);
    const fs::path file = folder / "project.json";
    std::ofstream(file) << "old";
    // Windows keeps only a read-only mark, so what counts is that the file keeps what it had.
    fs::permissions(file, fs::perms::owner_read | fs::perms::owner_write);
    const fs::perms permissions = fs::status(file).permissions();
    LogCapture log;
    // Nothing stays open, however the save ends: a session saves many times. (Where there is no
    // /proc/self/fd, both counts are 0.)
    const auto openFiles = [] {
        std::error_code error;
        return std::distance(fs::directory_iterator("/proc/self/fd", error), fs::directory_iterator());
    };
    const auto openBefore = openFiles();

    project.Serialize(file.string());
    EXPECT_EQ(ReadFile(file.string()), Serialization::SerializeProjectText(project));
    EXPECT_EQ(fs::status(file).permissions(), permissions);

    // Windows builds of the standard library cannot make symbolic links; there the link is left out.
    const fs::path link = folder / "link.json";
    std::error_code linkError;
    fs::create_symlink("project.json", link, linkError);
    std::set<std::string> expectedNames = {"inner", "project.json"};
    if (!linkError) {
        expectedNames.insert("link.json");
        project.GetRootGraph()->SetName("Through the link");
        project.Serialize(link.string());
        EXPECT_TRUE(fs::is_symlink(link));
        EXPECT_NE(ReadFile(file.string()).find("Through the link"), std::string::npos);
    }
    EXPECT_EQ(log.Text(), "");

    const fs::path inner = folder / "inner";
    fs::create_directory(inner);
    const fs::path missing = folder / "missing" / "project.json";
    project.Serialize(inner.string());
    project.Serialize(missing.string());
    EXPECT_EQ(log.Text(),
              "[Error] Project::Serialize: failed to write project to: " + inner.string() +
                  "\n[Error] Project::Serialize: failed to write project to: " + missing.string() + "\n");
    EXPECT_TRUE(fs::is_directory(inner));
    std::set<std::string> names;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder)) {
        names.insert(entry.path().filename().string());
    }
    EXPECT_EQ(names, expectedNames);
    EXPECT_EQ(openFiles(), openBefore);
    fs::remove_all(folder);
}

}  // namespace
}  // namespace Vantel
