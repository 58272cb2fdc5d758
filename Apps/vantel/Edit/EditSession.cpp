#include "EditSession.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <limits>
#include <optional>
#include <set>
#include <stdexcept>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include <Vantel/Execution/Clock.h>
#include <Vantel/Execution/Runner.h>
#include <Vantel/Objects/ObjectType.h>
#include <Vantel/Objects/TypeLibrary.h>
#include <Vantel/Operators/Data.h>
#include <Vantel/Operators/DataInput.h>
#include <Vantel/Operators/DataInputList.h>
#include <Vantel/Operators/DataOutput.h>
#include <Vantel/Operators/DataTypeInfo.h>
#include <Vantel/Operators/Graph.h>
#include <Vantel/Parameters/Parameter.h>
#include <Vantel/Parameters/ParameterBundle.h>
#include <Vantel/Parameters/ParameterBundleList.h>
#include <Vantel/Parameters/PtrParameter.h>
#include <Vantel/Parameters/TriggerParameter.h>
#include <Vantel/Projects/Deserialization.h>
#include <Vantel/Projects/Project.h>
#include <Vantel/Projects/Serialization.h>
#include <Vantel/Projects/Transaction.h>
#include <Vantel/Projects/UndoRedo.h>
#include <Vantel/Support/Logging.h>

#include "LogTee.h"
#include "ModelJson.h"
#include "Preview.h"

namespace VantelHost {
namespace {

// Holds a flag up for the life of a scope, however the scope ends.
class FlagScope {
public:
    explicit FlagScope(bool& flag) : flag(flag) { flag = true; }
    ~FlagScope() { flag = false; }
    FlagScope(const FlagScope&) = delete;
    FlagScope& operator=(const FlagScope&) = delete;

private:
    bool& flag;
};

using nlohmann::json;
using Clock = std::chrono::steady_clock;

// A request that cannot be carried out; its text is the error reply.
class RequestError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// Frame updates are for a person watching: more than this many a second is noise.
constexpr double kFrameUpdatesPerSecond = 30.0;
// Past this many, the operators that ran are only counted: a busy graph would fill the update with paths.
constexpr std::size_t kMostRunListed = 1000;
// Pictures cost more to make and send than numbers, and change the view less.
constexpr double kPreviewsPerSecond = 4.0;

class FrameClock : public Vantel::Clock {
public:
    explicit FrameClock(double fps) : fps(fps) {}
    void Reset() override {}
    double GetFirstFrameDuration() const override { return 1.0 / fps; }

private:
    double fps;
};

const json& Field(const json& request, const char* name) {
    const auto found = request.find(name);
    if (found == request.end()) {
        throw RequestError(std::string("the request has no '") + name + "'");
    }
    return *found;
}

std::string Text(const json& request, const char* name) {
    const json& value = Field(request, name);
    if (!value.is_string()) {
        throw RequestError(std::string("'") + name + "' must be a string");
    }
    return value.get<std::string>();
}

double Number(const json& value, const char* name) {
    if (!value.is_number()) {
        throw RequestError(std::string("'") + name + "' must be a number");
    }
    return value.get<double>();
}

std::size_t Index(const json& request, const char* name) {
    const json& value = Field(request, name);
    if (!value.is_number_unsigned() && !(value.is_number_integer() && value.get<std::int64_t>() >= 0)) {
        throw RequestError(std::string("'") + name + "' must be a whole number, 0 or more");
    }
    return value.get<std::size_t>();
}

bool Flag(const json& request, const char* name) {
    const auto found = request.find(name);
    if (found == request.end()) {
        return false;
    }
    if (!found->is_boolean()) {
        throw RequestError(std::string("'") + name + "' must be true or false");
    }
    return found->get<bool>();
}

// An int that a component number can be; a larger one would wrap round to another component.
bool IsComponent(const json& value) {
    // As a double, signed and unsigned numbers compare alike, and both ends of an int are exact.
    return value.is_number_integer() && value.get<double>() >= std::numeric_limits<std::int32_t>::min() &&
           value.get<double>() <= std::numeric_limits<std::int32_t>::max();
}

glm::vec2 Position(const json& value) {
    if (!value.is_array() || value.size() != 2) {
        throw RequestError("'position' must be [x, y]");
    }
    return {static_cast<float>(Number(value[0], "position")),
            static_cast<float>(Number(value[1], "position"))};
}

json Describe(const Vantel::CommittedTransaction& transaction) {
    json records = json::array();
    for (const Vantel::Record& record : transaction.records) {
        records.push_back(Vantel::DescribeRecord(record));
    }
    return {{"name", transaction.name}, {"records", std::move(records)}};
}

void ForEachOperator(Vantel::Graph& graph, const std::function<void(Vantel::Operator&)>& visit) {
    for (Vantel::Operator* op : graph.GetOperators()) {
        visit(*op);
        if (auto* inner = dynamic_cast<Vantel::Graph*>(op)) {
            ForEachOperator(*inner, visit);
        }
    }
}

// What the frame updates last sent of a parameter's value or an output's data, and the walk that last saw it.
struct SentValue {
    json value;
    std::uint64_t walk = 0;
};
struct PreviewMark {
    std::uint64_t serial = 0;
    std::uint64_t walk = 0;
};

// Drops the entries of objects the last walk did not see, when its count shows that some went.
template <typename Cache>
void DropUnseen(Cache& cache, std::size_t seen, std::uint64_t walk) {
    if (cache.size() != seen) {
        std::erase_if(cache, [walk](const auto& item) { return item.second.walk != walk; });
    }
}

// Replies are printed with replacement characters for text that is not UTF-8, rather than failing.
std::string Print(const json& value) {
    return value.dump(-1, ' ', false, json::error_handler_t::replace);
}

}  // namespace

class EditSession::Implementation {
public:
    using Handler = json (Implementation::*)(const json&);
    // For replies written as text directly.
    using TextHandler = std::string (Implementation::*)(const json&);

