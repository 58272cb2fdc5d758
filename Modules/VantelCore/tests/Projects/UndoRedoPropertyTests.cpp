#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <random>
#include <set>
#include <string>
#include <vector>

#include <Vantel/Operators/DataInputList.h>
#include <Vantel/Operators/Graph.h>
#include <Vantel/Operators/GraphInputsOperator.h>
#include <Vantel/Operators/GraphOutputsOperator.h>
#include <Vantel/Parameters/ParameterBundle.h>
#include <Vantel/Projects/Deserialization.h>
#include <Vantel/Projects/Project.h>
#include <Vantel/Projects/Serialization.h>
#include <Vantel/Projects/Transaction.h>
#include <Vantel/Projects/UndoRedo.h>

#include "Support/LogCapture.h"
#include "Support/ProjectOperators.h"

namespace Vantel {
namespace {

using Testing::AddOperator;
using Testing::MirrorOperator;
using Testing::MixerOperator;
using Testing::NumberParameter;
using Testing::SourceOperator;

std::string Save(const Project& project) {
    return Serialization::SerializeProject(project).dump(4);
}

// A transaction that removed a graph member whose mirror inside was connected. The mirror's disconnection is
// recorded before the removal, so that undo makes the connection again only once the member is back.
bool RemovesConnectedMember(const CommittedTransaction& done) {
    bool mirrorDisconnected = false;
    for (const Record& record : done.records) {
        const std::string text = DescribeRecord(record);
        if (text.starts_with("Disconnect") && text.find("putsOperator [") != std::string::npos) {
            mirrorDisconnected = true;  // a Graph Inputs or Graph Outputs operator
        } else if (mirrorDisconnected &&
                   (text.starts_with("Remove data") || text.starts_with("Remove parameter"))) {
            return true;
        }
    }
    return false;
}

// Random edits of one project; each edit picks its targets among what the graphs hold right now.
class Editor {
public:
    Editor(Project& project, unsigned seed) : project(project), random(seed) {}

    void Edit() {
        Graph& graph = PickGraph();
        switch (Pick(14)) {
            case 0:
                AddSome(graph);
                break;
            case 1:
                if (Operator* op = PickOperator(graph)) {
                    graph.RemoveOperator(op);
                }
                break;
            case 2:
                // A driven value follows its source only when a frame runs, which never happens here; a
                // source that drives one keeps its value, so that what a driven value holds stays its
                // source's.
                for (Operator* op : graph.GetOperators()) {
                    if (auto* source = dynamic_cast<SourceOperator*>(op);
                        source != nullptr && source->value.GetOutgoingConnections().empty()) {
                        source->value.SetValue(Pick(100) / 4.0);
                    }
                }
                break;
            case 3:
                if (auto* adder = Find<AddOperator>(graph)) {
                    adder->offset.SetComponent(0, Pick(50) - 25.0);
                }
                break;
            case 4:
                Connect(graph);
                break;
            case 5:
                if (auto* adder = Find<AddOperator>(graph); adder != nullptr && Find<SourceOperator>(graph)) {
                    SourceOperator* source = Find<SourceOperator>(graph);
                    graph.AddParameterConnection(
                        ParameterConnection{&source->value, &adder->offset,
                                            WholeValueLinks(source->value, adder->offset)},
                        true);
                }
                break;
            case 6:
                if (Pick(3) == 0) {
                    graph.AddUserDataInput(DataInput::Type());
                } else if (Pick(2) == 0) {
                    graph.AddUserDataOutput(DataOutput::Type());
                } else {
                    graph.AddUserParameter(NumberParameter::Type(), Pick(2) == 0);
                }
                break;
            case 7:
                EditBundles(graph);
                break;
            case 8:
                if (Operator* op = PickOperator(graph)) {
                    op->SetName("Name " + std::to_string(Pick(5)));
                    op->SetPosition({static_cast<float>(Pick(9)), static_cast<float>(Pick(9))});
                }
                break;
            case 9:
                if (auto* mixer = Find<MixerOperator>(graph);
                    mixer != nullptr && mixer->layers.GetInputCount() > 1) {
                    mixer->layers.MoveInput(mixer->layers.GetInput(0), mixer->layers.GetInputCount() - 1);
                }
                break;
            case 10:
                // A mirror copies its model's parameters once; those of a graph and of its boundary operators
                // change afterwards, which a reloaded file would follow.
                if (auto* mirror = Find<MirrorOperator>(graph)) {
                    Operator* model = PickOperator(graph);
                    const bool changing = dynamic_cast<Graph*>(model) != nullptr ||
                                          dynamic_cast<GraphInputsOperator*>(model) != nullptr ||
                                          dynamic_cast<GraphOutputsOperator*>(model) != nullptr;
                    mirror->model.SetValue(Pick(3) == 0 || changing ? nullptr : model);
                }
                break;
            case 12:
                RemoveMember(graph);
                break;
            case 13:
                ConnectBoundary(graph);
                break;
            default:
                if (auto* mixer = Find<MixerOperator>(graph);
                    mixer != nullptr && mixer->layers.GetInputCount() > 0) {
                    graph.DisconnectDataInput(*mixer->layers.GetInput(Pick(mixer->layers.GetInputCount())));
                }
                break;
        }
    }

