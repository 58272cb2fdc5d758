#include <Vantel/Projects/UndoRedo.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <Vantel/Objects/Access.h>
#include <Vantel/Operators/DataInput.h>
#include <Vantel/Operators/DataInputList.h>
#include <Vantel/Operators/DataInputListImplementation.h>
#include <Vantel/Operators/DataOutput.h>
#include <Vantel/Operators/DataPortImplementation.h>
#include <Vantel/Operators/Graph.h>
#include <Vantel/Operators/GraphImplementation.h>
#include <Vantel/Operators/Operator.h>
#include <Vantel/Operators/OperatorImplementation.h>
#include <Vantel/Parameters/Parameter.h>
#include <Vantel/Parameters/ParameterBundle.h>
#include <Vantel/Parameters/ParameterBundleList.h>
#include <Vantel/Parameters/ParameterGroup.h>
#include <Vantel/Parameters/ParameterImplementation.h>
#include <Vantel/Parameters/ParameterRootGroup.h>
#include <Vantel/Projects/Deserialization.h>
#include <Vantel/Projects/Project.h>
#include <Vantel/Projects/Transaction.h>
#include <Vantel/Support/Logging.h>

#include "Projects/DeserializationSupport.h"

namespace Vantel {

namespace {

using nlohmann::json;

enum class Direction { Forward, Backward };

void LogDrift(const Path& path) {
    LogError("ApplyRecord: " + path.ToString() +
             " was not found. The history and the model have drifted apart.");
}

void RebuildIfDirty(Operator* op) {
    if (op != nullptr) {
        Access::GetImplementation(*op)->UpdateStructureIfDirty();
    }
}

// The operator whose structure the compound record at `path` rebuilds; none when the record's target is gone.
std::optional<Path> RebuiltOperator(Project& project, const Path& path) {
    auto* parameter = dynamic_cast<Parameter*>(project.Resolve(path));
    Operator* op = parameter != nullptr ? parameter->GetOperator() : nullptr;
    return op != nullptr ? std::optional<Path>(op->GetPath()) : std::nullopt;
}

// ---- one function per kind and direction ----

// Records nested in a compound record were made by the rebuild that its write caused, and the replay of that
// write has just run the rebuild again: it made and removed the operator's members itself. So, below the
// rebuilt operator, a target that is gone is done rather than drift, a member that the record puts back and
// that exists again only gets its stored state, and a member that the operator's own code made is never
// taken out from here.
class Replayer {
public:
    Replayer(Project& project, Direction direction, const Path* rebuilt)
        : project(project), direction(direction), rebuilt(rebuilt) {}

    bool Forward() const { return direction == Direction::Forward; }

    bool operator()(const ParameterValueRecord& record) const {
        return SetValue(record.path, Forward() ? record.next : record.previous);
    }

    bool operator()(const ParameterComponentRecord& record) const {
        auto* parameter = Find<Parameter>(record.path);
        if (parameter == nullptr) {
            return Missing(record.path);
        }
        parameter->SetComponent(record.component, Forward() ? record.next : record.previous);
        return true;
    }

    bool operator()(const OperatorPositionRecord& record) const {
        auto* op = Find<Operator>(record.path);
        if (op == nullptr) {
            return Missing(record.path);
        }
        op->SetPosition(Forward() ? record.next : record.previous);
        return true;
    }

    bool operator()(const RenameRecord& record) const {
        Object* target = project.Resolve(record.path);
        const std::string& name = Forward() ? record.next : record.previous;
        if (auto* op = dynamic_cast<Operator*>(target)) {
            op->SetName(name);
        } else if (auto* parameter = dynamic_cast<Parameter*>(target)) {
            parameter->SetName(name);
        } else if (auto* input = dynamic_cast<DataInput*>(target)) {
            input->SetName(name);
        } else if (auto* output = dynamic_cast<DataOutput*>(target)) {
            output->SetName(name);
        } else if (auto* list = dynamic_cast<DataInputList*>(target)) {
            list->SetName(name);
        } else {
            return Missing(record.path);
        }
        return true;
    }

