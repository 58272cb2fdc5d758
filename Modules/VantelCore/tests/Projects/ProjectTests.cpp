#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <regex>
#include <set>
#include <string>

#include <Vantel/Operators/Graph.h>
#include <Vantel/Operators/GraphInputsOperator.h>
#include <Vantel/Operators/GraphOutputsOperator.h>
#include <Vantel/Projects/Project.h>
#include <Vantel/Projects/Serialization.h>
#include <Vantel/Projects/Transaction.h>

#include "Support/LogCapture.h"
#include "Support/ProjectOperators.h"
#include "Support/TestOperators.h"

namespace Vantel {
namespace {

using Testing::AddOperator;
using Testing::LogCapture;
using Testing::MirrorOperator;
using Testing::MixerOperator;
using Testing::NumberParameter;
using Testing::SourceOperator;

using Testing::Add;

std::string TempFile(std::string_view name) {
    return (std::filesystem::temp_directory_path() /
            (std::string(name) + GenerateKey("", [](std::string_view) { return true; }) + ".vantel"))
        .string();
}

std::string ReadFile(const std::string& path) {
    std::ifstream file(path);
    return std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

TEST(Project, NewProjectsKeyTheirRootAndKeepGivenRoots) {
    Project project;
    EXPECT_TRUE(std::regex_match(project.GetRootGraph()->GetKey(), std::regex(R"(Project \[[0-9a-z]+\])")));

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

TEST(Project, TheEmptyProjectWritesItsExactDocument) {
    Project project;
    const std::string path = TempFile("empty");
    project.Serialize(path);
    EXPECT_EQ(ReadFile(path), R"({
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
    std::filesystem::remove(path);
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
        mirror.model = &source;
        static_cast<NumberParameter*>(mirror.GetParameterGroup().FindParameter("Value"))->SetValue(7.0);
    }
};

// The file is written without building the JSON tree; it must still print what the tree prints, escapes and
// all, and fail where printing the tree fails, before the old file is touched.
TEST(Project, TheFileTextIsTheTreesTextAndBrokenTextLeavesTheFileAlone) {
    Testing::RegisterProjectTestTypes();
    Scene scene;
    scene.source.SetName("say \"hi\"");
    scene.mirror.SetName("back\\slash");
    scene.adder.SetName("tab\tline\n\x01 \xC3\xBC \xE2\x82\xAC \x7F");
    EXPECT_EQ(Serialization::SerializeProjectText(scene.project),
              Serialization::SerializeProject(scene.project).dump(4));

    const std::string path = TempFile("kept");
    scene.project.Serialize(path);
    const std::string before = ReadFile(path);
    scene.mixer.SetName("cut \xC3 off");
    std::string treeError;
    try {
        static_cast<void>(Serialization::SerializeProject(scene.project).dump(4));
    } catch (const nlohmann::json::type_error& error) {
        treeError = error.what();
    }
    EXPECT_NE(treeError, "");
    try {
        scene.project.Serialize(path);
        ADD_FAILURE() << "invalid UTF-8 was written";
    } catch (const nlohmann::json::type_error& error) {
        EXPECT_EQ(error.what(), treeError);
    }
    EXPECT_EQ(ReadFile(path), before);
    std::filesystem::remove(path);
}

TEST(Project, SaveLoadSaveGivesTheSameBytes) {
    Testing::RegisterProjectTestTypes();
    Scene scene;
    const std::string first = TempFile("first");
    const std::string second = TempFile("second");
    scene.project.Serialize(first);
    EXPECT_TRUE(scene.source.value.HasValueChanged());  // saving leaves the marks to the next frame
    EXPECT_TRUE(scene.mixer.layers.GetInput(0)->HasDataChanged());
    const std::string written = ReadFile(first);
    EXPECT_NE(written.find("Mixer \xC3\xBC"), std::string::npos);  // written as it is, not escaped

    Project loaded;
    LogCapture log;
    {
        Transaction transaction("Load");  // loading records nothing, even inside a transaction
        ASSERT_TRUE(loaded.Deserialize(first));
        EXPECT_TRUE(transaction.GetRecords().empty());
    }
    EXPECT_EQ(log.Text(), "");
    loaded.Serialize(second);
    EXPECT_EQ(ReadFile(second), written);  // references, list inputs, bundles and mirrored values included
    std::filesystem::remove(first);
    std::filesystem::remove(second);
}

// A save replaces the old file only once the new text is whole on disk: whatever fails, the old file stays
// and nothing is left beside it.
TEST(Project, SavingReplacesTheFileWholeOrNotAtAll) {
    namespace fs = std::filesystem;
    Project project;
    const fs::path folder = TempFile("folder");
    fs::create_directory(folder);
    const auto names = [&folder] {
        std::set<std::string> found;
        for (const fs::directory_entry& entry : fs::directory_iterator(folder)) {
            found.insert(entry.path().filename().string());
        }
        return found;
    };
    const fs::path file = folder / "project.json";
    std::ofstream(file) << "old";
    fs::permissions(file, fs::perms::owner_read | fs::perms::owner_write);
    LogCapture log;

    project.Serialize(file.string());
    EXPECT_EQ(ReadFile(file.string()), Serialization::SerializeProjectText(project));
    EXPECT_EQ(fs::status(file).permissions(), fs::perms::owner_read | fs::perms::owner_write);

    const fs::path link = folder / "link.json";
    fs::create_symlink("project.json", link);
    project.GetRootGraph()->SetName("Through the link");
    project.Serialize(link.string());
    EXPECT_TRUE(fs::is_symlink(link));
    EXPECT_NE(ReadFile(file.string()).find("Through the link"), std::string::npos);
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
    EXPECT_EQ(names(), (std::set<std::string>{"inner", "link.json", "project.json"}));
    fs::remove_all(folder);
}

}  // namespace
}  // namespace Vantel
