// The engine behind the edit fuzzer and the undo property test.
//
// Every step is one edit in its own committed transaction (or a save and load), followed by one frame. The
// oracle takes the file right before and right after each transaction; at the end, undoing every transaction
// in reverse must give back each "before" and redoing them each "after", byte for byte.
//
// Frames and the oracle: a frame is not an edit and records nothing, so anything it changed in the file
// would survive an undo and break the comparison. Values an operator computes are Output or transient and
// never saved; a parameter driven on every component is not saved either. What a frame could still change
// is a saved value that follows another one: a partly driven parameter whose source moved since the last
// frame. So parameter connections leave only parameters that frames never write (not Output, not transient,
// not a graph boundary's mirror), and a parameter that drives others is neither set nor connected to. Under
// that rule a frame leaves the file as it was, and the engine checks exactly that after every frame instead
// of loosening the undo comparison.
#include "EditSequence.h"

#include <array>
#include <cmath>
#include <exception>
#include <limits>
#include <memory>
#include <optional>
#include <random>
#include <sstream>
#include <string_view>
#include <utility>

#include <nlohmann/json.hpp>

#include <Vantel/Execution/Runner.h>
#include <Vantel/Execution/Tasks.h>
#include <Vantel/Objects/TypeLibrary.h>
#include <Vantel/Operators/GraphInputsOperator.h>
#include <Vantel/Operators/GraphOutputsOperator.h>
#include <Vantel/Parameters/TriggerParameter.h>
#include <Vantel/Parameters/VectorParameter.h>
#include <Vantel/Projects/Deserialization.h>
#include <Vantel/Projects/Project.h>
#include <Vantel/Projects/Serialization.h>
#include <Vantel/Projects/Transaction.h>
#include <Vantel/Projects/UndoRedo.h>

#include "EditOperators.h"
#include "Support/LogCapture.h"

namespace Vantel::Testing {
namespace {

// Error lines that these edits cause by design; any other "[Error]" line fails the sequence. The graph
// refuses connections quietly and the edits never hand a member of the wrong kind, so only this is left:
// a bundle created under a key its list already holds gets another key, with an error for the caller.
constexpr std::array<std::string_view, 1> kExpectedErrors = {"' is already taken in parameter group '"};

constexpr std::size_t kMaxEdits = 64;
constexpr std::array<std::string_view, 3> kStandardTypes = {
    "Standard.Math.Arithmetic", "Standard.Math.Oscillator", "Standard.Math.Counter"};
constexpr std::array<std::string_view, 5> kNames = {"", "Blur", "Node 1", "Blur", "Größe"};

std::string Save(const Project& project) {
    return Serialization::SerializeProjectText(project);
}

// The first line where the texts differ, both versions.
std::string FirstDifference(const std::string& expected, const std::string& actual) {
    std::istringstream left(expected);
    std::istringstream right(actual);
    std::string a;
    std::string b;
    for (int line = 1;; ++line) {
        const bool moreA = static_cast<bool>(std::getline(left, a));
        const bool moreB = static_cast<bool>(std::getline(right, b));
        if (!moreA && !moreB) {
            return "no difference";
        }
        if (!moreA || !moreB || a != b) {
            return "line " + std::to_string(line) + ":\n  expected: " + (moreA ? a : "<end>") +
                   "\n  actual:   " + (moreB ? b : "<end>");
        }
    }
}

bool IsBoundary(const Operator* op) {
    return dynamic_cast<const GraphInputsOperator*>(op) != nullptr ||
           dynamic_cast<const GraphOutputsOperator*>(op) != nullptr;
}

// Written by frames: an operator's results and the mirrors that carry values across a graph's boundary.
bool IsComputed(const Parameter& parameter) {
    return parameter.HasParameterFlag(ParameterFlag::Output) ||
           parameter.HasParameterFlag(ParameterFlag::NotSaved) || IsBoundary(parameter.GetOperator());
}

// A value that may change without disturbing what frames compute into saved values.
bool IsFreeToChange(const Parameter& parameter) {
    return !IsComputed(parameter) && parameter.GetOutgoingConnections().empty();
}

template <typename T>
std::vector<T*> OfType(const std::vector<Operator*>& operators) {
    std::vector<T*> found;
    for (Operator* op : operators) {
        if (auto* typed = dynamic_cast<T*>(op)) {
            found.push_back(typed);
        }
    }
    return found;
}

class Sequence {
public:
    explicit Sequence(std::span<const std::uint8_t> bytes) : input(bytes) {}

