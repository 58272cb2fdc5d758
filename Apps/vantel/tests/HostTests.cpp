// End-to-end tests of the `vantel` binary: each runs it with its output in temporary files and checks what it
// printed and how it exited.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <random>
#include <string>
#include <vector>

#include <Vantel/Objects/PluginFiles.h>

#include "HostFiles.h"
#include "HostProcess.h"

namespace {

namespace fs = std::filesystem;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::StartsWith;

// With the platform's separators, as the host writes the paths it joined itself.
const fs::path kHost = fs::path(VANTEL_HOST_PATH).make_preferred();
// The library file of a test plug-in, as the platform names it. The plug-ins built for the tests lie away
// from the host, which finds them only by their path.
fs::path TestPluginFile(const std::string& name) {
    return fs::path(VANTEL_TEST_PLUGIN_FOLDER).make_preferred() / Vantel::PluginFileNames(name).front();
}
const std::string kTestPlugin = TestPluginFile("VantelTestPlugin").string();
const fs::path kData = fs::path(VANTEL_HOST_TEST_DATA).make_preferred();
const fs::path kExamples = fs::path(VANTEL_EXAMPLES_DIR).make_preferred();

using HostTesting::ReadFile;
using Result = HostTesting::ProcessResult;

void WriteFile(const fs::path& path, const std::string& text) {
    std::ofstream(path, std::ios::binary) << text;
}

// A fresh folder per test, removed afterwards; a random suffix keeps two checkouts' test runs on one machine
// out of each other's folders.
struct TempFolder {
    fs::path path =
        fs::temp_directory_path() /
        ("vantel-host-" + std::string(::testing::UnitTest::GetInstance()->current_test_info()->name()) + "-" +
         std::to_string(std::random_device()()));
    TempFolder() { fs::create_directories(path); }
    ~TempFolder() { fs::remove_all(path); }
};

// Runs the vantel at `host` with `arguments` from `folder`.
Result Host(const TempFolder& folder, std::initializer_list<std::string> arguments,
            const fs::path& host = kHost) {
    Result result = HostTesting::RunProcess(host, std::vector<std::string>(arguments), folder.path);
    EXPECT_NE(result.code, -1) << "could not run " << host;
    return result;
}

std::string Data(const char* name) {
    return (kData / name).string();
}

std::string ProjectWithVersion(const std::string& version) {
    return R"({"root": {"key": "Project [v]", "type": "Vantel.General.Graph"}, "version": )" + version + "}";
}

TEST(Host, UsageErrorsExitWithTwoAndOneLine) {
    const TempFolder temp;
    struct Row {
        std::initializer_list<std::string> arguments;
        const char* message;
    };
    const Row rows[] = {
        {{}, "no command given"},
        {{"frob"}, "unknown command 'frob'"},
        {{"run"}, "missing argument: usage is 'vantel run PROJECT'"},
        {{"upgrade", "a.json"}, "missing argument: usage is 'vantel upgrade IN OUT'"},
        {{"types", "extra"}, "too many arguments"},
        {{"run", "a.json", "--frames"}, "--frames needs a value"},
        {{"run", "a.json", "--frames", "-1"}, "--frames needs a whole number"},
        {{"run", "a.json", "--fps=0"}, "--fps needs a number of frames per second above 0"},
        {{"run", "a.json", "--fps=30x"}, "--fps needs a number of frames per second above 0, not '30x'"},
        {{"run", "a.json", "--fps=inf"}, "--fps needs a number of frames per second above 0, not 'inf'"},
        {{"edit", "a.json", "--port", "0"}, "--port needs a port number from 1 to 65535, not '0'"},
        {{"edit", "a.json", "--port=65536"}, "--port needs a port number from 1 to 65535, not '65536'"},
        {{"edit", "a.json", "--port=80x"}, "--port needs a port number from 1 to 65535, not '80x'"},
        {{"edit", "a.json", "--port=1", "--port=65535", "--frames=2"},
         "unknown option '--frames' for 'edit'"},
        {{"check", "a.json", "--save", "b.json"}, "unknown option '--save' for 'check'"},
        {{"run", "a.json", "--force"}, "unknown option '--force' for 'run'"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.message);
        const Result result = Host(temp, row.arguments);
        EXPECT_EQ(result.code, 2);
        EXPECT_THAT(result.err, StartsWith(std::string("vantel: ") + row.message));
        EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1);
        EXPECT_EQ(result.out, "");
    }
    const Result help = Host(temp, {"--help"});
    EXPECT_EQ(help.code, 0);
    for (const char* word :
         {"run PROJECT", "check PROJECT", "upgrade IN OUT", "types", "doc TYPE", "graph PROJECT", "--version",
          "--plugin NAME", "--frames N", "--fps F", "--save OUT", "--force"}) {
        EXPECT_THAT(help.out, HasSubstr(word));
    }
}