    Implementation(Vantel::Project& project, std::filesystem::path file, double fps, const LogTee& log)
        : project(project),
          file(std::move(file)),
          period(1.0 / fps),
          log(log),
          runner(std::make_unique<FrameClock>(fps)),
          savedText(Vantel::Serialization::SerializeProjectText(project)) {
        runner.SetGraph(project.GetRootGraph());
    }

    std::string Handle(const json& request) {
        const json id = request.is_object() && request.contains("id") ? request["id"] : json(nullptr);
        try {
            if (!request.is_object()) {
                throw RequestError("a request is a JSON object");
            }
            // The reply is put together as text: a large result is written as text without a tree.
            return "{\"id\":" + Print(id) +
                   ",\"ok\":true,\"result\":" + Dispatch(Text(request, "type"), request) + "}";
        } catch (const std::exception& error) {
            return Print({{"id", id}, {"ok", false}, {"error", error.what()}});
        }
    }

    std::string Dispatch(const std::string& type, const json& request) {
        if (const auto writer = TextHandlers().find(type); writer != TextHandlers().end()) {
            return (this->*writer->second)(request);
        }
        const auto handler = Handlers().find(type);
        if (handler == Handlers().end()) {
            throw RequestError("unknown request type '" + type + "'");
        }
        return Print((this->*handler->second)(request));
    }

    // ---- Reading ----

    json GetTypes(const json&) { return DescribeTypes(); }

    std::string GetGraph(const json& request) {
        return DescribeGraph(request.contains("path") ? Find<Vantel::Graph>(request, "path")
                                                      : *project.GetRootGraph());
    }

    json GetHistory(const json&) {
        // Both lists start with the step that undo or redo would replay next.
        json undoList = json::array();
        for (auto it = undo.rbegin(); it != undo.rend(); ++it) {
            undoList.push_back(Describe(*it));
        }
        json redoList = json::array();
        for (auto it = redo.rbegin(); it != redo.rend(); ++it) {
            redoList.push_back(Describe(*it));
        }
        return {{"undo", std::move(undoList)}, {"redo", std::move(redoList)}};
    }

    // ---- Operators ----

    json AddOperator(const json& request) {
        Vantel::Graph& graph =
            request.contains("graph") ? Find<Vantel::Graph>(request, "graph") : *project.GetRootGraph();
        const std::string typeName = Text(request, "operatorType");
        const Vantel::ObjectType* type = Vantel::TypeLibrary::Get()->GetType(typeName);
        if (type == nullptr || !type->Inherits(Vantel::Operator::Type()) || !type->CanCreate()) {
            throw RequestError("'" + typeName + "' is not an operator type that can be made");
        }
        return Edit("Add " + type->GetDisplayName(), [&] {
            std::unique_ptr<Vantel::Object> made = type->CreateInstance();
            auto* op = dynamic_cast<Vantel::Operator*>(made.get());
            if (op == nullptr) {
                throw RequestError("'" + typeName + "' did not make an operator");
            }
            made.release();
            std::unique_ptr<Vantel::Operator> owned(op);
            if (request.contains("name")) {
                op->SetName(Text(request, "name"));
            }
            graph.AddOperator(std::move(owned));
            if (request.contains("position")) {
                op->SetPosition(Position(request["position"]));
            }
            return json{{"path", op->GetPath().ToString()}};
        });
    }

    json RemoveOperator(const json& request) {
        Vantel::Operator& op = Find<Vantel::Operator>(request, "path");
        Vantel::Graph* graph = op.GetGraph();
        if (graph == nullptr) {
            throw RequestError("the project's root graph cannot be removed");
        }
        return Edit("Remove " + Name(op), [&] {
            graph->RemoveOperator(&op);
            return json::object();
        });
    }

    json MoveOperator(const json& request) {
        Vantel::Operator& op = Find<Vantel::Operator>(request, "path");
        const glm::vec2 position = Position(Field(request, "position"));
        return Edit("Move " + Name(op), [&] {
            op.SetPosition(position);
            return json::object();
        });
    }

