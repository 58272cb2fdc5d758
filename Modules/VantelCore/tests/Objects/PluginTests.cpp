#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <random>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <Vantel/Objects/Object.h>
#include <Vantel/Objects/ObjectType.h>
#include <Vantel/Objects/PluginFiles.h>
#include <Vantel/Objects/TypeLibrary.h>
#include <Vantel/Operators/DataInput.h>
#include <Vantel/Operators/DataOutput.h>
#include <Vantel/Operators/DataTypeInfo.h>
#include <Vantel/Operators/Operator.h>
#include <Vantel/Operators/OperatorInfo.h>
#include <Vantel/Parameters/Parameter.h>
#include <Vantel/Parameters/ParameterInfo.h>

#include "Support/LogCapture.h"
#include "Support/TestPlugins.h"

// The test plug-ins are loaded from their own folder, the standard plug-in by name from beside this
// executable; every test unloads what it loads.
namespace Vantel {
namespace {

namespace fs = std::filesystem;
using Testing::LogCapture;
using Testing::TestPluginFile;
using Names = std::vector<std::string>;

TypeLibrary& library = *TypeLibrary::Get();
const fs::path kPlugin = TestPluginFile("VantelTestPlugin");
const Names kTestPluginTypes = {"TestPlugin.SampleInput", "TestPlugin.SampleOutput",
                                "TestPlugin.FactorParameter", "TestPlugin.Math.Scale"};
const std::string kUnloadTrace = "[Info] VantelTestPlugin: unload entry called\n";

// The platform's library extension in capitals (".SO") and in mixed case (".So"), which is refused.
std::string Capitals(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return std::toupper(c); });
    return text;
}
std::string MixedCase(std::string extension) {
    extension[1] = static_cast<char>(std::toupper(static_cast<unsigned char>(extension[1])));
    return extension;
}

std::string Loading(const fs::path& path) {
    return "[Info] Loading plugin: " + path.string() + "\n";
}

// The names of the types added and removed while it lives, taken during the events (so the types must be
// valid).
struct TypeEvents {
    Names added, removed;
    EventSubscription onAdded = TypeLibrary::Get()->TypeAddedEvent().Subscribe(
        [this](const ObjectType* type) { added.push_back(type->GetName()); });
    EventSubscription onRemoved = TypeLibrary::Get()->TypeRemovedEvent().Subscribe(
        [this](const ObjectType* type) { removed.push_back(type->GetName()); });
};

struct TempFolder {
    fs::path path =
        fs::temp_directory_path() / ("VantelPluginTests-" + std::to_string(std::random_device()()));
    TempFolder() { fs::create_directories(path); }
    ~TempFolder() { fs::remove_all(path); }
    fs::path CopyTestPlugin(const std::string& fileName) const {
        fs::copy_file(kPlugin, path / fileName);
        return path / fileName;
    }
};