    bool operator()(const OperatorRecord& record) const {
        const bool add = (record.presence == Presence::Added) == Forward();
        if (!add) {
            auto* op = Find<Operator>(record.path);
            if (op == nullptr) {
                return Missing(record.path);
            }
            return op->GetGraph()->RemoveOperator(op) != nullptr;  // a recorded operator is in a graph
        }
        auto* graph = Find<Graph>(record.path.GetParent());
        if (graph == nullptr) {
            return Missing(record.path.GetParent());
        }
        Deserialization::Context context;
        std::unique_ptr<Operator> op =
            Deserialization::DeserializeOperator(record.serializedOperator, context);
        if (op == nullptr) {
            return false;
        }
        Access::GetImplementation(*graph)->InsertOperator(std::move(op),
                                                          static_cast<std::size_t>(record.index));
        context.ResolveReferences();
        return true;
    }

    bool operator()(const DataConnectionRecord& record) const {
        auto* output = Find<DataOutput>(record.output);
        if (output == nullptr) {
            return Missing(record.output);
        }
        auto* input = Find<DataInput>(record.input);
        if (input == nullptr) {
            return Missing(record.input);
        }
        // Found by its path, the port is on an operator in a graph: the root graph's own ports never connect.
        Graph* graph = input->GetOperator()->GetGraph();
        const bool connected = input->IsConnected() && input->GetConnection().output == output;
        if ((record.presence == Presence::Added) == Forward()) {
            return (connected && Rebuilt(record.input)) ||
                   graph->AddDataConnection(DataConnection{output, input});
        }
        return (!connected && Rebuilt(record.input)) ||
               graph->RemoveDataConnection(DataConnection{output, input});
    }

    bool operator()(const ParameterConnectionRecord& record) const {
        auto* source = Find<Parameter>(record.output);
        if (source == nullptr) {
            return Missing(record.output);
        }
        auto* target = Find<Parameter>(record.input);
        if (target == nullptr) {
            return Missing(record.input);
        }
        Graph* graph = target->GetOperator()->GetGraph();
        const std::vector<ParameterConnection>& incoming = target->GetIncomingConnections();
        const bool connected =
            std::any_of(incoming.begin(), incoming.end(),
                        [source](const auto& connection) { return connection.source == source; });
        if ((record.presence == Presence::Added) == Forward()) {
            return (connected && Rebuilt(record.input)) ||
                   graph->AddParameterConnection(ParameterConnection{source, target, record.links}, true);
        }
        return (!connected && Rebuilt(record.input)) ||
               graph->RemoveParameterConnection(ParameterConnectionEndpoints{source, target});
    }

    bool operator()(const DataPortRecord& record) const {
        const bool add = (record.presence == Presence::Added) == Forward();
        Object* parent = project.Resolve(record.path.GetParent());
        if (auto* list = dynamic_cast<DataInputList*>(parent)) {
            return add ? AddListInput(*list, record) : RemoveListInput(*list, record);
        }
        auto* op = dynamic_cast<Operator*>(parent);
        if (op == nullptr) {
            return Missing(record.path.GetParent());
        }
        return add ? AddUserPort(*op, record) : RemoveUserPort(*op, record);
    }

    bool operator()(const StructureRecord& record) const {
        auto* op = Find<Operator>(record.path);
        if (op == nullptr) {
            return Missing(record.path);
        }
        Deserialization::Context context;
        Deserialization::RestoreOwnStructure(*op, Forward() ? record.next : record.previous, context);
        context.ResolveReferences();
        return true;
    }

    bool operator()(const ListInputMoveRecord& record) const {
        auto* input = Find<DataInput>(record.path);
        if (input == nullptr) {
            return Missing(record.path);
        }
        const std::size_t index =
            static_cast<std::size_t>(Forward() ? record.nextIndex : record.previousIndex);
        return input->GetList()->IndexOf(input) == index || input->GetList()->MoveInput(input, index);
    }

    bool operator()(const ParameterAddedRecord& record) const {
        return Forward() ? PutNode(record.path, record.index, record.node, false)
                         : TakeNode(record.path, record.node);
    }