    json RenameOperator(const json& request) {
        Vantel::Operator& op = Find<Vantel::Operator>(request, "path");
        const std::string name = Text(request, "name");
        return Edit("Rename " + Name(op), [&] {
            op.SetName(name);
            return json{{"path", op.GetPath().ToString()}};
        });
    }

    // ---- Connections ----

    json ConnectData(const json& request) {
        Vantel::DataOutput& output = Find<Vantel::DataOutput>(request, "output");
        Vantel::Graph& graph = GraphOf(output.GetOperator());
        Vantel::Object& target = Find<Vantel::Object>(request, "input");
        const bool replace = Flag(request, "replace");
        return Edit("Connect " + output.GetName(), [&] {
            if (auto* list = dynamic_cast<Vantel::DataInputList*>(&target)) {
                Vantel::DataInput* made = graph.AddDataConnection(output, *list);
                if (made == nullptr) {
                    Refuse("the list does not take this output");
                }
                return json{{"input", made->GetPath().ToString()}};
            }
            auto* input = dynamic_cast<Vantel::DataInput*>(&target);
            if (input == nullptr) {
                throw RequestError(Text(request, "input") + " is neither a data input nor an input list");
            }
            const Vantel::DataConnection connection{&output, input};
            if (!graph.CanAddDataConnection(connection, replace)) {
                Refuse("the connection is not allowed");
            }
            if (replace && input->IsConnected()) {
                graph.DisconnectDataInput(*input);
            }
            if (!graph.AddDataConnection(connection)) {
                Refuse("the connection is not allowed");
            }
            return json{{"input", input->GetPath().ToString()}};
        });
    }

    json DisconnectData(const json& request) {
        Vantel::DataOutput& output = Find<Vantel::DataOutput>(request, "output");
        Vantel::DataInput& input = Find<Vantel::DataInput>(request, "input");
        Vantel::Graph& graph = GraphOf(output.GetOperator());
        return Edit("Disconnect " + output.GetName(), [&] {
            if (!graph.RemoveDataConnection({&output, &input})) {
                Refuse("there is no such connection");
            }
            return json::object();
        });
    }

    json ConnectParameter(const json& request) {
        Vantel::Parameter& source = Find<Vantel::Parameter>(request, "output");
        Vantel::Parameter& target = Find<Vantel::Parameter>(request, "input");
        Vantel::Graph& graph = GraphOf(source.GetOperator());
        std::vector<Vantel::ComponentLink> links;
        if (request.contains("links")) {
            const json& list = request["links"];
            if (!list.is_array()) {
                throw RequestError("'links' must be a list of [source, target] component pairs");
            }
            for (const json& pair : list) {
                if (!pair.is_array() || pair.size() != 2 || !IsComponent(pair[0]) || !IsComponent(pair[1])) {
                    throw RequestError("'links' must be a list of [source, target] component pairs");
                }
                links.push_back({pair[0].get<std::int32_t>(), pair[1].get<std::int32_t>()});
            }
        } else {
            links = Vantel::WholeValueLinks(source, target);
        }
        const bool replace = Flag(request, "replace");
        return Edit("Connect " + source.GetName() + " to " + target.GetName(), [&] {
            if (!graph.AddParameterConnection({&source, &target, links}, replace)) {
                Refuse("the connection is not allowed");
            }
            return json::object();
        });
    }

    json DisconnectParameter(const json& request) {
        Vantel::Parameter& source = Find<Vantel::Parameter>(request, "output");
        Vantel::Parameter& target = Find<Vantel::Parameter>(request, "input");
        Vantel::Graph& graph = GraphOf(source.GetOperator());
        return Edit("Disconnect " + target.GetName(), [&] {
            if (!graph.RemoveParameterConnection({&source, &target})) {
                Refuse("there is no such connection");
            }
            return json::object();
        });
    }

    // ---- Values ----

    json SetValue(const json& request) {
        Vantel::Parameter& parameter = Find<Vantel::Parameter>(request, "path");
        const json& value = Field(request, "value");
        return Edit("Set " + parameter.GetName(), [&] {
            parameter.DeserializeValue(value);
            return json{{"value", parameter.SerializeValue()}};
        });
    }

    json SetComponent(const json& request) {
        Vantel::Parameter& parameter = Find<Vantel::Parameter>(request, "path");
        const std::size_t component = Index(request, "component");
        const double value = Number(Field(request, "value"), "value");
        if (!parameter.HasNumericComponents() ||
            component >= static_cast<std::size_t>(parameter.GetComponentCount())) {
            throw RequestError(parameter.GetName() + " has no component " + std::to_string(component));
        }
        return Edit("Set " + parameter.GetName(), [&] {
            parameter.SetComponent(static_cast<int>(component), value);
            return json{{"value", parameter.SerializeValue()}};
        });
    }