TEST(Host, MissingFilesBrokenJsonAndPluginsHaveTheirOwnExitCodes) {
    const TempFolder temp;
    for (const char* command : {"run", "check", "graph"}) {
        SCOPED_TRACE(command);
        const Result absent = Host(temp, {command, "absent.json"});
        EXPECT_EQ(absent.code, 3);
        EXPECT_THAT(absent.err, HasSubstr("vantel: no such file: "));
        const Result broken = Host(temp, {command, Data("broken.json")});
        EXPECT_EQ(broken.code, 1);
        EXPECT_THAT(broken.err, HasSubstr("vantel: " + Data("broken.json") +
                                          " is not valid JSON: [json.exception.parse_error"));
    }
    EXPECT_EQ(Host(temp, {"upgrade", "absent.json", "out.json"}).code, 3);
    EXPECT_FALSE(fs::exists(temp.path / "out.json"));
    // A JSON entry of the wrong kind reaches the host as the JSON library's type error, never uncaught.
    WriteFile(temp.path / "typed.json",
              R"({"root": {"type": "Vantel.General.Graph", "name": 5}, "version": {"format": 1}})");
    const Result typed = Host(temp, {"check", "typed.json"});
    EXPECT_EQ(typed.code, 1);
    EXPECT_THAT(typed.err,
                HasSubstr("vantel: typed.json has an entry of the wrong kind: [json.exception.type_error"));

    const Result unknown = Host(temp, {"types", "--plugin", "NoSuchPlugin"});
    EXPECT_EQ(unknown.code, 4);
    EXPECT_THAT(unknown.err, HasSubstr("vantel: could not load plug-in 'NoSuchPlugin'"));
    const std::string noEntryFile = TestPluginFile("VantelNoEntryPlugin").string();
    const Result noEntry = Host(temp, {"types", "--plugin", noEntryFile});
    EXPECT_EQ(noEntry.code, 4);
    EXPECT_THAT(noEntry.err, HasSubstr("[Warning] Plugin library has no VantelPluginLoad entry point: \"" +
                                       noEntryFile + "\"\n"));
    EXPECT_EQ(Host(temp, {"types", "--plugin", "./NoSuchPlugin" + Vantel::PluginFileExtension()}).code, 4);
}

TEST(Host, CheckReportsVersionsAndEveryDroppedEntry) {
    const TempFolder temp;
    const Result dropped = Host(temp, {"check", Data("dropped.json")});
    EXPECT_EQ(dropped.code, 1);
    EXPECT_EQ(dropped.out,
              Data("dropped.json") +
                  "\n  format: 1\n  written by: release 2640, the same as this build\n"
                  "  operators: 1\n  dropped: 3\n"
                  "    parameter value 'Nope' in /Kept: ApplyParameterValues: parameter 'Nope' not found in "
                  "operator 'Kept', its value is dropped.\n"
                  "    operator 'Gone' in /: DeserializeOperator: type 'Nowhere.Unknown' not found in type "
                  "library.\n"
                  "    parameter value 'Target' in /: PtrParameter::DeserializeValue: could not resolve "
                  "'Nowhere', the value is cleared.\n");
    EXPECT_THAT(dropped.err, HasSubstr("vantel: " + Data("dropped.json") + ": loading dropped 3 entries\n"));

    // The newer file's warning is a note about the version, not a dropped entry; format 2 cannot be read.
    struct Row {
        const char* version;
        const char* report;
        const char* err;
        int code;
    };
    const Row rows[] = {
        {R"({"format": 1, "software": "2639"})", "written by: release 2639, older than this build (2640)\n",
         "", 0},
        {R"({"format": 1, "software": "2641"})", "written by: release 2641, newer than this build (2640)\n",
         "vantel: warning: version.json was written by a newer build", 0},
        {R"({"format": 1, "dev": {"commit": "abc123"}})", "written by: a development build (commit abc123)\n",
         "", 0},
        {R"({"format": 2})", "format: 2 (this build reads format 1)\n  written by: unknown\n",
         "vantel: could not load version.json\n", 1},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.version);
        WriteFile(temp.path / "version.json", ProjectWithVersion(row.version));
        const Result result = Host(temp, {"check", "version.json"});
        EXPECT_EQ(result.code, row.code);
        EXPECT_THAT(result.out, HasSubstr(row.report));
        EXPECT_THAT(result.out, HasSubstr(row.code == 0 ? "operators: 0\n  dropped: 0\n" : "dropped: "));
        EXPECT_THAT(result.err, HasSubstr(row.err));
    }
}