    bool operator()(const ParameterRemovedRecord& record) const {
        return Forward() ? TakeNode(record.path, record.node)
                         : PutNode(record.path, record.index, record.node, false);
    }

    bool operator()(const BundleAddedRecord& record) const {
        return Forward() ? PutNode(record.path, record.index, record.node, true)
                         : TakeNode(record.path, record.node);
    }

    bool operator()(const BundleRemovedRecord& record) const {
        return Forward() ? TakeNode(record.path, record.node)
                         : PutNode(record.path, record.index, record.node, true);
    }

    bool operator()(const ParameterNodeMoveRecord& record) const {
        auto* node = Find<ParameterNode>(record.path);
        if (node == nullptr) {
            return Missing(record.path);
        }
        const std::size_t index =
            static_cast<std::size_t>(Forward() ? record.nextIndex : record.previousIndex);
        ParameterGroup& group = *node->GetParent();  // found by its path, so it is in a group
        return node->GetIndex() == index || group.Move(node, index);
    }

    bool operator()(const CompoundRecord& record) const {
        return SetValue(record.path, Forward() ? record.next : record.previous);
    }

private:
    template <typename T>
    T* Find(const Path& path) const {
        return dynamic_cast<T*>(project.Resolve(path));
    }

    // Whether `path` lies below the operator whose rebuild was just replayed.
    bool Rebuilt(const Path& path) const {
        return rebuilt != nullptr && path.MakeRelative(*rebuilt).has_value();
    }

    // The result of a step whose target is gone: done when the replayed rebuild took it away, else drift.
    bool Missing(const Path& path) const {
        if (Rebuilt(path)) {
            return true;
        }
        LogDrift(path);
        return false;
    }

    bool SetValue(const Path& path, const json& value) const {
        auto* parameter = Find<Parameter>(path);
        if (parameter == nullptr) {
            return Missing(path);
        }
        parameter->DeserializeValue(value);
        RebuildIfDirty(parameter->GetOperator());
        return true;
    }

    // A list input that comes back is made with its old key (all its entry holds: its name comes from its
    // place) and moved to where it was.
    static bool AddListInput(DataInputList& list, const DataPortRecord& record) {
        const std::string key = Deserialization::Detail::KeyOf(record.port);
        if (list.FindChild(key) != nullptr) {
            return true;  // the graph kept it as its spare input
        }
        DataInput* input = Access::GetImplementation(list)->CreateInput(key);
        if (input == nullptr) {
            return false;
        }
        list.MoveInput(input,
                       static_cast<std::size_t>(record.index));  // refused at its place or past the end
        return true;
    }

    // The graph removes a list input whose connection went, so one that is already gone is done.
    static bool RemoveListInput(DataInputList& list, const DataPortRecord& record) {
        auto* input = dynamic_cast<DataInput*>(list.FindChild(record.path[record.path.Size() - 1]));
        if (input == nullptr) {
            return true;
        }
        return Access::GetImplementation(list)->RemoveInput(input);
    }

    // A user's port comes back with its old key, at the slot it had, so that the order of the ports (and of
    // the mirrors inside a graph) is as before.
    static bool AddUserPort(Operator& op, const DataPortRecord& record) {
        Deserialization::Context context;
        const std::size_t index = static_cast<std::size_t>(record.index);
        bool added = false;
        if (record.direction == PortDirection::Input) {
            std::unique_ptr<DataInput> input = Deserialization::DeserializeDataInput(record.port, context);
            if (input != nullptr) {
                Access::GetImplementation(*input)->SetAddedByUser(true);
                added = op.InsertDataInput(std::move(input), index);
            }
        } else {
            std::unique_ptr<DataOutput> output = Deserialization::DeserializeDataOutput(record.port, context);
            if (output != nullptr) {
                Access::GetImplementation(*output)->SetAddedByUser(true);
                added = op.InsertDataOutput(std::move(output), index);
            }
        }
        context.ResolveReferences();
        return added;
    }