    // A reference is set by the absolute path the graph reply lists among its allowed objects (null: none).
    json SetReference(const json& request) {
        auto& reference = Find<Vantel::PtrParameter>(request, "path");
        const json& target = Field(request, "target");
        Vantel::Object* object =
            target.is_null() ? nullptr : &FindPath<Vantel::Object>(Text(request, "target"));
        if (object != nullptr && !reference.PassesFilter(object)) {
            throw RequestError(Text(request, "target") + " is not among the objects " + reference.GetName() +
                               " may refer to");
        }
        return Edit("Set " + reference.GetName(), [&] {
            reference.SetValue(object);
            return json{{"value", reference.SerializeValue()}};
        });
    }

    // A trigger is an action, not a value: it fires on the next frame and is no step of the history.
    json FireTrigger(const json& request) {
        Find<Vantel::TriggerParameter>(request, "path").Trigger();
        return json::object();
    }

    // ---- Several edits as one ----

    static bool IsBatchable(const std::string& type) {
        static const std::unordered_set<std::string> kEdits = {
            "addOperator",    "removeOperator",   "moveOperator",        "renameOperator", "connectData",
            "disconnectData", "connectParameter", "disconnectParameter", "setValue",       "setComponent",
            "setReference",   "addUserPort",      "addUserParameter",    "moveListInput",  "removeListInput",
            "addBundle",      "removeBundle",     "moveBundle",          "paste",
        };
        return kEdits.contains(type);
    }

    // One step of the history for several edits made in order (an editor's drag of a selection, its delete):
    // all of them, or, when one is refused, none.
    json Batch(const json& request) {
        const json& requests = Field(request, "requests");
        if (!requests.is_array() || requests.empty()) {
            throw RequestError("'requests' must be a non-empty list of edits");
        }
        for (const json& each : requests) {
            if (!each.is_object() || !IsBatchable(Text(each, "type"))) {
                throw RequestError("a batch holds edits only, not '" + Text(each, "type") + "'");
            }
        }
        return Edit(Text(request, "name"), [&] {
            const FlagScope batch(inBatch);
            json results = json::array();
            for (std::size_t i = 0; i < requests.size(); ++i) {
                const std::string type = Text(requests[i], "type");
                try {
                    results.push_back(json::parse(Dispatch(type, requests[i])));
                } catch (const std::exception& error) {
                    throw RequestError("edit " + std::to_string(i + 1) + " of " +
                                       std::to_string(requests.size()) + " (" + type + "): " + error.what());
                }
            }
            return json{{"results", std::move(results)}};
        });
    }

    // ---- User members, list inputs, bundles ----

    json AddUserPort(const json& request) {
        Vantel::Graph& graph = Find<Vantel::Graph>(request, "graph");
        const std::string direction = Text(request, "direction");
        if (direction != "input" && direction != "output") {
            throw RequestError("'direction' must be \"input\" or \"output\"");
        }
        const bool isInput = direction == "input";
        const Vantel::ObjectType* type = isInput ? Vantel::DataInput::Type() : Vantel::DataOutput::Type();
        if (request.contains("dataType")) {
            const std::string id = Text(request, "dataType");
            const Vantel::DataTypeInfo* info = Vantel::TypeLibrary::Get()->FindDataTypeById(id);
            if (info == nullptr) {
                throw RequestError("no data type '" + id + "'");
            }
            type = isInput ? info->inputType : info->outputType;
        }
        return Edit("Add " + direction + " to " + Name(graph), [&] {
            Vantel::DataPort* port = isInput ? static_cast<Vantel::DataPort*>(graph.AddUserDataInput(type))
                                             : graph.AddUserDataOutput(type);
            if (port == nullptr) {
                Refuse("the graph did not take the port");
            }
            return json{{"path", port->GetPath().ToString()}};
        });
    }

    json AddUserParameter(const json& request) {
        Vantel::Graph& graph = Find<Vantel::Graph>(request, "graph");
        const std::string typeName = Text(request, "parameterType");
        const Vantel::ObjectType* type = Vantel::TypeLibrary::Get()->GetType(typeName);
        if (type == nullptr || !type->Inherits(Vantel::Parameter::Type())) {
            throw RequestError("'" + typeName + "' is not a parameter type");
        }
        const bool output = Flag(request, "output");
        return Edit("Add parameter to " + Name(graph), [&] {
            Vantel::Parameter* parameter = graph.AddUserParameter(type, output);
            if (parameter == nullptr) {
                Refuse("the graph did not take the parameter");
            }
            return json{{"path", parameter->GetPath().ToString()}};
        });
    }

    json MoveListInput(const json& request) {
        Vantel::DataInput& input = Find<Vantel::DataInput>(request, "path");
        const std::size_t index = Index(request, "index");
        Vantel::DataInputList* list = input.GetList();
        if (list == nullptr) {
            throw RequestError(Text(request, "path") + " is not in an input list");
        }
        return Edit("Move " + input.GetName(), [&] {
            if (!list->MoveInput(&input, index)) {
                Refuse("the input cannot move to " + std::to_string(index));
            }
            return json::object();
        });
    }