TEST(Plugin, LoadedTypesAreCreatedByNameAndRemovedOnUnload) {
    const std::size_t typeCount = library.GetTypes().size();
    const std::size_t operatorCount = library.GetOperatorInfos().size();
    const std::size_t dataTypeCount = library.GetDataTypes().size();
    const std::size_t parameterCount = library.GetParameterInfos().size();
    TypeEvents events;
    LogCapture log;
    ASSERT_TRUE(library.LoadPluginFromFile(kPlugin));
    EXPECT_EQ(log.Text(), Loading(kPlugin));  // its docs pass every check
    EXPECT_EQ(library.GetParameterInfos().size(), parameterCount + 1);
    EXPECT_EQ(events.added, kTestPluginTypes);
    EXPECT_EQ(library.GetTypes().size(), typeCount + 4);
    const ObjectType* samplePort = nullptr;  // object types outlive their plug-in
    {
        // The operator's ports and parameter are of the plug-in's own registered types.
        const std::unique_ptr<Object> made = library.GetType("TestPlugin.Math.Scale")->CreateInstance();
        const auto* scale = dynamic_cast<const Operator*>(made.get());
        ASSERT_TRUE(scale && scale->GetAllDataInputs().size() == 1 && scale->GetAllParameters().size() == 1);
        EXPECT_EQ(library.FindOperatorInfo(scale->GetType())->category, "Math");
        samplePort = scale->GetAllDataInputs()[0]->GetType();
        const DataTypeInfo* sample = library.FindDataType(samplePort);
        ASSERT_NE(sample, nullptr);
        EXPECT_EQ(scale->GetAllDataInputs()[0]->GetAcceptedOutputType(), sample->outputType);
        EXPECT_EQ(scale->GetAllDataOutputs().at(0)->GetType(), sample->outputType);
        EXPECT_EQ(library.FindParameterInfo(scale->GetAllParameters()[0]->GetType())->name, "Factor");
        for (const std::string& name : kTestPluginTypes) {
            EXPECT_EQ(library.GetType(name)->CreateInstance()->GetType(), library.GetType(name)) << name;
        }
    }
    log.Clear();
    library.UnloadPlugin("VantelTestPlugin");
    EXPECT_EQ(log.Text(), "[Info] Unloading plugin: VantelTestPlugin\n" + kUnloadTrace);
    EXPECT_EQ(events.removed, kTestPluginTypes);
    for (const std::string& name : kTestPluginTypes) {
        EXPECT_EQ(library.GetType(name), nullptr) << name;
    }
    EXPECT_EQ(library.GetTypes().size(), typeCount);
    EXPECT_EQ(library.GetOperatorInfos().size(), operatorCount);
    EXPECT_EQ(library.GetDataTypes().size(), dataTypeCount);
    EXPECT_EQ(library.GetParameterInfos().size(), parameterCount);
    EXPECT_EQ(library.FindParameterInfoByName("Factor"), nullptr);
    EXPECT_EQ(library.FindDataType(samplePort), nullptr);
}

TEST(Plugin, SecondLoadUnderTheSameNameReusesTheRecord) {
    LogCapture log;
    ASSERT_TRUE(library.LoadPluginFromFile(kPlugin));
    log.Clear();
    EXPECT_TRUE(library.LoadPluginFromFile(kPlugin));
    EXPECT_EQ(
        log.Text(),
        Loading(kPlugin) +
            "[Warning] Failed to register data type, id is already taken: \"TestPlugin.Sample\"\n"
            "[Warning] Failed to register parameter, it is already registered: "
            "\"TestPlugin.FactorParameter\"\n"
            "[Warning] Operator \"Scale\" in category \"Math\" is registered twice, by "
            "\"TestPlugin.Math.Scale\" and \"TestPlugin.Math.Scale\"\n"
            "[Warning] Failed to register operator, it is already registered: \"TestPlugin.Math.Scale\"\n");
    log.Clear();
    library.UnloadAllPlugins();
    EXPECT_EQ(log.Text(), "[Info] Unloading plugin: VantelTestPlugin\n" + kUnloadTrace);

    // Everything went: loading again registers afresh.
    TypeEvents events;
    log.Clear();
    ASSERT_TRUE(library.LoadPluginFromFile(kPlugin));
    EXPECT_EQ(log.Text(), Loading(kPlugin));
    EXPECT_EQ(events.added, kTestPluginTypes);
    library.UnloadPlugin("VantelTestPlugin");
}