    bool RemoveUserPort(Operator& op, const DataPortRecord& record) const {
        Object* port = project.Resolve(record.path);
        if (record.direction == PortDirection::Input) {
            if (auto* input = dynamic_cast<DataInput*>(port)) {
                return op.RemoveDataInput(input);
            }
        } else if (auto* output = dynamic_cast<DataOutput*>(port)) {
            return op.RemoveDataOutput(output);
        }
        return Missing(record.path);
    }

    // Makes the node at `path` exist with the stored state.
    bool PutNode(const Path& path, std::uint64_t index, const json& node, bool bundle) const {
        if (!Rebuilt(path)) {
            return AddNode(path, index, node);
        }
        if (auto* existing = Find<ParameterNode>(path)) {
            return RestoreNode(*existing, static_cast<std::size_t>(index), node);
        }
        // A member of the operator's own that its rebuild did not make again cannot be made from here.
        return bundle || node.contains("type") ? AddNode(path, index, node) : true;
    }

    // Makes the node at `path` go; a member of the operator's own stays to its rebuild.
    bool TakeNode(const Path& path, const json& node) const {
        auto* existing = Find<ParameterNode>(path);
        if (existing == nullptr) {
            return Missing(path);
        }
        if (Rebuilt(path) && dynamic_cast<Parameter*>(existing) != nullptr && !node.contains("type")) {
            return true;
        }
        return existing->GetParent()->Remove(existing);  // found by its path, so it is in a group
    }

    bool AddNode(const Path& path, std::uint64_t index, const json& node) const {
        ParameterGroup* group = FindGroup(path);
        if (group == nullptr) {
            return Missing(path.GetParent());
        }
        if (auto* list = dynamic_cast<ParameterBundleList*>(group)) {
            return AddBundle(*list, static_cast<std::size_t>(index), node);
        }
        Deserialization::Context context;
        std::unique_ptr<Parameter> parameter = Deserialization::DeserializeParameter(node, context);
        if (parameter == nullptr) {
            return false;
        }
        if (node.contains("type")) {
            Access::GetImplementation(*parameter)->SetAddedByUser(true);
        }
        const bool inserted = group->Insert(std::move(parameter), static_cast<std::size_t>(index));
        context.ResolveReferences();
        return inserted;
    }

    // The group that holds the node at `path`: the root group when the parent is an operator.
    ParameterGroup* FindGroup(const Path& path) const {
        Object* parent = project.Resolve(path.GetParent());
        if (auto* op = dynamic_cast<Operator*>(parent)) {
            return &op->GetParameterGroup();
        }
        return dynamic_cast<ParameterGroup*>(parent);
    }

    static bool AddBundle(ParameterBundleList& list, std::size_t index, const json& node) {
        ParameterBundle* bundle =
            list.CreateBundle(node.value("kind", std::string()), Deserialization::Detail::KeyOf(node));
        return bundle != nullptr && RestoreNode(*bundle, index, node);
    }

    // Gives an existing node the stored values (a bundle: those of its parameters) and its stored place.
    // The node was found in the project or made in one of its lists, so it belongs to an operator.
    static bool RestoreNode(ParameterNode& existing, std::size_t index, const json& node) {
        Operator* op = existing.GetOperator();
        Deserialization::Context context;
        if (auto* bundle = dynamic_cast<ParameterBundle*>(&existing)) {
            std::vector<Deserialization::Detail::Unmatched> unmatched;
            Deserialization::Detail::ApplyScope(*op, *bundle,
                                                Deserialization::Detail::ArrayAt(node, "parameters"), context,
                                                Deserialization::Detail::References::Defer, unmatched);
        } else if (auto* parameter = dynamic_cast<Parameter*>(&existing);
                   parameter != nullptr && node.contains("value")) {
            Deserialization::Detail::ApplyValue(*parameter, node["value"], context,
                                                Deserialization::Detail::References::Defer);
        }
        existing.GetParent()->Move(&existing,
                                   index);  // refused, and so nothing, at its place or past the end
        Deserialization::Detail::RebuildStructure(*op);
        context.ResolveReferences();
        return true;
    }

