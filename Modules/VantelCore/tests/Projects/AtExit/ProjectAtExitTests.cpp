// A host may keep its project in a global and let the process's exit destroy it, after the statics that were
// made later (the object types among them) are gone: the scenario ends with the process, so it runs alone.
#include <gtest/gtest.h>

#include <memory>

#include <Vantel/Operators/Graph.h>
#include <Vantel/Projects/Project.h>

#include "Support/ProjectOperators.h"

namespace Vantel {
namespace {

// Its destructor is registered before main, so it runs after those of every type made since.
std::unique_ptr<Project> keptProject;

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

}  // namespace
}  // namespace Vantel