// While a plug-in is developed it is loaded again from a new build: the types stay those of the first load,
// so its library must stay mapped until the plug-in is unloaded.
TEST(Plugin, EarlierLibraryOfAReloadedPluginStaysUntilUnload) {
    const TempFolder temp;
    const fs::path rebuilt = temp.CopyTestPlugin(kPlugin.filename().string());
    TypeEvents events;
    ASSERT_TRUE(library.LoadPluginFromFile(kPlugin));
    {
        const LogCapture quiet;  // the rebuild's types clash with the first load's
        ASSERT_TRUE(library.LoadPluginFromFile(rebuilt));
    }
    {
        const std::unique_ptr<Object> made = library.GetType("TestPlugin.Math.Scale")->CreateInstance();
        EXPECT_EQ(made->GetType()->GetName(), "TestPlugin.Math.Scale");
    }
    library.UnloadPlugin("VantelTestPlugin");
    EXPECT_EQ(events.removed, kTestPluginTypes);
    EXPECT_EQ(library.GetType("TestPlugin.Math.Scale"), nullptr);
}

// A record registered for a type that is there already leaves with the plug-in; the type stays.
TEST(Plugin, RecordForAnotherOwnersTypeLeavesTheTypeOnUnload) {
    static const ObjectType outer("PluginTests.Outer", Operator::Type(), nullptr);
    library.RegisterType(&outer);
    TypeEvents events;
    const EventSubscription meddler = library.TypeAddedEvent().Subscribe([&](const ObjectType* type) {
        if (type->GetName() == "TestPlugin.SampleInput") {
            OperatorInfo info;
            info.type = &outer;
            info.name = "Outer";
            library.RegisterOperator(info);
        }
    });
    {
        const LogCapture log;
        ASSERT_TRUE(library.LoadPluginFromFile(kPlugin));
    }
    EXPECT_NE(library.FindOperatorInfo(&outer), nullptr);
    library.UnloadPlugin("VantelTestPlugin");
    EXPECT_EQ(library.GetType("PluginTests.Outer"), &outer);
    EXPECT_EQ(library.FindOperatorInfo(&outer), nullptr);
    EXPECT_EQ(events.removed, kTestPluginTypes);
}

// Halfway through its load entry the plug-in throws: what it registered goes, and it is not loaded.
TEST(Plugin, LoadEntryThatThrowsIsTakenBackWhole) {
    const std::size_t typeCount = library.GetTypes().size();
    const std::size_t dataTypeCount = library.GetDataTypes().size();
    TypeEvents events;
    {
        const EventSubscription thrower = library.TypeAddedEvent().Subscribe([](const ObjectType* type) {
            if (type->GetName() == "TestPlugin.SampleOutput") {
                throw std::runtime_error("out of licences");
            }
        });
        LogCapture log;
        EXPECT_FALSE(library.LoadPluginFromFile(kPlugin));
        EXPECT_EQ(log.Text(), Loading(kPlugin) +
                                  "[Error] Failed to load plugin \"VantelTestPlugin\", its VantelPluginLoad "
                                  "entry point threw: out of licences\n");
        EXPECT_EQ(events.removed, (Names{"TestPlugin.SampleInput", "TestPlugin.SampleOutput"}));
        EXPECT_EQ(library.GetTypes().size(), typeCount);
        EXPECT_EQ(library.GetDataTypes().size(), dataTypeCount);
        log.Clear();
        library.UnloadPlugin("VantelTestPlugin");
        EXPECT_EQ(log.Text(),
                  "[Warning] Failed to unload plugin, it was never loaded: \"VantelTestPlugin\"\n");
    }
    // Nothing was left behind to clash with a clean load.
    LogCapture log;
    events.added.clear();
    ASSERT_TRUE(library.LoadPluginFromFile(kPlugin));
    EXPECT_EQ(log.Text(), Loading(kPlugin));
    EXPECT_EQ(events.added, kTestPluginTypes);
    events.removed.clear();
    library.UnloadPlugin("VantelTestPlugin");
    EXPECT_EQ(events.removed, kTestPluginTypes);  // the types taken back were not kept in its record
}