TEST(Host, TypesAreGroupedAndSortedAndDocPrintsOneType) {
    const TempFolder temp;
    const Result types = Host(temp, {"types", "--plugin", kTestPlugin});
    EXPECT_EQ(types.code, 0);
    const std::string& out = types.out;
    const std::size_t operators = out.find("Operators (4)\n");
    const std::size_t parameters = out.find("Parameter types (17)\n");
    const std::size_t data = out.find("Data types (1)\n");
    ASSERT_NE(data, std::string::npos) << out;
    EXPECT_LT(operators, parameters);
    EXPECT_LT(parameters, data);
    // Sorted by type name inside each group, whatever the order of registration.
    EXPECT_LT(out.find("  TestPlugin.Math.Scale"), out.find("  Vantel.General.Graph "));
    EXPECT_LT(out.find("  TestPlugin.FactorParameter"), out.find("  Vantel.BoolParameter"));
    EXPECT_LT(out.find("  Vantel.BoolParameter"), out.find("  Vantel.ColorParameter"));
    EXPECT_THAT(out, HasSubstr("Scale [Math]: Multiplies the incoming sample by a factor.\n"));
    EXPECT_GT(out.find("  TestPlugin.Sample  Sample: A single number"), data);

    const Result doc = Host(temp, {"doc", "TestPlugin.Math.Scale", "--plugin", kTestPlugin});
    EXPECT_EQ(doc.code, 0);
    EXPECT_THAT(doc.out, StartsWith("# Scale\n\nScale multiplies each sample"));
    EXPECT_THAT(doc.out, EndsWith("and writes the product.\n"));
    EXPECT_THAT(Host(temp, {"doc", "TestPlugin.FactorParameter", "--plugin", kTestPlugin}).out,
                EndsWith("saved exactly like a Float.\n"));
    EXPECT_THAT(Host(temp, {"doc", "Vantel.General.Graph"}).out, StartsWith("# Graph\n"));
    EXPECT_THAT(Host(temp, {"doc", "Vantel.FloatParameter"}).out, StartsWith("# Float\n"));
    const Result unknown = Host(temp, {"doc", "Vantel.Nothing"});
    EXPECT_EQ(unknown.code, 1);
    EXPECT_EQ(unknown.out, "");
    EXPECT_THAT(unknown.err, HasSubstr("vantel: unknown type 'Vantel.Nothing'"));
}