    // A list input lives as long as its connection: removing it is disconnecting it.
    json RemoveListInput(const json& request) {
        Vantel::DataInput& input = Find<Vantel::DataInput>(request, "path");
        if (input.GetList() == nullptr) {
            throw RequestError(Text(request, "path") + " is not in an input list");
        }
        if (!input.IsConnected()) {
            throw RequestError("the list's spare input stays");
        }
        Vantel::Graph& graph = GraphOf(input.GetOperator());
        return Edit("Remove " + input.GetName(), [&] {
            graph.DisconnectDataInput(input);
            return json::object();
        });
    }

    json AddBundle(const json& request) {
        auto& list = Find<Vantel::ParameterBundleList>(request, "list");
        const std::string kind = request.contains("kind") ? Text(request, "kind") : std::string();
        return Edit("Add " + (kind.empty() ? std::string("bundle") : kind), [&] {
            Vantel::ParameterBundle* bundle = list.CreateBundle(kind, "");
            if (bundle == nullptr) {
                Refuse("the list makes no bundle of kind '" + kind + "'");
            }
            return json{{"path", bundle->GetPath().ToString()}};
        });
    }

    json RemoveBundle(const json& request) {
        auto& bundle = Find<Vantel::ParameterBundle>(request, "path");
        Vantel::ParameterBundleList& list = *bundle.GetBundleList();  // only a list makes and holds bundles
        return Edit("Remove bundle", [&] {
            if (!list.RemoveBundle(&bundle)) {
                Refuse("the bundle cannot be removed");
            }
            return json::object();
        });
    }

    json MoveBundle(const json& request) {
        auto& bundle = Find<Vantel::ParameterBundle>(request, "path");
        Vantel::ParameterBundleList& list = *bundle.GetBundleList();
        const std::size_t index = Index(request, "index");
        return Edit("Move bundle", [&] {
            if (!list.MoveBundle(&bundle, index)) {
                Refuse("the bundle cannot move to " + std::to_string(index));
            }
            return json::object();
        });
    }

    // ---- Copy and paste ----

    // The operators named by "paths", all of one graph, with the connections among them: what "paste" takes.
    json Copy(const json& request) {
        const json& paths = Field(request, "paths");
        if (!paths.is_array() || paths.empty()) {
            throw RequestError("'paths' must be a list of operator paths");
        }
        std::set<const Vantel::Operator*> selected;
        Vantel::Graph* graph = nullptr;
        json operators = json::array();
        for (const json& path : paths) {
            if (!path.is_string()) {
                throw RequestError("'paths' must be a list of operator paths");
            }
            Vantel::Operator& op = FindPath<Vantel::Operator>(path.get<std::string>());
            if (op.GetGraph() == nullptr || (graph != nullptr && op.GetGraph() != graph)) {
                throw RequestError("the operators to copy must be of one graph");
            }
            graph = op.GetGraph();
            if (selected.insert(&op).second) {
                operators.push_back(Vantel::Serialization::SerializeOperator(op));
            }
        }
        std::vector<Vantel::DataConnection> data;
        for (const Vantel::DataConnection& connection : graph->GetDataConnections()) {
            if (selected.contains(connection.output->GetOperator()) &&
                selected.contains(connection.input->GetOperator())) {
                data.push_back(connection);
            }
        }
        Vantel::ParameterConnectionMap parameters;
        for (const auto& [endpoints, links] : graph->GetParameterConnections()) {
            if (selected.contains(endpoints.source->GetOperator()) &&
                selected.contains(endpoints.target->GetOperator())) {
                parameters.emplace(endpoints, links);
            }
        }
        return {{"operators", std::move(operators)},
                {"dataConnections", Vantel::Serialization::SerializeDataConnections(data)},
                {"parameterConnections", Vantel::Serialization::SerializeParameterConnections(parameters)}};
    }

    // What "copy" gave, made again in "graph" under new keys, moved by "offset", with its inner connections.
    json Paste(const json& request) {
        Vantel::Graph& graph =
            request.contains("graph") ? Find<Vantel::Graph>(request, "graph") : *project.GetRootGraph();
        const json& clipboard = Field(request, "clipboard");
        if (!clipboard.is_object() || !clipboard.contains("operators") ||
            !clipboard["operators"].is_array()) {
            throw RequestError("'clipboard' must be what \"copy\" gave");
        }
        const glm::vec2 offset = request.contains("offset") ? Position(request["offset"]) : glm::vec2(0.0f);
        return Edit("Paste", [&] {
            Vantel::Deserialization::Context context;
            std::unordered_map<std::string, std::string> renamed;
            std::vector<Vantel::Operator*> made;
            json pasted = json::array();
            for (const json& entry : clipboard["operators"]) {
                std::unique_ptr<Vantel::Operator> op;
                if (entry.is_object()) {
                    // A graph being built is a model of its own to the recorder, with paths that will not
                    // exist; the add records the operator whole.
                    const Vantel::Transaction::SuppressRecording quiet;
                    op = Vantel::Deserialization::DeserializeOperator(entry, context);
                }
                if (op == nullptr) {
                    Refuse("an operator of the clipboard could not be made");
                }
                const std::string key = Vantel::GenerateKey(
                    Vantel::OperatorKeyBase(*op),
                    [&graph](std::string_view candidate) { return graph.FindChild(candidate) == nullptr; });
                renamed[op->GetKey()] = key;
                op->SetKey(key);
                op->SetPosition(op->GetPosition() + offset);
                made.push_back(op.get());
                graph.AddOperator(std::move(op));
                pasted.push_back(made.back()->GetPath().ToString());
            }
            Vantel::Deserialization::DeserializeDataConnections(
                Renamed(clipboard, "dataConnections", renamed), graph, context);
            Vantel::Deserialization::DeserializeParameterConnections(
                Renamed(clipboard, "parameterConnections", renamed), graph, context);
            for (Vantel::Operator* op : made) {
                Vantel::Deserialization::PruneOrphanListInputs(*op);
            }
            context.ResolveReferences();
            return json{{"paths", std::move(pasted)}};
        });
    }