    std::string Run() {
        try {
            return RunChecked();
        } catch (const std::exception& error) {
            return Report(std::string("exception: ") + error.what());
        }
    }

private:
    struct Step {
        CommittedTransaction transaction;
        std::string before;
        std::string after;
        std::size_t edit;
    };

    std::string RunChecked() {
        runner.SetGraph(project->GetRootGraph());
        runner.WaitForTick();
        Frame();
        std::string saved = Save(*project);
        while (!input.AtEnd() && edits.size() < kMaxEdits) {
            if (std::string failure = RunStep(saved); !failure.empty()) {
                return failure;
            }
        }
        for (auto step = history.rbegin(); step != history.rend(); ++step) {
            if (!UndoTransaction(*project, step->transaction)) {
                return Report("undo of edit " + std::to_string(step->edit + 1) + " returned false");
            }
            if (const std::string now = Save(*project); now != step->before) {
                return Report("undo of edit " + std::to_string(step->edit + 1) +
                              " differs from the file before it, " + FirstDifference(step->before, now));
            }
        }
        for (const auto& step : history) {
            if (!ApplyTransaction(*project, step.transaction)) {
                return Report("redo of edit " + std::to_string(step.edit + 1) + " returned false");
            }
            if (const std::string now = Save(*project); now != step.after) {
                return Report("redo of edit " + std::to_string(step.edit + 1) +
                              " differs from the file after it, " + FirstDifference(step.after, now));
            }
        }
        return CheckLog();
    }

    // One edit, its checks, and the frame after it; `saved` is the file before and, afterwards, after it.
    std::string RunStep(std::string& saved) {
        const std::string before = saved;
        std::optional<CommittedTransaction> done;
        if (input.Chance(12)) {
            edits.push_back(Reload());
        } else {
            Transaction transaction("Edit " + std::to_string(edits.size() + 1));
            edits.push_back(Edit());
            done = transaction.Commit();
        }
        saved = Save(*project);
        if (done.has_value()) {
            for (const Record& record : done->records) {
                static_cast<void>(DescribeRecord(record));  // an undo menu names every record
            }
            history.push_back({std::move(*done), before, saved, edits.size() - 1});
        } else if (saved != before) {
            return Report("an edit that recorded nothing changed the file, " +
                          FirstDifference(before, saved));
        }
        std::unique_ptr<Project> loaded = Deserialization::DeserializeProject(nlohmann::json::parse(saved));
        if (loaded == nullptr) {
            return Report("the file just saved does not load");
        }
        if (const std::string again = Save(*loaded); again != saved) {
            return Report("save, load, save differs, " + FirstDifference(saved, again));
        }
        if (std::string failure = CheckLog(); !failure.empty()) {
            return failure;
        }
        Frame();
        if (const std::string framed = Save(*project); framed != saved) {
            return Report("a frame changed the file, " + FirstDifference(saved, framed));
        }
        return "";
    }

    void Frame() {
        runner.WaitForTick();
        runner.Execute();
        Tasks::ProcessMainThreadTasks();
    }

    std::string CheckLog() {
        const std::vector<std::string> lines = log.Lines();
        for (; logChecked < lines.size(); ++logChecked) {
            const std::string& line = lines[logChecked];
            if (!line.starts_with("[Error]")) {
                continue;
            }
            bool expected = false;
            for (std::string_view known : kExpectedErrors) {
                expected = expected || line.find(known) != std::string::npos;
            }
            if (!expected) {
                return Report("unexpected log line: " + line);
            }
        }
        return "";
    }

    std::string Report(const std::string& what) const {
        std::string text = "after edit " + std::to_string(edits.size()) + ": " + what + "\nedits:\n";
        for (std::size_t i = 0; i < edits.size(); ++i) {
            text += "  " + std::to_string(i + 1) + ". " + edits[i] + "\n";
        }
        const std::vector<std::string> lines = log.Lines();
        text += lines.size() > logChecked ? "log since the last check:\n" : "";
        for (std::size_t i = logChecked; i < lines.size(); ++i) {
            text += "  " + lines[i] + "\n";
        }
        return text;
    }