TEST(Host, GraphIsDotWithClustersPortsAndEscapedNames) {
    const TempFolder temp;
    const Result graph = Host(temp, {"graph", Data("nested.json"), "--plugin", kTestPlugin});
    ASSERT_EQ(graph.code, 0) << graph.err;
    const std::string& dot = graph.out;
    EXPECT_THAT(dot, StartsWith("digraph \"Project [nest]\" {\n"));
    // Inner holds Innermost: the second cluster opens before the first one closes.
    const std::size_t inner = dot.find("    subgraph cluster_0 {\n        label=\"Inner\";\n");
    const std::size_t innermost =
        dot.find("        subgraph cluster_1 {\n            label=\"Innermost\";\n");
    const std::size_t innerEnd = dot.find("\n    }\n");
    ASSERT_NE(inner, std::string::npos) << dot;
    EXPECT_LT(inner, innermost);
    EXPECT_LT(innermost, innerEnd);
    EXPECT_THAT(
        dot,
        HasSubstr(
            R"(n0 [label="{{<i0> Sample}|First \"quoted\" \{x\} \<y\> \|z\| \\\nTestPlugin.Math.Scale|{<o0> Result}}"];)"));
    EXPECT_THAT(dot, HasSubstr("    n0:o0 -> n1:i0;\n"));
    EXPECT_THAT(dot, HasSubstr("    n0 -> n1 [style=dashed, label=\"Factor -> Factor\"];\n"));
    EXPECT_EQ(graph.err.find("[Error]"), std::string::npos) << graph.err;

    // Graphviz itself, where it is installed, is the judge of validity: 127 is the shell's "not found", -1
    // that of a system that starts no program by its bare name.
    WriteFile(temp.path / "graph.dot", dot);
    const int judged =
        HostTesting::RunProcess("dot", {"-Tsvg", "graph.dot", "-o", "graph.svg"}, temp.path).code;
    EXPECT_TRUE(judged == 0 || judged == 127 || judged == -1) << judged;
}

TEST(Host, UpgradeWritesAFileThatLoadsAndRunSaves) {
    const TempFolder temp;
    const Result upgrade = Host(temp, {"upgrade", Data("nested.json"), "once.json", "--plugin", kTestPlugin});
    ASSERT_EQ(upgrade.code, 0) << upgrade.err;
    EXPECT_EQ(Host(temp, {"check", "once.json", "--plugin", kTestPlugin}).code, 0);
    EXPECT_EQ(Host(temp, {"upgrade", Data("broken.json"), "never.json"}).code, 1);
    const Result unwritable =
        Host(temp, {"upgrade", Data("nested.json"), "no/such/folder/out.json", "--plugin", kTestPlugin});
    EXPECT_EQ(unwritable.code, 1);
    EXPECT_THAT(unwritable.err, EndsWith("\nvantel: cannot write no/such/folder/out.json\n"));

    // Writing what a lossy load left, or over the input, takes --force; a refusal is one line and no file.
    const Result lossy = Host(temp, {"upgrade", Data("dropped.json"), "lossy.json"});
    EXPECT_EQ(lossy.code, 1);
    EXPECT_THAT(lossy.err, EndsWith("vantel: " + Data("dropped.json") +
                                    ": loading dropped 3 entries, "
                                    "lossy.json is not written; give --force to write what loaded\n"));
    EXPECT_EQ(lossy.err.find("vantel: "), lossy.err.rfind("vantel: "));  // the one line of its own
    EXPECT_FALSE(fs::exists(temp.path / "lossy.json"));
    const Result forced = Host(temp, {"upgrade", Data("dropped.json"), "lossy.json", "--force"});
    EXPECT_EQ(forced.code, 0);
    EXPECT_THAT(forced.err,
                HasSubstr("\nvantel: warning: lossy.json lacks the 3 entries that loading dropped\n"));
    EXPECT_EQ(Host(temp, {"check", "lossy.json"}).code, 0);

    // Windows builds of the standard library cannot make symbolic links; there the link is left out.
    std::error_code linkError;
    fs::create_symlink(temp.path / "once.json", temp.path / "link.json", linkError);
    std::vector<std::string> sameFiles = {"once.json", "./once.json",
                                          "../" + temp.path.filename().string() + "/once.json"};
    if (!linkError) {
        sameFiles.push_back("link.json");
    }
    const std::string original = ReadFile(temp.path / "once.json");
    for (const std::string& out : sameFiles) {
        SCOPED_TRACE(out);
        const Result same = Host(temp, {"upgrade", "once.json", out, "--plugin", kTestPlugin});
        EXPECT_EQ(same.code, 2);
        EXPECT_EQ(same.err,
                  "vantel: OUT is the same file as IN (once.json); give --force to write over it\n");
    }
    EXPECT_EQ(ReadFile(temp.path / "once.json"), original);
    EXPECT_EQ(Host(temp, {"upgrade", "once.json", sameFiles.back(), "--force", "--plugin", kTestPlugin}).code,
              0);
    EXPECT_EQ(ReadFile(temp.path / "once.json"), original);

    // Every operator that is outdated runs in the first frame (an empty graph never is), none after.
    const Result run = Host(temp, {"run", "once.json", "--frames", "5", "--fps", "30", "--plugin",
                                   kTestPlugin, "--save", "saved.json"});
    ASSERT_EQ(run.code, 0) << run.err;
    EXPECT_THAT(run.out, StartsWith("ran 5 frames, 4 operators run, "));
    EXPECT_THAT(run.out, HasSubstr(" ms per frame\nsaved " + (temp.path / "saved.json").string() + "\n"));
    EXPECT_EQ(run.err.find("frame 1 of 5"), std::string::npos);  // no progress line into a file
    EXPECT_EQ(Host(temp, {"check", "saved.json", "--plugin", kTestPlugin}).code, 0);
    // No frame at all is a run too: it loads, reports, and saves what it loaded.
    const Result none =
        Host(temp, {"run", "once.json", "--frames=0", "--plugin", kTestPlugin, "--save", "none.json"});
    ASSERT_EQ(none.code, 0) << none.err;
    EXPECT_THAT(none.out, StartsWith("ran 0 frames, 0 operators run, 0.000 ms per frame\nsaved "));
    EXPECT_EQ(ReadFile(temp.path / "none.json"), ReadFile(temp.path / "once.json"));
    // Without --plugin every library beside the host is tried; one that is no plug-in is skipped.
    WriteFile(temp.path / "core.json", ProjectWithVersion(R"({"format": 1, "software": "2640"})"));
    // A copy of the host with the core and a library that is no plug-in beside it shows it.
    const fs::path copy = temp.path / "host";
    fs::create_directory(copy);
    const std::string core =
        Vantel::PluginFileNames("VantelCore").front().string();  // and its versioned names
    for (const fs::directory_entry& entry : fs::directory_iterator(kHost.parent_path())) {
        if (entry.path().filename().string().starts_with(core)) {
            fs::copy(entry.path(), copy / entry.path().filename(), fs::copy_options::copy_symlinks);
        }
    }
    fs::copy_file(kHost, copy / kHost.filename());
    const fs::path noEntry = TestPluginFile("VantelNoEntryPlugin");
    fs::copy_file(noEntry, copy / noEntry.filename());
    const Result skipped = Host(temp, {"run", "core.json", "--frames", "2"}, copy / kHost.filename());
    EXPECT_EQ(skipped.code, 0);
    EXPECT_THAT(skipped.err, HasSubstr("vantel: warning: skipped " + noEntry.filename().string() +
                                       ": it does not load as a plug-in\n"));
}

// A build with the tests shows its users what a build without them does: the test plug-ins lie in a folder of
// their own, so the host's default loading neither warns nor offers a test type, and cannot name them either.
TEST(Host, DefaultLoadingBesideTheHostFindsNoTestPlugin) {
    const TempFolder temp;
    const Result types = Host(temp, {"types"});
    EXPECT_EQ(types.code, 0);
    EXPECT_THAT(
        types.err,
        HasSubstr("[Info] Loading plugin: " +
                  (kHost.parent_path() / Vantel::PluginFileNames("VantelStandard").front()).string() + "\n"));
    EXPECT_EQ(types.err.find("[Warning]"), std::string::npos) << types.err;
    EXPECT_EQ(types.err.find("vantel: warning"), std::string::npos) << types.err;
    EXPECT_THAT(types.out, HasSubstr("  Standard.Math.Counter "));
    EXPECT_EQ(types.out.find("TestPlugin."), std::string::npos) << types.out;  // NestedTestPlugin's as well

    // Running a project loads the same plug-ins, and as quietly.
    const Result run =
        Host(temp, {"run", (kExamples / "Counter" / "Counter.json").string(), "--frames", "2"});
    EXPECT_EQ(run.code, 0);
    EXPECT_THAT(run.out, StartsWith("ran 2 frames"));
    EXPECT_EQ(run.err, types.err);

    const Result named = Host(temp, {"types", "--plugin", "VantelTestPlugin"});
    EXPECT_EQ(named.code, 4);
    EXPECT_THAT(named.err, HasSubstr("vantel: could not load plug-in 'VantelTestPlugin'"));
}

TEST(Host, EveryExampleChecksUpgradesToItselfAndRuns) {
    std::vector<fs::path> examples;
    if (fs::is_directory(kExamples)) {
        for (const fs::directory_entry& folder : fs::directory_iterator(kExamples)) {
            const fs::path project = folder.path() / (folder.path().filename().string() + ".json");
            if (fs::is_regular_file(project)) {
                examples.push_back(project);
            }
        }
    }
    EXPECT_FALSE(examples.empty()) << "no example projects in " << kExamples;
    for (const fs::path& example : examples) {
        SCOPED_TRACE(example.string());
        const TempFolder temp;
        const fs::path copy = temp.path / example.parent_path().filename();
        fs::copy(example.parent_path(), copy, fs::copy_options::recursive);
        const fs::path project = copy / example.filename();
        fs::remove(copy / "output.png");

        const Result check = Host(temp, {"check", project.string(), "--plugin", "VantelStandard"});
        EXPECT_EQ(check.code, 0) << check.out << check.err;
        EXPECT_THAT(check.out, HasSubstr("  dropped: 0\n"));
        EXPECT_EQ(
            Host(temp, {"upgrade", project.string(), "upgraded.json", "--plugin", "VantelStandard"}).code, 0);
        EXPECT_EQ(ReadFile(temp.path / "upgraded.json"), ReadFile(example));
        const Result run = Host(temp, {"run", project.string(), "--plugin", "VantelStandard"});
        EXPECT_EQ(run.code, 0) << run.err;
        EXPECT_THAT(run.out, StartsWith("ran 60 frames"));
        if (example.stem() == "ImagePipeline") {
            EXPECT_TRUE(fs::is_regular_file(copy / "output.png"));
        }
    }
}

}  // namespace