    Project& project;
    Direction direction;
    const Path* rebuilt;
};

bool Step(Project& project, const Record& record, Direction direction, const Path* rebuilt) {
    Transaction::SuppressRecording suppress;
    return std::visit(Replayer(project, direction, rebuilt), record);
}

// Undo reverts a compound record before its nested records, like redo applies it first: its replay runs the
// rebuild, and the nested records then give back what that rebuild cannot know (values, connections,
// references) on the members it made.
bool Replay(Project& project, const std::vector<Record>& records, Direction direction, const Path* rebuilt) {
    bool result = true;
    const std::size_t count = records.size();
    for (std::size_t i = 0; i < count; ++i) {
        const Record& record = records[direction == Direction::Forward ? i : count - 1 - i];
        result = Step(project, record, direction, rebuilt) && result;
        if (const auto* compound = std::get_if<CompoundRecord>(&record)) {
            const std::optional<Path> op = RebuiltOperator(project, compound->path);
            result = Replay(project, compound->nested, direction, op ? &*op : nullptr) && result;
        }
    }
    return result;
}

// The length of the well-formed UTF-8 sequence at the start of `text` (the JSON library's rules: no overlong
// forms, no surrogates, nothing above U+10FFFF); 0 when the first byte starts none.
std::size_t Utf8SequenceLength(std::string_view text) {
    const auto byte = [&text](std::size_t index) { return static_cast<unsigned char>(text[index]); };
    const unsigned char lead = byte(0);
    if (lead < 0x80) {
        return 1;
    }
    std::size_t length = 0;
    unsigned char low = 0x80;
    unsigned char high = 0xBF;  // the range of the second byte; later ones are always 80..BF
    if (lead >= 0xC2 && lead <= 0xDF) {
        length = 2;
    } else if (lead >= 0xE0 && lead <= 0xEF) {
        length = 3;
        low = lead == 0xE0 ? 0xA0 : 0x80;
        high = lead == 0xED ? 0x9F : 0xBF;
    } else if (lead >= 0xF0 && lead <= 0xF4) {
        length = 4;
        low = lead == 0xF0 ? 0x90 : 0x80;
        high = lead == 0xF4 ? 0x8F : 0xBF;
    } else {
        return 0;
    }
    if (text.size() < length || byte(1) < low || byte(1) > high) {
        return 0;
    }
    for (std::size_t index = 2; index < length; ++index) {
        if (byte(index) < 0x80 || byte(index) > 0xBF) {
            return 0;
        }
    }
    return length;
}

// `text` with each byte that is not part of well-formed UTF-8 written as \xNN; with `asJson`, the rest is
// escaped as the JSON library escapes string content.
std::string Readable(std::string_view text, bool asJson) {
    static constexpr char kDigits[] = "0123456789ABCDEF";
    std::string result;
    std::size_t start = 0;
    const auto flush = [&](std::size_t end) {
        if (end == start) {
            return;
        }
        const std::string_view run = text.substr(start, end - start);
        if (!asJson) {
            result += run;
            return;
        }
        const std::string quoted = json(run).dump();
        result.append(quoted, 1, quoted.size() - 2);
    };
    for (std::size_t index = 0; index < text.size();) {
        const std::size_t length = Utf8SequenceLength(text.substr(index));
        if (length > 0) {
            index += length;
            continue;
        }
        flush(index);
        const auto byte = static_cast<unsigned char>(text[index]);
        result += "\\x";
        result += kDigits[byte >> 4];
        result += kDigits[byte & 0x0F];
        start = ++index;
    }
    flush(text.size());
    return result;
}

// What dump() prints, but a string that is not UTF-8 shows its bad bytes instead of throwing.
std::string Shown(const json& value) {
    if (value.is_string()) {
        return '"' + Readable(value.get_ref<const std::string&>(), true) + '"';
    }
    if (value.is_array()) {
        std::string text = "[";
        for (const json& element : value) {
            text += (text.size() > 1 ? "," : "") + Shown(element);
        }
        return text + "]";
    }
    if (value.is_object()) {
        std::string text = "{";
        for (const auto& [key, element] : value.items()) {
            text += (text.size() > 1 ? ",\"" : "\"") + Readable(key, true) + "\":" + Shown(element);
        }
        return text + "}";
    }
    return value.dump();
}

std::string Presented(Presence presence) {
    return presence == Presence::Added ? "Add" : "Remove";
}

struct Describer {
    std::string operator()(const ParameterValueRecord& record) const {
        return "Set " + record.path.ToString() + " to " + Shown(record.next);
    }
    std::string operator()(const ParameterComponentRecord& record) const {
        return "Set component " + std::to_string(record.component) + " of " + record.path.ToString() +
               " to " + json(record.next).dump();
    }
    std::string operator()(const OperatorPositionRecord& record) const {
        return "Move " + record.path.ToString() + " to (" + json(record.next.x).dump() + ", " +
               json(record.next.y).dump() + ")";
    }
    std::string operator()(const RenameRecord& record) const {
        return "Rename " + record.path.ToString() + " from \"" + record.previous + "\" to \"" + record.next +
               "\"";
    }
    std::string operator()(const OperatorRecord& record) const {
        return Presented(record.presence) + " operator " + record.path.ToString();
    }
    std::string operator()(const DataConnectionRecord& record) const {
        return (record.presence == Presence::Added ? "Connect " : "Disconnect ") + record.output.ToString() +
               (record.presence == Presence::Added ? " to " : " from ") + record.input.ToString();
    }
    std::string operator()(const ParameterConnectionRecord& record) const {
        return (record.presence == Presence::Added ? "Connect parameter " : "Disconnect parameter ") +
               record.output.ToString() + (record.presence == Presence::Added ? " to " : " from ") +
               record.input.ToString();
    }
    std::string operator()(const DataPortRecord& record) const {
        return Presented(record.presence) +
               (record.direction == PortDirection::Input ? " data input " : " data output ") +
               record.path.ToString();
    }
    std::string operator()(const StructureRecord& record) const {
        return "Rebuild the structure of " + record.path.ToString();
    }
    std::string operator()(const ListInputMoveRecord& record) const {
        return "Move list input " + record.path.ToString() + " to index " + std::to_string(record.nextIndex);
    }
    std::string operator()(const ParameterAddedRecord& record) const {
        return "Add parameter " + record.path.ToString();
    }
    std::string operator()(const ParameterRemovedRecord& record) const {
        return "Remove parameter " + record.path.ToString();
    }
    std::string operator()(const BundleAddedRecord& record) const {
        return "Add bundle " + record.path.ToString();
    }
    std::string operator()(const BundleRemovedRecord& record) const {
        return "Remove bundle " + record.path.ToString();
    }
    std::string operator()(const ParameterNodeMoveRecord& record) const {
        return "Move parameter " + record.path.ToString() + " to index " + std::to_string(record.nextIndex);
    }
    std::string operator()(const CompoundRecord& record) const {
        return "Set " + record.path.ToString() + " to " + Shown(record.next) + " and rebuild (" +
               std::to_string(record.nested.size()) + " nested)";
    }
};

// A replay re-makes connections in the order they were recorded, so a chain's far end can take its value
// before the chain's start has its own. Settled as a load settles: in every graph, sources first.
void SettleConnectedValues(Graph& graph) {
    Access::GetImplementation(graph)->PassConnectedValues();
    for (Operator* op : graph.GetOperators()) {
        if (Graph* nested = Access::GetImplementation(*op)->AsGraph()) {
            SettleConnectedValues(*nested);
        }
    }
}

}  // namespace

bool ApplyTransaction(Project& project, const CommittedTransaction& transaction) {
    Transaction::SuppressRecording suppress;
    const bool applied = Replay(project, transaction.records, Direction::Forward, nullptr);
    SettleConnectedValues(*project.GetRootGraph());
    return applied;
}

bool UndoTransaction(Project& project, const CommittedTransaction& transaction) {
    Transaction::SuppressRecording suppress;
    const bool undone = Replay(project, transaction.records, Direction::Backward, nullptr);
    SettleConnectedValues(*project.GetRootGraph());
    return undone;
}

std::string DescribeRecord(const Record& record) {
    // Names and keys go in as they are; a host shows the line in menus, so it must be UTF-8 throughout.
    return Readable(std::visit(Describer{}, record), false);
}

}  // namespace Vantel