    // ---- Edits ----

    std::string Edit() {
        Graph& graph = PickGraph();
        if (graph.GetOperators().size() < 3 && input.Chance(2)) {
            return AddNode(graph);  // a graph with little in it gives most edits nothing to work on
        }
        switch (input.Pick(14)) {
            case 0:
            case 1:
                return AddNode(graph);
            case 2:
                return RemoveOperator(graph);
            case 3:
                return ConnectData(graph);
            case 4:
                return ConnectParameters(graph);
            case 5:
                return Disconnect(graph);
            case 6:
                return EditListInputs(graph);
            case 7:
                return EditBundles(graph);
            case 8:
                return WriteStructure(graph);
            case 9:
                return EditUserMembers(graph);
            case 10:
                return SetReference(graph);
            case 11:
                return Rename(graph);
            case 12:
                return Move(graph);
            default:
                return SetValue(graph);
        }
    }

    // Replaces the model by what its file holds, as a host's reload does; the history stays.
    std::string Reload() {
        std::unique_ptr<Project> loaded =
            Deserialization::DeserializeProject(nlohmann::json::parse(Save(*project)));
        if (loaded == nullptr) {
            return "save and load (did not load)";
        }
        project = std::move(loaded);
        runner.SetGraph(project->GetRootGraph());
        return "save and load";
    }

    std::unique_ptr<Operator> MakeOperator(bool inRoot) {
        switch (input.Pick(10)) {
            case 0:
                return std::make_unique<SourceOperator>();
            case 1:
                return std::make_unique<AddOperator>();
            case 2:
                return std::make_unique<MixerOperator>();
            case 3:
                return std::make_unique<MirrorOperator>();
            case 4:
                return std::make_unique<ShelfOperator>();
            case 5:
                return inRoot ? std::unique_ptr<Operator>(std::make_unique<GraphInputsOperator>())
                              : std::make_unique<GraphOutputsOperator>();
            case 6:
            case 7: {
                const ObjectType* type = TypeLibrary::Get()->GetType(
                    std::string(kStandardTypes[input.Pick(kStandardTypes.size())]));
                std::unique_ptr<Object> made = type != nullptr ? type->CreateInstance() : nullptr;
                return std::unique_ptr<Operator>(dynamic_cast<Operator*>(made.release()));
            }
            default:
                return std::make_unique<Graph>();
        }
    }

    // An editor's "add node": made, named, added, named again, moved and connected in one transaction.
    std::string AddNode(Graph& graph) {
        std::unique_ptr<Operator> made = MakeOperator(&graph == project->GetRootGraph());
        if (made == nullptr) {
            return "add nothing";
        }
        Operator& op = *made;
        std::string text = "add " + std::string(op.GetType()->GetName());
        if (input.Chance(2)) {
            op.SetName(kNames[input.Pick(kNames.size())]);
        }
        graph.AddOperator(std::move(made));
        text += " to " + graph.GetPath().ToString() + " as " + op.GetKey();
        if (auto* inner = dynamic_cast<Graph*>(&op)) {
            Furnish(*inner);
        }
        if (input.Chance(2)) {
            op.SetName(kNames[input.Pick(kNames.size())]);
            text += ", renamed '" + op.GetName() + "'";
        }
        op.SetPosition({static_cast<float>(input.Pick(64)), static_cast<float>(input.Pick(64))});
        if (input.Chance(2)) {
            text += ", " + ConnectData(graph);
        }
        return text;
    }

    // A new graph gets its boundary operators and a member of each kind, mirrored and connected inside.
    void Furnish(Graph& inner) {
        auto& inputs = Add<GraphInputsOperator>(inner);
        auto& outputs = Add<GraphOutputsOperator>(inner);
        DataInput* in = inner.AddUserDataInput(DataInput::Type());
        DataOutput* out = inner.AddUserDataOutput(DataOutput::Type());
        Parameter* parameter = inner.AddUserParameter(
            input.Chance(2) ? Vector3Parameter::Type() : NumberParameter::Type(), input.Chance(3));
        auto& adder = Add<AddOperator>(inner);
        if (in != nullptr && out != nullptr) {
            inner.AddDataConnection(DataConnection{inputs.FindMirror(*in), &adder.in});
            inner.AddDataConnection(DataConnection{&adder.out, outputs.FindMirror(*out)});
        }
        // The parameter's mirror is no connection source: it takes the graph's value only in a frame (see the
        // top).
        if (parameter != nullptr && parameter->HasParameterFlag(ParameterFlag::Output)) {
            Parameter* mirror = outputs.FindMirror(*parameter);
            if (mirror != nullptr) {
                inner.AddParameterConnection({&adder.offset, mirror, WholeValueLinks(adder.offset, *mirror)},
                                             false);
            }
        }
    }