// A plug-in that unloads itself, or the plug-in loading it, from its load entry is refused; the load goes on.
TEST(Plugin, PluginsThatAreLoadingCannotBeUnloadedOrLoadedAgain) {
    for (const char* target : {"VantelTestPlugin", "VantelNestedTestPlugin"}) {
        SCOPED_TRACE(target);
        const EventSubscription meddler = library.TypeAddedEvent().Subscribe([&](const ObjectType* type) {
            if (type->GetName() == "TestPlugin.SampleInput") {
                library.UnloadPlugin(target);
                EXPECT_FALSE(library.LoadPluginFromFile(kPlugin));
            }
        });
        const fs::path file = TestPluginFile(target);
        const bool nested = file != kPlugin;
        LogCapture log;
        ASSERT_TRUE(library.LoadPluginFromFile(file));
        const std::string refused =
            "[Warning] Failed to unload plugin, it is still loading: \"" + std::string(target) + "\"\n" +
            Loading(kPlugin) + "[Warning] Failed to load plugin, it is still loading: \"VantelTestPlugin\"\n";
        EXPECT_EQ(log.Text(), (nested ? Loading(file) : "") + Loading(kPlugin) + refused);
        // The registrations after the refusal were booked to the right plug-ins, which unload cleanly, the
        // last loaded first: the type the nested plug-in registers after the inner load is its own again.
        EXPECT_NE(library.GetType("TestPlugin.Math.Scale"), nullptr);
        TypeEvents events;
        log.Clear();
        library.UnloadAllPlugins();
        const std::string unloaded = "[Info] Unloading plugin: VantelTestPlugin\n" + kUnloadTrace;
        EXPECT_EQ(log.Text(),
                  nested ? unloaded + "[Info] Unloading plugin: VantelNestedTestPlugin\n" : unloaded);
        Names removed = kTestPluginTypes;
        if (nested) {
            removed.insert(removed.end(), {"NestedTestPlugin.Before", "NestedTestPlugin.After"});
        }
        EXPECT_EQ(events.removed, removed);
        EXPECT_EQ(library.GetType("NestedTestPlugin.After"), nullptr);
    }
}

TEST(Plugin, RefusedLibrariesLeaveNoRecord) {
    const TempFolder temp;
    const fs::path noEntry = TestPluginFile("VantelNoEntryPlugin");
    const std::string extension = PluginFileExtension();
    const fs::path folder = temp.path / ("folder" + extension);
    fs::create_directory(folder);
    const auto refused = [](const fs::path& path, const std::string& problem) {
        return Loading(path) + problem + "\n[Warning] Failed to load plugin: \"" + path.string() + "\"\n";
    };
    struct Row {
        fs::path path;  // empty: LoadPlugin(name)
        const char* name;
        std::string log;
    };
    const std::vector<Row> rows = {
        {{},
         "NoSuchPlugin",
         "[Warning] Could not find a plugin library for \"NoSuchPlugin\" in any of the expected "
         "locations.\n"},
        {noEntry, "VantelNoEntryPlugin",
         Loading(noEntry) + "[Warning] Plugin library has no VantelPluginLoad entry point: \"" +
             noEntry.string() + "\"\n"},
        {temp.CopyTestPlugin("x" + MixedCase(extension)), "x",
         refused(temp.path / ("x" + MixedCase(extension)), "[Error] Shared library must have " + extension +
                                                               " or " + Capitals(extension) +
                                                               " file extension")},
        {folder, "folder", refused(folder, "[Error] Path of given shared library is not a regular file.")},
        {temp.path / ("missing" + extension), "missing",
         refused(temp.path / ("missing" + extension), "[Error] Failed to resolve path of shared library.")},
    };
    const std::size_t typeCount = library.GetTypes().size();
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        LogCapture log;
        EXPECT_FALSE(row.path.empty() ? library.LoadPlugin(row.name) : library.LoadPluginFromFile(row.path));
        EXPECT_EQ(log.Text(), row.log);
        log.Clear();
        library.UnloadPlugin(row.name);
        EXPECT_EQ(log.Text(), "[Warning] Failed to unload plugin, it was never loaded: \"" +
                                  std::string(row.name) + "\"\n");
    }
    EXPECT_EQ(library.GetTypes().size(), typeCount);
}