    // A graph with members whose mirrors are connected inside, so that every run removes some of them.
    void Populate() {
        project.GetRootGraph()->AddOperator(std::make_unique<Graph>());
        auto& inner = *dynamic_cast<Graph*>(project.GetRootGraph()->GetOperators().back());
        inner.AddOperator(std::make_unique<GraphInputsOperator>());
        inner.AddOperator(std::make_unique<GraphOutputsOperator>());
        inner.AddOperator(std::make_unique<SourceOperator>());
        inner.AddOperator(std::make_unique<AddOperator>());
        for (int i = 0; i < 2; ++i) {
            inner.AddUserDataInput(DataInput::Type());
            inner.AddUserDataOutput(DataOutput::Type());
            inner.AddUserParameter(NumberParameter::Type(), i == 0);
        }
        for (int i = 0; i < 3; ++i) {
            ConnectBoundary(inner);
        }
    }

private:
    std::size_t Pick(std::size_t count) {
        return std::uniform_int_distribution<std::size_t>(0, count - 1)(random);
    }

    Graph& PickGraph() {
        std::vector<Graph*> graphs{project.GetRootGraph()};
        for (Operator* op : project.GetRootGraph()->GetOperators()) {
            if (auto* inner = dynamic_cast<Graph*>(op)) {
                graphs.push_back(inner);
            }
        }
        return *graphs[Pick(graphs.size())];
    }

    Operator* PickOperator(Graph& graph) {
        const std::vector<Operator*>& operators = graph.GetOperators();
        return operators.empty() ? nullptr : operators[Pick(operators.size())];
    }

    template <typename T>
    T* Find(Graph& graph) {
        std::vector<T*> found;
        for (Operator* op : graph.GetOperators()) {
            if (auto* typed = dynamic_cast<T*>(op)) {
                found.push_back(typed);
            }
        }
        return found.empty() ? nullptr : found[Pick(found.size())];
    }

    void AddSome(Graph& graph) {
        switch (Pick(5)) {
            case 4:
                graph.AddOperator(std::make_unique<MirrorOperator>());
                break;
            case 0:
                graph.AddOperator(std::make_unique<SourceOperator>());
                break;
            case 1:
                graph.AddOperator(std::make_unique<AddOperator>());
                break;
            case 2:
                graph.AddOperator(std::make_unique<MixerOperator>());
                Feed(graph, *dynamic_cast<MixerOperator*>(graph.GetOperators().back()));
                break;
            default:
                if (&graph == project.GetRootGraph()) {
                    graph.AddOperator(std::make_unique<Graph>());
                }
                break;
        }
    }

    // A new mixer comes with a band and two layers, so that moves find something to move.
    void Feed(Graph& graph, MixerOperator& mixer) {
        mixer.bands.CreateBundle("Band", "");
        for (int i = 0; i < 2; ++i) {
            graph.AddOperator(std::make_unique<SourceOperator>());
            graph.AddDataConnection(dynamic_cast<SourceOperator*>(graph.GetOperators().back())->out,
                                    mixer.layers);
        }
    }

    // Made, or replacing the connection the input had.
    void Connect(Graph& graph) {
        auto* source = Find<SourceOperator>(graph);
        if (source == nullptr) {
            return;
        }
        if (auto* mixer = Find<MixerOperator>(graph); mixer != nullptr && Pick(3) != 0) {
            graph.AddDataConnection(source->out, mixer->layers);
        } else if (auto* adder = Find<AddOperator>(graph)) {
            graph.DisconnectDataInput(adder->in);
            graph.AddDataConnection(DataConnection{&source->out, &adder->in});
        }
    }

    // Removes one of the graph's user ports or parameters, wherever it sits, connected or not.
    void RemoveMember(Graph& graph) {
        const std::vector<DataInput*> inputs = UserOnly(graph.GetAllDataInputs());
        const std::vector<DataOutput*> outputs = UserOnly(graph.GetAllDataOutputs());
        const std::vector<Parameter*> parameters = UserOnly(graph.GetAllParameters());
        if (parameters.size() > 1 && Pick(4) == 0) {  // the mirrors follow a move too
            const std::size_t from = Pick(parameters.size());
            graph.GetParameterGroup().Move(parameters[from],
                                           parameters[(from + 1) % parameters.size()]->GetIndex());
            return;
        }
        const std::size_t count = inputs.size() + outputs.size() + parameters.size();
        if (count == 0) {
            return;
        }
        const std::size_t chosen = Pick(count);
        if (chosen < inputs.size()) {
            graph.RemoveDataInput(inputs[chosen]);
        } else if (chosen < inputs.size() + outputs.size()) {
            graph.RemoveDataOutput(outputs[chosen - inputs.size()]);
        } else {
            graph.RemoveParameter(parameters[chosen - inputs.size() - outputs.size()]);
        }
    }