    std::string RemoveOperator(Graph& graph) {
        std::vector<Operator*> candidates;
        for (Operator* op : graph.GetOperators()) {
            candidates.push_back(op);
        }
        Operator* op = Pick(candidates);
        if (op == nullptr) {
            return "remove nothing";
        }
        const std::string text = "remove " + op->GetPath().ToString();
        graph.RemoveOperator(op);
        return text;
    }

    std::string ConnectData(Graph& graph) {
        std::vector<DataOutput*> outputs;
        std::vector<DataInput*> inputs;
        std::vector<DataInputList*> lists;
        for (Operator* op : graph.GetOperators()) {
            for (DataOutput* output : op->GetAllDataOutputs()) {
                outputs.push_back(output);
            }
            for (DataInput* in : op->GetAllDataInputs()) {
                if (in->GetList() == nullptr) {
                    inputs.push_back(in);
                }
            }
            if (auto* mixer = dynamic_cast<MixerOperator*>(op)) {
                lists.push_back(&mixer->layers);
            }
            if (auto* shelf = dynamic_cast<ShelfOperator*>(op)) {
                lists.push_back(&shelf->items);
            }
        }
        DataOutput* output = Pick(outputs);
        if (output == nullptr) {
            return "connect nothing";
        }
        const std::string from = output->GetPath().ToString();
        if (!lists.empty() && input.Chance(2)) {
            DataInputList* list = Pick(lists);
            const bool made = graph.AddDataConnection(*output, *list) != nullptr;
            return "connect " + from + " to list " + list->GetPath().ToString() + (made ? "" : " (refused)");
        }
        DataInput* target = Pick(inputs);
        if (target == nullptr) {
            return "connect nothing";
        }
        const bool replace = input.Chance(2);
        if (replace) {
            graph.DisconnectDataInput(*target);
        }
        const bool made = graph.AddDataConnection(DataConnection{output, target});
        return std::string(replace ? "replace " : "connect ") + from + " to " + target->GetPath().ToString() +
               (made ? "" : " (refused)");
    }

    // Whole values from any settled parameter, or a few component links; `replace` takes components over.
    std::string ConnectParameters(Graph& graph) {
        std::vector<Parameter*> sources;
        std::vector<Parameter*> targets;
        for (Operator* op : graph.GetOperators()) {
            for (Parameter* parameter : op->GetAllParameters()) {
                if (!parameter->HasNumericComponents()) {
                    continue;
                }
                if (!IsComputed(*parameter)) {
                    sources.push_back(parameter);
                }
                if (parameter->AcceptsInputConnection() && parameter->GetOutgoingConnections().empty()) {
                    targets.push_back(parameter);
                }
            }
        }
        Parameter* source = Pick(sources);
        Parameter* target = Pick(targets);
        if (source == nullptr || target == nullptr) {
            return "link nothing";
        }
        std::vector<ComponentLink> links = WholeValueLinks(*source, *target);
        if (input.Chance(2)) {
            links = {{static_cast<std::int32_t>(input.Pick(source->GetComponentCount())),
                      static_cast<std::int32_t>(input.Pick(target->GetComponentCount()))}};
            if (target->GetComponentCount() > 1 && input.Chance(2)) {
                links.push_back({0, (links[0].target + 1) % target->GetComponentCount()});
            }
        }
        const bool replace = input.Chance(2);
        const bool made = graph.AddParameterConnection({source, target, links}, replace);
        std::string text = std::string(replace ? "replace-link " : "link ") + source->GetPath().ToString() +
                           " to " + target->GetPath().ToString() + " [";
        for (const ComponentLink& link : links) {
            text += " " + std::to_string(link.source) + ">" + std::to_string(link.target);
        }
        return text + " ]" + (made ? "" : " (refused)");
    }

