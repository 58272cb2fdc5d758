#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <ranges>
#include <regex>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <Vantel/Documentation/TypeDocumentation.h>
#include <Vantel/Objects/ObjectType.h>
#include <Vantel/Objects/TypeLibrary.h>
#include <Vantel/Support/Resources.h>

#include "Support/LogCapture.h"

namespace Vantel {
namespace {

using Testing::LogCapture;

const ObjectType graphType("Vantel.General.Graph", nullptr, nullptr);
const ObjectType vectorType("Vantel.Vector3Parameter", nullptr, nullptr);
const ObjectType textureInput("Example.TextureInput", nullptr, nullptr);
const ObjectType textureOutput("Example.TextureOutput", nullptr, nullptr);

constexpr const char* kGraphPath = "Docs/Operators/General/Graph.md";
constexpr const char* kVectorPath = "Docs/ParameterTypes/Vector 3.md";

enum class Kind { Operator, Parameter, DataType };

TEST(TypeDocumentation, EachProblemLogsOneWarningInCheckOrder) {
    struct Row {
        const char* name;
        Kind kind;
        const ObjectType* type;
        const char* path;
        const char* text;
        const char* log;  // every line after the common prefix `[Warning] Doc "<path>": `
    };
    const Row rows[] = {
        {"no type", Kind::Operator, nullptr, kGraphPath, "---\nsummary: s\n---\n",
         "no type was given for the doc."},
        {"operator file name", Kind::Operator, &graphType, "Docs/Operators/General/Graf.md",
         "---\ntype: Vantel.General.Graph\nsummary: s\n---\n",
         "the path must end in the operator's name, e.g. \"Math/Remap.md\"."},
        {"parameter file name", Kind::Parameter, &vectorType, "Docs/ParameterTypes/Vector3.md",
         "---\ntype: Vantel.Vector3Parameter\nsummary: s\n---\n",
         "the path must end in the parameter type's name, e.g. \"Vector 3.md\"."},
        {"data type without port types, misnamed file, no type", Kind::DataType, nullptr, "Docs/Tex.md",
         "---\nsummary: s\n---\n",
         "no type was given for the doc.\n"
         "the path must end in the data type's name, e.g. \"Texture.md\".\n"
         "the frontmatter has no \"type\"; expected \"Texture\"."},
        {"no leading marker", Kind::Operator, &graphType, kGraphPath, "type: x\n---\nbody\n",
         "the file must start with a frontmatter between two \"---\" lines."},
        {"no closing marker", Kind::Operator, &graphType, kGraphPath, "---\ntype: x\n",
         "the file must start with a frontmatter between two \"---\" lines."},
        {"YAML error", Kind::Operator, &graphType, kGraphPath, "---\ntype: [a, b\nsummary: s\n---\n",
         "the frontmatter could not be read: line 3, column 8: end of sequence flow not found"},
        {"not a map", Kind::Parameter, &vectorType, kVectorPath, "---\n- a\n---\n",
         "the frontmatter must be a map of fields such as type and summary."},
        {"no type and no summary", Kind::Operator, &graphType, kGraphPath, "---\ntags: [a]\n---\n",
         "the frontmatter has no \"type\"; expected \"Vantel.General.Graph\".\n"
         "the frontmatter has no \"summary\"."},
        {"empty type and summary count as missing", Kind::Parameter, &vectorType, kVectorPath,
         "---\ntype: \"\"\nsummary: ''\n---\n",
         "the frontmatter has no \"type\"; expected \"Vantel.Vector3Parameter\".\n"
         "the frontmatter has no \"summary\"."},
        {"other type", Kind::Operator, &graphType, kGraphPath,
         "---\ntype: Vantel.General.Graph2\nsummary: s\n---\n",
         "the frontmatter names the type \"Vantel.General.Graph2\", but the doc is registered for "
         "\"Vantel.General.Graph\"."},
        {"single tag", Kind::Parameter, &vectorType, kVectorPath,
         "---\ntype: Vantel.Vector3Parameter\nsummary: s\ntags: vector\n---\n",
         "\"tags\" must be a list of words."},
        {"tag with blanks", Kind::Parameter, &vectorType, kVectorPath,
         "---\ntype: Vantel.Vector3Parameter\nsummary: s\ntags: [a, two words]\n---\n",
         "\"tags\" must be a list of words."},
        {"empty tag", Kind::Parameter, &vectorType, kVectorPath,
         "---\ntype: Vantel.Vector3Parameter\nsummary: s\ntags: [a, '']\n---\n",
         "\"tags\" must be a list of words."},
        {"member maps and entries", Kind::Operator, &graphType, kGraphPath,
         "---\ntype: Vantel.General.Graph\nsummary: s\n"
         "inputs:\n  Image: [x]\n  Mask:\n    description: d\n  Size:\n    type: Int\n"
         "outputs: [a]\n---\n",
         "\"outputs\" must be a map from key to entry.\n"
         "\"inputs\" entry \"Image\" must be a map with a type and a description.\n"
         "\"inputs\" entry \"Mask\" must be a map with a type and a description.\n"
         "\"inputs\" entry \"Size\" has no \"description\"."},
        {"bundle lists", Kind::Operator, &graphType, kGraphPath,
         "---\ntype: Vantel.General.Graph\nsummary: s\nparameters:\n"
         "  Layers:\n    type: List\n    kinds:\n      Image: {parameters: {}, kinds: {}}\n      Text: {}\n"
         "  Steps:\n    summary: s\n    kinds: [a]\n---\n",
         "\"parameters\" entry \"Layers\" is a bundle list, which has a summary and kinds instead of a type "
         "and "
         "description.\n"
         "\"parameters\" entry \"Layers\" is a bundle list and needs a \"summary\".\n"
         "\"parameters\" entry \"Layers\" kind \"Image\" has both \"parameters\" and \"kinds\"; use one of "
         "the two.\n"
         "\"parameters\" entry \"Layers\" kind \"Text\" must have a \"parameters\" map.\n"
         "\"parameters\" entry \"Steps\" \"kinds\" must be a map from kind name to its parameters."},
        {"unknown keys come last", Kind::Operator, &graphType, kGraphPath,
         "---\nfoo: 1\ntype: Vantel.General.Graph\ninputs:\n  Image: {type: T, description: d, kinds: {}}\n"
         "parameters:\n  Layers:\n    summary: s\n    kinds:\n      '':\n        color: red\n        "
         "parameters:\n"
         "          Opacity: {type: Float, default: 1}\n---\n",
         "the frontmatter has no \"summary\".\n"
         "\"parameters\" entry \"Layers\" kind \"\" entry \"Opacity\" has no \"description\".\n"
         "unknown key \"foo\" in the frontmatter.\n"
         "unknown key \"kinds\" of \"inputs\" entry \"Image\" in the frontmatter.\n"
         "unknown key \"color\" of \"parameters\" entry \"Layers\" kind \"\" in the frontmatter.\n"
         "unknown key \"default\" of \"parameters\" entry \"Layers\" kind \"\" entry \"Opacity\" in the "
         "frontmatter."},
        {"members in a parameter doc", Kind::Parameter, &vectorType, kVectorPath,
         "---\ntype: Vantel.Vector3Parameter\nsummary: s\ninputs: {}\n---\n",
         "unknown key \"inputs\" in the frontmatter."},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        std::string expected;
        std::istringstream lines(row.log);
        for (std::string line; std::getline(lines, line);) {
            expected += std::string("[Warning] Doc \"") + row.path + "\": " + line + "\n";
        }
        LogCapture log;
        switch (row.kind) {
            case Kind::Operator:
                ParseOperatorDoc(row.type, row.path, row.text);
                break;
            case Kind::Parameter:
                ParseParameterDoc(row.type, row.path, row.text);
                break;
            case Kind::DataType:
                ParseDataTypeDoc("Texture", row.type, row.type == nullptr ? nullptr : &textureInput, row.path,
                                 row.text);
                break;
        }
        EXPECT_EQ(log.Text(), expected);
    }
}

TEST(TypeDocumentation, GoodDocFillsTheRecordAndKeepsTheWholeBody) {
    const char* text =
        "---\r\n"
        "type: Vantel.General.Graph\r\n"
        "summary: Blends layers.\r\n"
        "tags: [blend, layers]\r\n"
        "outputs:\r\n"
        "  Image: {type: Texture, description: The result.}\r\n"
        "inputs:\r\n"
        "  \"Layer [1]\": {type: Texture, description: One per layer.}\r\n"
        "parameters:\r\n"
        "  Layers:\r\n"
        "    summary: The layers, bottom first.\r\n"
        "    kinds:\r\n"
        "      Image:\r\n"
        "        parameters:\r\n"
        "          Opacity: {type: Float, description: How much shows.}\r\n"
        "          Masks: {summary: Bundles in a bundle., kinds: {Mask: {parameters: {}}}}\r\n"
        "      Text: {parameters: {}}\r\n"
        "--- \t\r\n"  // a marker may end in blanks
        "# Blend\n\n---\nA rule above.\n";
    LogCapture log;
    const OperatorInfo info = ParseOperatorDoc(&graphType, "Docs/Operators/Compositing/Graph.md", text);
    EXPECT_EQ(log.Text(), "");
    EXPECT_EQ(info.type, &graphType);
    EXPECT_EQ(info.name, "Graph");
    EXPECT_EQ(info.category, "Compositing");
    EXPECT_EQ(info.summary, "Blends layers.");
    EXPECT_EQ(info.tags, (std::vector<std::string>{"blend", "layers"}));
    EXPECT_EQ(info.text, "# Blend\n\n---\nA rule above.\n");
    ASSERT_EQ(info.outputs.size(), 1u);
    EXPECT_EQ(info.outputs[0].description, "The result.");
    ASSERT_EQ(info.inputs.size(), 1u);
    EXPECT_EQ(info.inputs[0].name, "Layer [1]");
    ASSERT_EQ(info.parameters.size(), 1u);
    const OperatorInfo::Entry& layers = info.parameters[0];
    EXPECT_TRUE(layers.IsBundleList());
    EXPECT_EQ(layers.summary, "The layers, bottom first.");
    ASSERT_EQ(layers.kinds.size(), 2u);
    EXPECT_EQ(layers.kinds[1].name, "Text");
    EXPECT_TRUE(layers.kinds[1].parameters.empty());
    const OperatorInfo::Entry* opacity = info.FindBundleParameter("Layers", "Image", "Opacity");
    ASSERT_NE(opacity, nullptr);
    EXPECT_EQ(opacity->type, "Float");
    EXPECT_TRUE(info.FindBundleParameter("Layers", "Image", "Masks")->IsBundleList());
    EXPECT_EQ(info.FindInput("Layer 3"), &info.inputs[0]);

    // A data type's id is what its doc names; a parameter type's name is its display name.
    const DataTypeInfo data =
        ParseDataTypeDoc("Texture", &textureOutput, &textureInput, "Plugin/Docs/Texture.md",
                         "---\ntype: Example.Texture\nsummary: Pixels.\n---\nBody");
    EXPECT_EQ(data.id, "Example.Texture");
    EXPECT_EQ(data.name, "Texture");
    EXPECT_EQ(data.outputType, &textureOutput);
    EXPECT_EQ(data.text, "Body");
    EXPECT_EQ(
        ParseParameterDoc(&vectorType, kVectorPath, "---\ntype: Vantel.Vector3Parameter\nsummary: s\n---\n")
            .name,
        "Vector 3");
    EXPECT_EQ(log.Text(), "");

    // What cannot be read leaves the rest: a broken front matter keeps the body.
    const OperatorInfo broken = ParseOperatorDoc(&graphType, "Graph.md", "---\n: [\n---\nHelp\n");
    EXPECT_EQ(broken.text, "Help\n");
    EXPECT_EQ(broken.category, "");
    EXPECT_TRUE(broken.summary.empty());
}

OperatorInfo::Entry MakeEntry(std::string name, std::vector<OperatorInfo::BundleKind> kinds = {}) {
    OperatorInfo::Entry entry;
    entry.name = std::move(name);
    entry.kinds = std::move(kinds);
    return entry;
}

TEST(OperatorInfo, FindEntryKindAndBundleParameterEdges) {
    const std::vector<OperatorInfo::Entry> entries{MakeEntry("Image [1]"), MakeEntry("Image 2"),
                                                   MakeEntry("[Inputs]")};
    EXPECT_EQ(OperatorInfo::FindEntry(entries, "Image 2"), &entries[1]);  // exact wins over an earlier family
    EXPECT_EQ(OperatorInfo::FindEntry(entries, "Image 7"), &entries[0]);
    EXPECT_EQ(OperatorInfo::FindEntry(entries, "Image mask"), &entries[0]);  // a plain prefix test
    EXPECT_EQ(OperatorInfo::FindEntry(entries, "Mask"), &entries[2]);        // "[Inputs]" has an empty prefix
    EXPECT_EQ(OperatorInfo::FindEntry({MakeEntry("Image")}, "Image 2"), nullptr);
    EXPECT_EQ(OperatorInfo::FindEntry({}, ""), nullptr);

    OperatorInfo info;
    const OperatorInfo::Entry opacity = MakeEntry("Opacity");
    info.parameters = {
        MakeEntry("Single", {{"", {opacity}}}),
        MakeEntry("Mixed", {{"Image", {opacity}}, {"", {}}, {"", {opacity}}}),
        MakeEntry("Plain"),
    };
    const OperatorInfo::Entry& single = info.parameters[0];
    const OperatorInfo::Entry& mixed = info.parameters[1];
    EXPECT_EQ(single.FindKind("anything"), &single.kinds[0]);
    EXPECT_EQ(mixed.FindKind("Image"), &mixed.kinds[0]);
    EXPECT_EQ(mixed.FindKind(""), &mixed.kinds[1]);
    EXPECT_EQ(mixed.FindKind("Text"), nullptr);
    EXPECT_FALSE(info.parameters[2].IsBundleList());

    EXPECT_EQ(info.FindBundleParameter("Single", "Image", "Opacity"), &single.kinds[0].parameters[0]);
    EXPECT_EQ(info.FindBundleParameter("Mixed", "Image", "Opacity"), &mixed.kinds[0].parameters[0]);
    EXPECT_EQ(info.FindBundleParameter("Mixed", "", "Opacity"), nullptr);  // the first unnamed kind is empty
    EXPECT_EQ(info.FindBundleParameter("Mixed", "Text", "Opacity"), nullptr);
    EXPECT_EQ(info.FindBundleParameter("Plain", "", "Opacity"), nullptr);
    EXPECT_EQ(info.FindBundleParameter("Missing", "", "Opacity"), nullptr);
}

TEST(ObjectType, DisplayNameIsGivenOrDerivedFromTheTypeName) {
    const std::pair<const char*, const char*> rows[] = {
        {"Vantel.General.Graph", "Graph"},
        {"Vantel.General.GraphInputsOperator", "Graph Inputs"},
        {"Vantel.Vector3IntParameter", "Vector 3 Int"},
        {"Vantel.Transform3DParameter", "Transform 3D"},
        {"Example.Texture2DArray", "Texture 2D Array"},
        {"Example.Blur9Pass", "Blur 9 Pass"},
        {"Example.FizzBuzz", "Fizz Buzz"},
        {"Example.Scale2x", "Scale 2 x"},
        {"Example.Parameter", "Parameter"},
        {"Vantel.Operator", "Operator"},
        {"NoDots", "No Dots"},
        {"Example.HTTPGet", "HTTPGet"},
        {"Example.ReadHTTPGet", "Read HTTPGet"},
    };
    for (const auto& [name, display] : rows) {
        SCOPED_TRACE(name);
        EXPECT_EQ(ObjectType(name, nullptr, nullptr).GetDisplayName(), display);
    }
    // A name may be a view into a longer text: what follows it is not part of it.
    const std::pair<std::string_view, const char*> views[] = {{"Example.Blur2Dx", "Blur 2D"},
                                                              {"Example.Tex2DAx", "Tex 2DA"}};
    for (const auto& [text, display] : views) {
        SCOPED_TRACE(text);
        EXPECT_EQ(ObjectType(text.substr(0, text.size() - 1), nullptr, nullptr).GetDisplayName(), display);
    }
    EXPECT_EQ(ObjectType("Vantel.PtrParameter", nullptr, nullptr, "Reference").GetDisplayName(), "Reference");
    EXPECT_EQ(ObjectType("Vantel.PtrParameter", nullptr, nullptr, "").GetDisplayName(), "Ptr");
}

// The core types are registered with their compiled-in docs (that they register silently is the type
// library's test); every doc is one of theirs.
TEST(TypeDocumentation, CompiledInDocsAreCompleteAndLinkToEachOther) {
    RegisterCoreTypes();
    std::map<std::string, std::string> bodies;  // by the path of their doc
    for (const OperatorInfo* info : TypeLibrary::Get()->GetOperatorInfos()) {
        EXPECT_FALSE(info->outputs.empty() && info->inputs.empty()) << info->name;
        bodies["Docs/Operators/" + info->category + "/" + info->name + ".md"] = info->text;
    }
    for (const ParameterInfo* info : TypeLibrary::Get()->GetParameterInfos()) {
        EXPECT_FALSE(info->tags.empty()) << info->name;
        bodies["Docs/ParameterTypes/" + info->name + ".md"] = info->text;
    }
    const auto listed = Resources::List("Docs/");
    const auto documented = std::views::keys(bodies);
    EXPECT_EQ(std::vector<std::string>(listed.begin(), listed.end()),
              std::vector<std::string>(documented.begin(), documented.end()));

    const std::regex link(R"(\]\(<(op|param):([^>]*)>\))");
    for (const auto& [path, body] : bodies) {
        SCOPED_TRACE(path);
        EXPECT_GT(body.size(), 1000u);
        for (auto it = std::sregex_iterator(body.begin(), body.end(), link); it != std::sregex_iterator();
             ++it) {
            const std::string folder = (*it)[1] == "op" ? "Docs/Operators/" : "Docs/ParameterTypes/";
            EXPECT_TRUE(bodies.contains(folder + (*it)[2].str() + ".md")) << (*it)[0];
        }
    }
}

}  // namespace
}  // namespace Vantel