    // A mirror of one of the graph's members to an operator beside it, inside the graph.
    void ConnectBoundary(Graph& graph) {
        auto* source = Find<SourceOperator>(graph);
        auto* adder = Find<AddOperator>(graph);
        Parameter* parameter = PickUser(graph.GetAllParameters());
        if (auto* inputs = Find<GraphInputsOperator>(graph); inputs != nullptr && adder != nullptr) {
            if (DataInput* input = PickUser(graph.GetAllDataInputs())) {
                graph.DisconnectDataInput(adder->in);
                graph.AddDataConnection(DataConnection{inputs->FindMirror(*input), &adder->in});
            }
            if (Parameter* mirror = parameter != nullptr ? inputs->FindMirror(*parameter) : nullptr) {
                graph.AddParameterConnection(
                    ParameterConnection{mirror, &adder->offset, WholeValueLinks(*mirror, adder->offset)},
                    true);
            }
        }
        if (auto* outputs = Find<GraphOutputsOperator>(graph); outputs != nullptr && source != nullptr) {
            if (DataOutput* output = PickUser(graph.GetAllDataOutputs())) {
                DataInput* mirror = outputs->FindMirror(*output);
                graph.DisconnectDataInput(*mirror);
                graph.AddDataConnection(DataConnection{&source->out, mirror});
            }
            if (Parameter* mirror = parameter != nullptr ? outputs->FindMirror(*parameter) : nullptr) {
                graph.AddParameterConnection(
                    ParameterConnection{&source->value, mirror, WholeValueLinks(source->value, *mirror)},
                    true);
            }
        }
    }

    template <typename Member>
    static std::vector<Member*> UserOnly(const std::vector<Member*>& members) {
        std::vector<Member*> user;
        for (Member* member : members) {
            if (member->IsAddedByUser()) {
                user.push_back(member);
            }
        }
        return user;
    }

    template <typename Member>
    Member* PickUser(const std::vector<Member*>& members) {
        const std::vector<Member*> user = UserOnly(members);
        return user.empty() ? nullptr : user[Pick(user.size())];
    }

    void EditBundles(Graph& graph) {
        auto* mixer = Find<MixerOperator>(graph);
        if (mixer == nullptr) {
            return;
        }
        const std::size_t count = mixer->bands.GetBundles().size();
        if (count == 0 || Pick(3) == 0) {
            mixer->bands.CreateBundle("Band", "");
        } else if (Pick(2) == 0) {
            const std::size_t from = Pick(count);
            mixer->bands.MoveBundle(mixer->bands.GetBundle(from), (from + 1) % count);
        } else {
            mixer->bands.RemoveBundle(mixer->bands.GetBundle(Pick(count)));
        }
    }

    Project& project;
    std::mt19937 random;
};

TEST(UndoRedoProperty, UndoAllAndRedoAllRoundTripTheFile) {
    Testing::RegisterProjectTestTypes();
    std::size_t records = 0;
    std::size_t connectedRemovals = 0;
    std::set<int> kinds;
    for (unsigned seed = 1; seed <= 200; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Testing::LogCapture log;
        Project project;
        Editor editor(project, seed);
        editor.Populate();
        const std::string original = Save(project);
        std::vector<CommittedTransaction> history;
        for (int edit = 0; edit < 20; ++edit) {
            Transaction transaction("Edit " + std::to_string(edit));
            editor.Edit();
            if (std::optional<CommittedTransaction> done = transaction.Commit()) {
                history.push_back(std::move(*done));
            }
        }
        const std::string edited = Save(project);
        ASSERT_EQ(Serialization::SerializeProjectText(project), edited);  // the file's writer agrees
        for (const CommittedTransaction& done : history) {
            records += done.records.size();
            connectedRemovals += RemovesConnectedMember(done) ? 1 : 0;
            for (const Record& record : done.records) {
                kinds.insert(RecordKind(record));
            }
        }

        for (auto it = history.rbegin(); it != history.rend(); ++it) {
            ASSERT_TRUE(UndoTransaction(project, *it)) << it->name;
        }
        ASSERT_EQ(Save(project), original);
        for (const CommittedTransaction& done : history) {
            ASSERT_TRUE(ApplyTransaction(project, done)) << done.name;
        }
        ASSERT_EQ(Save(project), edited);

        std::unique_ptr<Project> loaded = Deserialization::DeserializeProject(nlohmann::json::parse(edited));
        ASSERT_NE(loaded, nullptr);
        ASSERT_EQ(Save(*loaded), edited);
        EXPECT_EQ(log.Text(), "");
    }
    // Every kind but a restructure of user parameters (8), which these edits never make.
    EXPECT_EQ(kinds, (std::set<int>{0, 1, 2, 3, 4, 5, 6, 7, 9, 10, 11, 12, 13, 14, 15}));
    EXPECT_GT(connectedRemovals, 20u);
    EXPECT_GT(records, 1000u);
}

}  // namespace
}  // namespace Vantel