    std::string Disconnect(Graph& graph) {
        const std::vector<DataConnection>& data = graph.GetDataConnections();
        const ParameterConnectionMap& parameters = graph.GetParameterConnections();
        if (!data.empty() && (parameters.empty() || input.Chance(2))) {
            const DataConnection connection = data[input.Pick(data.size())];
            const std::string text = "disconnect " + connection.input->GetPath().ToString();
            if (input.Chance(2)) {
                graph.DisconnectDataOutput(*connection.output);
                return text + " and all of its output";
            }
            graph.RemoveDataConnection(connection);
            return text;
        }
        if (parameters.empty()) {
            return "disconnect nothing";
        }
        auto chosen =
            std::next(parameters.begin(), static_cast<std::ptrdiff_t>(input.Pick(parameters.size())));
        const ParameterConnectionEndpoints endpoints = chosen->first;
        const int component = chosen->second.front().target;  // the entry goes with the connection
        const std::string text = "unlink " + endpoints.target->GetPath().ToString();
        switch (input.Pick(3)) {
            case 0:
                graph.DisconnectParameterComponent(*endpoints.target, component);
                return text + " component " + std::to_string(component);
            case 1:
                graph.DisconnectParameter(*endpoints.target);
                return text + " entirely";
            default:
                graph.RemoveParameterConnection(endpoints);
                return text + " from " + endpoints.source->GetPath().ToString();
        }
    }

    // Moves or removes a list input, connected or not.
    std::string EditListInputs(Graph& graph) {
        std::vector<DataInputList*> lists;
        for (auto* mixer : OfType<MixerOperator>(graph.GetOperators())) {
            lists.push_back(&mixer->layers);
        }
        for (auto* shelf : OfType<ShelfOperator>(graph.GetOperators())) {
            lists.push_back(&shelf->items);
        }
        DataInputList* list = Pick(lists);
        if (list == nullptr || list->GetInputCount() == 0) {
            return "edit no list";
        }
        DataInput* chosen = list->GetInput(input.Pick(list->GetInputCount()));
        const std::string text = chosen->GetPath().ToString();
        switch (input.Pick(3)) {
            case 0: {
                const std::size_t index = input.Pick(list->GetInputCount());
                list->MoveInput(chosen, index);
                return "move " + text + " to " + std::to_string(index);
            }
            case 1:
                graph.DisconnectDataInput(*chosen);
                return "disconnect list input " + text;
            default:
                list->GetOperator()->RemoveDataInput(chosen);
                return "remove list input " + text;
        }
    }

    std::string EditBundles(Graph& graph) {
        std::vector<ParameterBundleList*> lists;
        for (auto* mixer : OfType<MixerOperator>(graph.GetOperators())) {
            lists.push_back(&mixer->bands);
        }
        for (auto* shelf : OfType<ShelfOperator>(graph.GetOperators())) {
            lists.push_back(&shelf->shelves);
        }
        ParameterBundleList* list = Pick(lists);
        if (list == nullptr) {
            return "edit no bundles";
        }
        const std::size_t count = list->GetBundleCount();
        const std::string where = list->GetPath().ToString();
        if (count == 0 || input.Chance(3)) {
            const std::string_view kind = input.Chance(2) ? "Pair" : "Band";
            list->CreateBundle(kind, input.Chance(2) ? "" : "Shelf");
            return "create a " + std::string(kind) + " bundle in " + where;
        }
        ParameterBundle* bundle = list->GetBundle(input.Pick(count));
        const std::string text = bundle->GetPath().ToString();
        if (input.Chance(3)) {
            const std::size_t index = input.Pick(count);
            list->MoveBundle(bundle, index);
            return "move bundle " + text + " to " + std::to_string(index);
        }
        list->RemoveBundle(bundle);
        return "remove bundle " + text;
    }

    std::string WriteStructure(Graph& graph) {
        auto shelves = OfType<ShelfOperator>(graph.GetOperators());
        if (ShelfOperator* shelf = Pick(shelves);
            shelf != nullptr && IsFreeToChange(shelf->count) && input.Chance(2)) {
            const auto count = static_cast<std::int64_t>(input.Pick(6));
            shelf->count.SetValue(count);
            return "set " + shelf->count.GetPath().ToString() + " to " + std::to_string(count);
        }
        return SetModel(graph);
    }

