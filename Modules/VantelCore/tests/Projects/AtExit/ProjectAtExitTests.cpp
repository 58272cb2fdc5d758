// A host may keep its project in a global and let the process's exit destroy it, after the statics that were
// made later (the object types and the type library among them) are gone: the scenario ends with the process,
// so it runs alone.
#include <gtest/gtest.h>

#include <memory>

#include <Vantel/Objects/ObjectCast.h>
#include <Vantel/Objects/TypeLibrary.h>
#include <Vantel/Operators/Graph.h>
#include <Vantel/Projects/Project.h>

#include "Support/ProjectOperators.h"
#include "Support/TestPlugins.h"

namespace Vantel {
namespace {

// Their destructors are registered before main, so they run after those of every type made since.
std::unique_ptr<Project> keptProject;
std::unique_ptr<Project> keptPluginProject;

TEST(ProjectAtExit, AProjectInAGlobalIsDestroyedAfterTheTypes) {
    keptProject = std::make_unique<Project>();
    Graph& root = *keptProject->GetRootGraph();
    auto mixer = std::make_unique<Testing::MixerOperator>();
    auto other = std::make_unique<Testing::MixerOperator>();
    Testing::MixerOperator& first = *mixer;
    Testing::MixerOperator& second = *other;
    root.AddOperator(std::move(mixer));
    root.AddOperator(std::move(other));
    first.bands.CreateBundle("", "");
    first.focus.SetValue(&second);
    ASSERT_TRUE(root.AddParameterConnection({&first.mix, &second.mix, WholeValueLinks(first.mix, second.mix)},
                                            false));
    ASSERT_TRUE(root.AddDataConnection(first.out, second.layers) != nullptr);
    // Destroying it here would prove nothing: the process's exit does, and fails under the sanitizers if it
    // touches a type that is gone.
}

// A plug-in the host never unloaded stays mapped as the type library goes, so that its operators, destroyed
// later, still have their code.
TEST(ProjectAtExit, APluginsOperatorOutlivesTheTypeLibrary) {
    TypeLibrary& library = *TypeLibrary::Get();
    ASSERT_TRUE(library.LoadPluginFromFile(Testing::TestPluginFile("VantelTestPlugin")));
    keptPluginProject = std::make_unique<Project>();
    std::unique_ptr<Object> made = library.GetType("TestPlugin.Math.Scale")->CreateInstance();
    ASSERT_NE(ObjectCast<Operator>(made.get()), nullptr);
    keptPluginProject->GetRootGraph()->AddOperator(
        std::unique_ptr<Operator>(ObjectCast<Operator>(made.release())));
}

}  // namespace
}  // namespace Vantel