    // The connections of `field` with their endpoints' operator keys replaced; one naming an operator that
    // was not pasted is left out.
    static json Renamed(const json& clipboard, const char* field,
                        const std::unordered_map<std::string, std::string>& renamed) {
        json result = json::array();
        if (!clipboard.contains(field) || !clipboard[field].is_array()) {
            return result;
        }
        for (json connection : clipboard[field]) {
            bool inside = connection.is_object();
            for (const char* end : {"output", "input"}) {
                if (!inside || !connection.contains(end) || !connection[end].is_string()) {
                    inside = false;
                    break;
                }
                const std::string path = connection[end].get<std::string>();
                const auto found = renamed.find(path.substr(0, path.find('/')));
                if (found == renamed.end()) {
                    inside = false;
                    break;
                }
                connection[end] = found->second + path.substr(found->first.size());
            }
            if (inside) {
                result.push_back(std::move(connection));
            }
        }
        return result;
    }

    // ---- History ----

    json Undo(const json&) { return Replay(undo, redo, "undo", "undone", Vantel::UndoTransaction); }

    json Redo(const json&) { return Replay(redo, undo, "redo", "redone", Vantel::ApplyTransaction); }

    // Takes the last transaction of `from`, replays it one way and keeps it on `to` for the other way.
    json Replay(std::vector<Vantel::CommittedTransaction>& from,
                std::vector<Vantel::CommittedTransaction>& to, const char* verb, const char* done,
                bool (*replay)(Vantel::Project&, const Vantel::CommittedTransaction&)) {
        if (from.empty()) {
            throw RequestError(std::string("there is nothing to ") + verb);
        }
        Vantel::CommittedTransaction transaction = std::move(from.back());
        from.pop_back();
        const bool replayed = replay(project, transaction);
        json result = {{"name", transaction.name}, {"replayed", replayed}};
        to.push_back(std::move(transaction));
        ModelChanged({{"event", "changed"}, {done, result["name"]}});
        return result;
    }

    // ---- Session ----

    json Save(const json&) {
        SaveTo(file);
        return {{"file", file.string()}};
    }

    json Run(const json&) {
        running = true;
        nextFrame = Clock::now();
        PublishState();
        return StateJson();
    }

    json Pause(const json&) {
        running = false;
        PublishState();
        return StateJson();
    }

    json Step(const json&) {
        if (running) {
            throw RequestError("step while paused");
        }
        RunFrame();
        PublishState();
        return StateJson();
    }

    json GetState(const json&) { return StateJson(); }

    // ---- Frames ----

    double RunDueFrame() {
        if (!running) {
            return 0.1;
        }
        const Clock::time_point now = Clock::now();
        if (now < nextFrame) {
            return std::chrono::duration<double>(nextFrame - now).count();
        }
        RunFrame();
        nextFrame += std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(period));
        // Late: start counting again rather than run frames back to back.
        nextFrame = std::max(nextFrame, now);
        return 0.0;
    }

    void RunFrame() {
        runner.WaitForTick();
        const Clock::time_point start = Clock::now();
        try {
            runner.Execute();
        } catch (const std::exception& error) {
            running = false;
            Vantel::LogError(std::string("The frame failed and the session paused: ") + error.what());
            PublishState();
        }
        lastFrameMilliseconds = std::chrono::duration<double, std::milli>(Clock::now() - start).count();
    }

