// Deserialization.h: reads project documents and undo-record entries back into live objects.
//
//   std::unique_ptr<Project> project = Deserialization::DeserializeProject(document);   // null on failure
//   Deserialization::Context context;
//   std::unique_ptr<Operator> op = Deserialization::DeserializeOperator(entry, context);
//   context.ResolveReferences();                     // references, stored values, connections
#pragma once

#include <cstddef>
#include <memory>
#include <string_view>
#include <vector>

#include <nlohmann/json.hpp>

#include <Vantel/Export.h>
#include <Vantel/Projects/DroppedEntry.h>
#include <Vantel/Projects/ProjectFileVersion.h>

namespace Vantel {

class DataInput;
class DataOutput;
class Graph;
class Operator;
class Parameter;
class ParameterGroup;
class Project;

// Loading is forgiving: an entry that cannot be restored is dropped with a logged line that names it, and
// the rest loads. JSON of the wrong type inside an entry (a number where a string belongs) is not forgiven:
// the JSON library's exception reaches the caller. Main thread only.
namespace Deserialization {

namespace Detail {
struct ContextAccess;
}

// Context
//
// The state of one load (a whole project, or one undo record): what cannot be finished while the tree is
// still being built. It holds parameters by weak Ptr, so a parameter or operator that goes away in between
// is skipped. Create it empty, pass it to every call of the load, then call ResolveReferences once. Movable,
// not copyable.
//
//   Deserialization::Context context;
//   std::unique_ptr<Operator> op = Deserialization::DeserializeOperator(entry, context);
//   graph.AddOperator(std::move(op));
//   context.ResolveReferences();
class VANTEL_API Context {
public:
    Context();
    ~Context();
    Context(Context&&) noexcept;
    Context& operator=(Context&&) noexcept;
    Context(const Context&) = delete;
    Context& operator=(const Context&) = delete;

    // A value that names other objects waits until every object of the load exists.
    void DeferReferenceValue(Parameter& parameter, nlohmann::json value);
    // True when a value of one of `op`'s structural parameters is waiting in this context.
    bool HasDeferredStructuralValue(const Operator& op) const;
    // An entry of `op`'s parameter tree that found no member in `scope` at `index`: applied again once the
    // deferred structural values have rebuilt the operator.
    void StoreValue(Operator& op, ParameterGroup& scope, std::size_t index, nlohmann::json entry);
    // The connection arrays of `graph`'s entry, made once every operator exists (null: none).
    void DeferConnections(Graph& graph, nlohmann::json dataConnections, nlohmann::json parameterConnections);

    // Finishes the load, in this order: applies the deferred reference values ("Context::ResolveReferences:
    // Parameter pointer is null." for a parameter that went away); rebuilds each operator whose structural
    // value was among them and applies its stored values again (what still finds no member is dropped with
    // "Context::ResolveReferences: some stored values of operator '<name>' did not match a member and are
    // dropped."); makes each graph's data and then parameter connections, graphs in the order queued; prunes
    // the unconnected list inputs of the graphs' operators. Leaves the context empty.
    void ResolveReferences();

    // Every entry this load dropped so far, in the order met, also after ResolveReferences. Owners are
    // named by the paths they have now, so ask once the loaded tree is in place. A value is listed as well
    // when its parameter logs a warning or error while taking it (one entry per line, the reason as logged),
    // and so is a bundle that its list refuses.
    std::vector<DroppedEntry> GetDroppedEntries() const;

private:
    friend struct Detail::ContextAccess;
    class Implementation;
    std::unique_ptr<Implementation> implementation;
};

// The whole load of a project document; null (with the reason logged) when the document is not an object,
// its version is not readable, or its "root" is missing, cannot be built or is not a graph. Records nothing
// for undo, also inside an open transaction. The project's GetDroppedEntries lists what the load dropped.
VANTEL_API std::unique_ptr<Project> DeserializeProject(const nlohmann::json& document);
// The document in a project file's text, equal to what nlohmann::json::parse(text) makes of it, in about
// half the time; text that is no JSON throws the library's own parse_error, with its position and message.
VANTEL_API nlohmann::json ReadProjectText(std::string_view text);
// The document's "version" record; format 0 without software or dev record when it is missing. Never logs.
VANTEL_API ProjectFileVersion ReadProjectFileVersion(const nlohmann::json& document);

// One operator entry and, for a graph, everything below it; the connections wait in `context`. Null, with
// the reason logged, for an entry that is not an object, has no "type", or names a type that is not an
// operator type of the library. A null coordinate of "position" reads as NaN (what the writer makes of NaN
// and the infinities); a position that is not two numbers or nulls is dropped with a logged error.
VANTEL_API std::unique_ptr<Operator> DeserializeOperator(const nlohmann::json& entry, Context& context);
// A new parameter, data input or data output of the entry's "type", with its key and name (and for a
// parameter its "output" flag and value). Null, with the reason logged, when the entry is no object with a
// "type" or the type cannot be made.
VANTEL_API std::unique_ptr<Parameter> DeserializeParameter(const nlohmann::json& entry, Context& context);
VANTEL_API std::unique_ptr<DataInput> DeserializeDataInput(const nlohmann::json& entry, Context& context);
VANTEL_API std::unique_ptr<DataOutput> DeserializeDataOutput(const nlohmann::json& entry, Context& context);
// Into an existing object: the name when the entry has one, the key only while the object is detached (an
// attached object's key is its identity), and for a parameter the "output" flag and the value, a value
// naming other objects deferred in `context`.
VANTEL_API void DeserializeParameter(const nlohmann::json& entry, Parameter& parameter, Context& context);
VANTEL_API void DeserializeDataInput(const nlohmann::json& entry, DataInput& input, Context& context);
VANTEL_API void DeserializeDataOutput(const nlohmann::json& entry, DataOutput& output, Context& context);

// Applies the "parameters" of an operator's whole `entry` to its parameter tree: values (references
// deferred in `context`), and bundle lists rebuilt bundle by bundle. Members that the user added (entries
// with a "type") come with their values when they are created and are passed over here. An entry that finds
// no member after the operator's structure was rebuilt is kept in `context` when a deferred structural value
// may still create it, else dropped with a logged error; an entry without a value loses nothing and is
// passed over.
VANTEL_API void ApplyParameterValues(Operator& op, const nlohmann::json& entry, Context& context);
// Replaces the parameters that the user added to `op`'s root group by those of `structure` (the form of
// Serialization::SerializeOwnStructure), appended in order. False, touching nothing, when `structure`
// already describes them.
VANTEL_API bool RestoreOwnStructure(Operator& op, const nlohmann::json& structure, Context& context);

// Makes the connections of a graph entry's "dataConnections" and "parameterConnections" arrays, endpoints
// resolved relative to `graph`; each one that cannot be resolved or made is dropped with a logged error.
VANTEL_API void DeserializeDataConnections(const nlohmann::json& connections, Graph& graph, Context& context);
VANTEL_API void DeserializeParameterConnections(const nlohmann::json& connections, Graph& graph,
                                                Context& context);
// Removes every list input of `op` that has no connection, with a warning for each.
VANTEL_API void PruneOrphanListInputs(Operator& op);

}  // namespace Deserialization
}  // namespace Vantel