    // A mirror copies its model's parameters once, so it only gets models whose parameters never change.
    std::string SetModel(Graph& graph) {
        MirrorOperator* mirror = Pick(OfType<MirrorOperator>(graph.GetOperators()));
        if (mirror == nullptr) {
            return "set no model";
        }
        std::vector<Operator*> models{nullptr};
        for (Operator* op : graph.GetOperators()) {
            const std::string name(op->GetType()->GetName());
            if (op != mirror &&
                (dynamic_cast<SourceOperator*>(op) != nullptr || dynamic_cast<AddOperator*>(op) != nullptr ||
                 name.starts_with("Standard."))) {
                models.push_back(op);
            }
        }
        Operator* model = Pick(models);
        // The mirror keeps the copies that both models share and appends the rest, an order that a fresh
        // build would not give; through null it builds afresh (two structural writes in one transaction).
        mirror->model.SetValue(nullptr);
        mirror->model.SetValue(model);
        return "set " + mirror->model.GetPath().ToString() + " to " +
               (model != nullptr ? model->GetPath().ToString() : "nothing");
    }

    std::string EditUserMembers(Graph& graph) {
        if (&graph == project->GetRootGraph() || input.Chance(2)) {
            return AddUserMember(graph);
        }
        std::vector<DataInput*> inputs;
        std::vector<DataOutput*> outputs;
        std::vector<Parameter*> parameters;
        for (DataInput* in : graph.GetAllDataInputs()) {
            if (in->IsAddedByUser()) {
                inputs.push_back(in);
            }
        }
        for (DataOutput* out : graph.GetAllDataOutputs()) {
            if (out->IsAddedByUser()) {
                outputs.push_back(out);
            }
        }
        for (Parameter* parameter : graph.GetAllParameters()) {
            if (parameter->IsAddedByUser()) {
                parameters.push_back(parameter);
            }
        }
        switch (input.Pick(4)) {
            case 0:
                if (DataInput* in = Pick(inputs)) {
                    const std::string text = "remove user input " + in->GetPath().ToString();
                    graph.RemoveDataInput(in);
                    return text;
                }
                return "remove no user input";
            case 1:
                if (DataOutput* out = Pick(outputs)) {
                    const std::string text = "remove user output " + out->GetPath().ToString();
                    graph.RemoveDataOutput(out);
                    return text;
                }
                return "remove no user output";
            case 2:
                if (Parameter* parameter = Pick(parameters)) {
                    const std::string text = "remove user parameter " + parameter->GetPath().ToString();
                    graph.RemoveParameter(parameter);
                    return text;
                }
                return "remove no user parameter";
            default:
                if (Parameter* parameter = Pick(parameters)) {
                    const std::size_t index = input.Pick(graph.GetParameterGroup().GetChildCount());
                    graph.GetParameterGroup().Move(parameter, index);
                    return "move user parameter " + parameter->GetPath().ToString() + " to " +
                           std::to_string(index);
                }
                return "move no user parameter";
        }
    }

    std::string AddUserMember(Graph& graph) {
        const std::string where = graph.GetPath().ToString();
        switch (input.Pick(4)) {
            case 0:
                graph.AddUserDataInput(DataInput::Type());
                return "add a user input to " + where;
            case 1:
                graph.AddUserDataOutput(DataOutput::Type());
                return "add a user output to " + where;
            case 2:
                graph.AddUserParameter(Vector3Parameter::Type(), input.Chance(3));
                return "add a user vector to " + where;
            default:
                graph.AddUserParameter(NumberParameter::Type(), input.Chance(3));
                return "add a user number to " + where;
        }
    }

    // A reference to an operator beside it, which a later removal may take away.
    std::string SetReference(Graph& graph) {
        std::vector<PtrParameter*> references;
        for (auto* mixer : OfType<MixerOperator>(graph.GetOperators())) {
            references.push_back(&mixer->focus);
        }
        for (auto* shelf : OfType<ShelfOperator>(graph.GetOperators())) {
            references.push_back(&shelf->target);
        }
        PtrParameter* reference = Pick(references);
        if (reference == nullptr) {
            return SetModel(graph);
        }
        std::vector<Object*> allowed = reference->GetAllowedObjects();
        allowed.push_back(nullptr);
        Object* value = Pick(allowed);
        reference->SetValue(value);
        return "set " + reference->GetPath().ToString() + " to " +
               (value != nullptr ? value->GetPath().ToString() : "nothing");
    }