    void PublishFrameUpdate() {
        const Clock::time_point now = Clock::now();
        if (!publisher || runner.GetFrameNumber() == publishedFrame ||
            now - lastFrameUpdate < std::chrono::duration<double>(1.0 / kFrameUpdatesPerSecond)) {
            return;
        }
        lastFrameUpdate = now;
        const unsigned long long sinceFrame = publishedFrame;
        publishedFrame = runner.GetFrameNumber();
        const bool withPreviews =
            now - lastPreviews >= std::chrono::duration<double>(1.0 / kPreviewsPerSecond);
        if (withPreviews) {
            lastPreviews = now;
        }
        json values = json::object();
        json previews = json::object();
        json ran = json::array();
        // The caches are kept and updated in place: rebuilding them each update costs a large graph more than
        // the frame does. Entries of objects an edit or a frame took away are dropped when the count shows
        // that some went; a new object at a freed address may miss one update, and a client reads the graph
        // again after an edit anyway.
        ++walk;
        std::size_t parameterCount = 0;
        std::size_t outputCount = 0;
        ForEachOperator(*project.GetRootGraph(), [&](Vantel::Operator& op) {
            if (op.GetLastRunFrame() > sinceFrame && ran.size() < kMostRunListed) {
                ran.push_back(op.GetPath().ToString());
            }
            for (Vantel::Parameter* parameter : op.GetAllParameters()) {
                json value = DescribeValue(*parameter);
                auto [entry, added] = lastValues.try_emplace(parameter);
                if (added || entry->second.value != value) {
                    values[parameter->GetPath().ToString()] = value;
                    entry->second.value = std::move(value);
                }
                entry->second.walk = walk;
                ++parameterCount;
            }
            for (Vantel::DataOutput* output : op.GetAllDataOutputs()) {
                PreviewMark& mark = previewSerials[output];
                mark.walk = walk;
                ++outputCount;
                if (withPreviews) {
                    AddPreview(*output, mark, previews);
                }
            }
        });
        DropUnseen(lastValues, parameterCount, walk);
        DropUnseen(previewSerials, outputCount, walk);
        const unsigned long long operatorsRun = runner.GetOperatorsRun();
        json update = {{"event", "frame"},
                       {"frame", runner.GetFrameNumber()},
                       {"time", runner.GetTime()},
                       {"frameMilliseconds", lastFrameMilliseconds},
                       {"operatorsRun", operatorsRun - publishedOperatorsRun},
                       {"ran", std::move(ran)},
                       {"values", std::move(values)}};
        if (!previews.empty()) {
            update["previews"] = std::move(previews);
        }
        publisher(update);
        publishedOperatorsRun = operatorsRun;
    }

    // The next frame update sends every value and preview, as for a client that has just connected.
    void ResendAll() {
        lastValues.clear();
        previewSerials.clear();
        publishedFrame = 0;
        lastPreviews = {};
    }

    void SaveTo(const std::filesystem::path& target) {
        project.Serialize(target.string());
        if (target == file) {
            savedText = Vantel::Serialization::SerializeProjectText(project);
        }
    }

    bool HasUnsavedChanges() const {
        return Vantel::Serialization::SerializeProjectText(project) != savedText;
    }

    std::function<void(const json&)> publisher;

private:
    static const std::unordered_map<std::string, TextHandler>& TextHandlers() {
        static const std::unordered_map<std::string, TextHandler> handlers = {
            {"getGraph", &Implementation::GetGraph},
        };
        return handlers;
    }

    static const std::unordered_map<std::string, Handler>& Handlers() {
        static const std::unordered_map<std::string, Handler> handlers = {
            {"getTypes", &Implementation::GetTypes},
            {"getHistory", &Implementation::GetHistory},
            {"getState", &Implementation::GetState},
            {"addOperator", &Implementation::AddOperator},
            {"removeOperator", &Implementation::RemoveOperator},
            {"moveOperator", &Implementation::MoveOperator},
            {"renameOperator", &Implementation::RenameOperator},
            {"connectData", &Implementation::ConnectData},
            {"disconnectData", &Implementation::DisconnectData},
            {"connectParameter", &Implementation::ConnectParameter},
            {"disconnectParameter", &Implementation::DisconnectParameter},
            {"setValue", &Implementation::SetValue},
            {"setComponent", &Implementation::SetComponent},
            {"setReference", &Implementation::SetReference},
            {"trigger", &Implementation::FireTrigger},
            {"batch", &Implementation::Batch},
            {"addUserPort", &Implementation::AddUserPort},
            {"addUserParameter", &Implementation::AddUserParameter},
            {"moveListInput", &Implementation::MoveListInput},
            {"removeListInput", &Implementation::RemoveListInput},
            {"addBundle", &Implementation::AddBundle},
            {"removeBundle", &Implementation::RemoveBundle},
            {"moveBundle", &Implementation::MoveBundle},
            {"copy", &Implementation::Copy},
            {"paste", &Implementation::Paste},
            {"undo", &Implementation::Undo},
            {"redo", &Implementation::Redo},
            {"save", &Implementation::Save},
            {"run", &Implementation::Run},
            {"pause", &Implementation::Pause},
            {"step", &Implementation::Step},
        };
        return handlers;
    }

    template <typename T>
    T& Find(const json& request, const char* field) {
        return FindPath<T>(Text(request, field));
    }