TEST(Plugin, NameComesFromTheFileOrTheCaller) {
    const TempFolder temp;
    const std::string extension = PluginFileExtension();
    for (const auto& [file, name] :
         {std::pair{temp.CopyTestPlugin("lib" + extension), "lib"},  // nothing after
          std::pair{temp.CopyTestPlugin("libX" + Capitals(extension)), "X"}}) {
        SCOPED_TRACE(name);
        LogCapture log;
        ASSERT_TRUE(library.LoadPluginFromFile(file));
        library.UnloadPlugin(name);
        EXPECT_EQ(log.Text(), Loading(file) + "[Info] Unloading plugin: " + name + "\n" + kUnloadTrace);
    }
    // Only the standard plug-in lies beside this executable. LoadPlugin takes the first of the platform's
    // file names that is there (on Linux "liblibVantelStandard.so" is not, "libVantelStandard.so" is), and
    // the plug-in keeps the name it was asked for.
    for (const std::string name : {"VantelStandard", "libVantelStandard"}) {
        SCOPED_TRACE(name);
        std::vector<fs::path> files = PluginFileNames(name);
        const auto found = std::find_if(files.begin(), files.end(), [](const fs::path& file) {
            return fs::exists(GetPluginFolder() / file);
        });
        LogCapture log;
        if (found == files.end()) {
            EXPECT_FALSE(library.LoadPlugin(name.c_str()));
            EXPECT_EQ(log.Text(), "[Warning] Could not find a plugin library for \"" + name +
                                      "\" in any of the expected locations.\n");
            continue;
        }
        ASSERT_TRUE(library.LoadPlugin(name.c_str()));
        EXPECT_NE(library.GetType("Standard.Math.Counter"), nullptr);
        library.UnloadPlugin(name.c_str());
        EXPECT_EQ(log.Text(),
                  Loading(GetPluginFolder() / *found) + "[Info] Unloading plugin: " + name + "\n");
        EXPECT_EQ(library.GetType("Standard.Math.Counter"), nullptr);
    }
}

// A host that exits without unloading its plug-ins must exit cleanly (the sanitizers fail the exit
// otherwise).
TEST(PluginDeathTest, ProcessEndsCleanlyWithAPluginLoaded) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            library.LoadPluginFromFile(kPlugin);
            std::exit(0);
        },
        testing::ExitedWithCode(0), "");
}

bool IsNamed(const fs::path& file, std::string_view part) {
    return file.filename().string().find(part) != std::string::npos;
}

// That no test plug-in is listed here shows end to end, in the host's own tests.
TEST(PluginFiles, ListsTheLibrariesBesideTheExecutableButTheCore) {
    const fs::path folder = GetPluginFolder();
    ASSERT_FALSE(folder.empty());
    // The core library lies beside the tests too, so leaving it out is a real choice.
    EXPECT_TRUE(
        std::any_of(fs::directory_iterator(folder), fs::directory_iterator(),
                    [](const fs::directory_entry& entry) { return IsNamed(entry.path(), "VantelCore"); }));
    const std::vector<fs::path> files = FindPluginFiles();
    EXPECT_TRUE(std::is_sorted(files.begin(), files.end()));
    EXPECT_TRUE(std::any_of(files.begin(), files.end(),
                            [](const fs::path& file) { return IsNamed(file, "VantelStandard"); }));
    for (const fs::path& file : files) {
        SCOPED_TRACE(file.string());
        EXPECT_EQ(file.parent_path(), folder);
        EXPECT_FALSE(IsNamed(file, "VantelCore"));
        EXPECT_FALSE(IsNamed(file, "Tests"));  // the test executables have no library extension
    }
}

}  // namespace
}  // namespace Vantel