    std::string Rename(Graph& graph) {
        Operator* op = Pick(graph.GetOperators());
        if (op == nullptr) {
            return "rename nothing";
        }
        const std::string text = "rename " + op->GetPath().ToString();
        op->SetName(kNames[input.Pick(kNames.size())]);
        return text + " to '" + op->GetName() + "'";
    }

    std::string Move(Graph& graph) {
        Operator* op = Pick(graph.GetOperators());
        if (op == nullptr) {
            return "move nothing";
        }
        const std::vector<float> special{1e30f,
                                         0.5f,
                                         -0.0f,
                                         std::numeric_limits<float>::quiet_NaN(),
                                         std::numeric_limits<float>::infinity(),
                                         -std::numeric_limits<float>::infinity()};
        const auto coordinate = [this, &special] {
            return input.Chance(4) ? special[input.Pick(special.size())]
                                   : static_cast<float>(input.Pick(256)) - 128.0f;
        };
        const glm::vec2 position{coordinate(), coordinate()};
        op->SetPosition(position);
        return "move " + op->GetPath().ToString() + " to (" + std::to_string(position.x) + ", " +
               std::to_string(position.y) + ")";
    }

    // One component of a value that nothing drives and that drives nothing.
    std::string SetValue(Graph& graph) {
        std::vector<Parameter*> candidates;
        for (Operator* op : graph.GetOperators()) {
            for (Parameter* parameter : op->GetAllParameters()) {
                if (parameter->HasNumericComponents() && IsFreeToChange(*parameter) &&
                    !parameter->HasParameterFlag(ParameterFlag::Structural) &&
                    parameter->GetType() != TriggerParameter::Type()) {
                    candidates.push_back(parameter);
                }
            }
        }
        Parameter* parameter = Pick(candidates);
        if (parameter == nullptr) {
            return "set nothing";
        }
        const auto component = static_cast<int>(input.Pick(parameter->GetComponentCount()));
        if (parameter->FindIncomingConnection(component) != nullptr) {
            return "set nothing (driven)";
        }
        const double value = static_cast<double>(input.Pick(41)) / 4.0 - 5.0;
        parameter->SetComponent(component, value);
        return "set " + parameter->GetPath().ToString() + "[" + std::to_string(component) + "] to " +
               std::to_string(value);
    }

    // ---- Choices ----

    // The root graph and every graph below it, depth first.
    Graph& PickGraph() {
        std::vector<Graph*> graphs{project->GetRootGraph()};
        for (std::size_t i = 0; i < graphs.size(); ++i) {
            for (Graph* inner : OfType<Graph>(graphs[i]->GetOperators())) {
                graphs.push_back(inner);
            }
        }
        return *graphs[input.Pick(graphs.size())];
    }

    template <typename T>
    T* Pick(const std::vector<T*>& items) {
        return items.empty() ? nullptr : items[input.Pick(items.size())];
    }

    ByteReader input;
    LogCapture log;
    std::size_t logChecked = 0;
    std::unique_ptr<Project> project = std::make_unique<Project>();
    Runner runner{std::make_unique<FixedClock>(1.0 / 30.0)};
    std::vector<std::string> edits;
    std::vector<Step> history;
};

}  // namespace

bool PrepareEditSequence() {
    static const bool loaded = [] {
        RegisterEditTestTypes();
        LogCapture quiet;
        return TypeLibrary::Get()->LoadPlugin("VantelStandard");
    }();
    return loaded;
}

std::string RunEditSequence(std::span<const std::uint8_t> bytes) {
    return Sequence(bytes).Run();
}

std::vector<std::uint8_t> SeededBytes(unsigned seed, std::size_t count) {
    std::mt19937 generator(seed);
    std::vector<std::uint8_t> bytes(count);
    for (std::uint8_t& byte : bytes) {
        byte = static_cast<std::uint8_t>(generator() & 0xff);
    }
    return bytes;
}

}  // namespace Vantel::Testing