    template <typename T>
    T& FindPath(const std::string& text) {
        const std::optional<Vantel::Path> path = Vantel::Path::Parse(text);
        if (!path || !path->IsAbsolute()) {
            throw RequestError("not an absolute path: '" + text + "'");
        }
        Vantel::Object* object = project.Resolve(*path);
        if (object == nullptr) {
            throw RequestError("nothing answers to " + text);
        }
        T* typed = dynamic_cast<T*>(object);
        if (typed == nullptr) {
            throw RequestError(text + " is a " + object->GetType()->GetName() + ", not a " +
                               T::Type()->GetName());
        }
        return *typed;
    }

    static Vantel::Graph& GraphOf(Vantel::Operator* op) {
        if (op == nullptr || op->GetGraph() == nullptr) {
            throw RequestError("the port's operator is in no graph");
        }
        return *op->GetGraph();
    }

    static std::string Name(Vantel::Operator& op) {
        return op.GetName().empty() ? op.GetKey() : op.GetName();
    }

    // Throws the refusal, with the lines the library logged since the edit began as its reason.
    [[noreturn]] void Refuse(const std::string& what) {
        std::string text = what;
        for (const std::string& line : log.LinesSince(editStartLine)) {
            text += "\n" + line;
        }
        throw RequestError(text);
    }

    // Runs `change` in one transaction. A change that throws is rolled back: what it recorded is undone.
    json Edit(const std::string& name, const std::function<json()>& change) {
        if (inBatch) {
            return change();  // a part of the batch's transaction, which rolls back as a whole
        }
        editStartLine = log.GetNextLineNumber();
        json result;
        std::optional<std::string> failure;
        std::optional<Vantel::CommittedTransaction> done;
        {
            Vantel::Transaction transaction(name);
            try {
                result = change();
            } catch (const std::exception& error) {
                failure = error.what();
            }
            done = transaction.Commit();
        }
        if (failure) {
            if (done) {
                Vantel::UndoTransaction(project, *done);
            }
            throw RequestError(*failure);
        }
        if (done) {
            json update = {{"event", "changed"}, {"transaction", Describe(*done)}};
            undo.push_back(std::move(*done));
            redo.clear();
            ModelChanged(update);
        }
        return result;
    }

    // A value that is new since the last preview, and can be shown as a picture, is sent as one.
    void AddPreview(Vantel::DataOutput& output, PreviewMark& mark, json& previews) {
        const std::shared_ptr<Vantel::Data>& data = output.GetData();
        if (data == nullptr || mark.serial == data->GetSerial()) {
            return;
        }
        mark.serial = data->GetSerial();
        if (const Vantel::Image* image = data->GetPreviewImage()) {
            std::string preview = MakePreview(*image);
            if (!preview.empty()) {
                previews[output.GetPath().ToString()] = std::move(preview);
            }
        }
    }

    void ModelChanged(const json& update) {
        if (publisher) {
            publisher(update);
        }
    }

    json StateJson() const {
        return {{"running", running},
                {"frame", runner.GetFrameNumber()},
                {"time", runner.GetTime()},
                {"canUndo", !undo.empty()},
                {"canRedo", !redo.empty()}};
    }

    void PublishState() {
        if (publisher) {
            json update = StateJson();
            update["event"] = "state";
            publisher(update);
        }
    }

    Vantel::Project& project;
    std::filesystem::path file;
    double period;
    const LogTee& log;
    Vantel::Runner runner;
    std::string savedText;
    std::vector<Vantel::CommittedTransaction> undo;
    std::vector<Vantel::CommittedTransaction> redo;
    bool running = true;
    Clock::time_point nextFrame = Clock::now();
    double lastFrameMilliseconds = 0.0;
    std::uint64_t editStartLine = 0;
    bool inBatch = false;  // while a batch runs, its edits join its transaction
    Clock::time_point lastFrameUpdate{};
    Clock::time_point lastPreviews{};
    std::unordered_map<const Vantel::DataOutput*, PreviewMark> previewSerials;
    unsigned long long publishedFrame = 0;
    unsigned long long publishedOperatorsRun = 0;
    std::unordered_map<const Vantel::Parameter*, SentValue> lastValues;
    // Counts the frame updates' walks over the model; each cache entry keeps the last walk that saw it.
    std::uint64_t walk = 0;
};

EditSession::EditSession(Vantel::Project& project, std::filesystem::path file, double fps, const LogTee& log)
    : implementation(std::make_unique<Implementation>(project, std::move(file), fps, log)) {}

EditSession::~EditSession() = default;

std::string EditSession::Handle(const nlohmann::json& request) {
    return implementation->Handle(request);
}

void EditSession::SetPublisher(std::function<void(const nlohmann::json&)> publisher) {
    implementation->publisher = std::move(publisher);
}

double EditSession::RunDueFrame() {
    return implementation->RunDueFrame();
}

void EditSession::PublishFrameUpdate() {
    implementation->PublishFrameUpdate();
}

void EditSession::ResendAll() {
    implementation->ResendAll();
}

bool EditSession::HasUnsavedChanges() const {
    return implementation->HasUnsavedChanges();
}

void EditSession::SaveTo(const std::filesystem::path& file) {
    implementation->SaveTo(file);
}

}  // namespace VantelHost
