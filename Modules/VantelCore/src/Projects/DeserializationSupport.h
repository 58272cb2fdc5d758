// DeserializationSupport.h: the pieces of the loader that its source files share: reading arrays out of
// entries and walking stored parameter values against a parameter tree.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include <Vantel/Objects/Ptr.h>
#include <Vantel/Parameters/ParameterGroup.h>
#include <Vantel/Projects/Deserialization.h>
#include <Vantel/Projects/DroppedEntry.h>

namespace Vantel {

class Graph;
class Object;
class Operator;
class Parameter;
class Project;

namespace Deserialization::Detail {

// The array at `entry[key]`; an empty array when the entry is no object or has no such key. A value of
// another type throws the JSON library's type error.
const nlohmann::json& ArrayAt(const nlohmann::json& entry, const char* key);
// `value` as an array (null reads as empty); another type throws the JSON library's type error.
const nlohmann::json& AsArray(const nlohmann::json& value);
// The entry's "key", empty when it has none.
std::string KeyOf(const nlohmann::json& entry);
// The string at `entry[key]` without a copy when it is one; otherwise what entry.value(key, "") gives (the
// empty string, or the JSON library's type error), kept in `storage`.
const std::string& StringField(const nlohmann::json& entry, const char* key, std::string& storage);

// What the loader's own files need of a Context beyond its public calls.
struct ContextAccess {
    // The entries of this load stay alive until ResolveReferences, as a whole document does while it is read:
    // the connection arrays are then read where they are instead of copied.
    static void ReadEntriesInPlace(Context& context);
    // Context::DeferConnections, copying the arrays only when the entries are not read in place.
    static void DeferConnections(Context& context, Graph& graph, const nlohmann::json& dataConnections,
                                 const nlohmann::json& parameterConnections);
    // Notes an entry as dropped; the caller has logged the reason. A null owner is one that went away.
    static void NoteDropped(Context& context, DroppedEntry::Kind kind, Object* owner, std::string key,
                            std::string reason);
    // Notes the value that `parameter` refused, with the reason it logged. The entry is named by the
    // parameter's place when the load is over, as it may be attached or re-keyed after its value came.
    static void NoteRefusedValue(Context& context, Parameter& parameter, std::string reason);
};

// What the loader needs of a Project beyond its public calls.
struct ProjectAccess {
    static void SetDroppedEntries(Project& project, std::vector<DroppedEntry> entries);
};

// Logs `reason` as an error and notes the entry as dropped from `owner`.
void DropEntry(Context& context, DroppedEntry::Kind kind, Object& owner, std::string key, std::string reason);

// What to do with a value that names other objects.
enum class References {
    Defer,  // while the tree is being built: it waits in the context
    Apply,  // once every object exists
};

// A stored entry that found no member (a parameter value, a group or a bundle list): where it was looked
// for, and the entry.
struct Unmatched {
    Ptr<ParameterGroup> scope;
    std::size_t index = 0;
    nlohmann::json entry;
};

// The kind, the key and the logged reason with which an unmatched entry of `op` is dropped.
DroppedEntry::Kind KindOf(const Unmatched& unmatched);
std::string KeyOf(const Unmatched& unmatched);
std::string DropReason(const Operator& op, const Unmatched& unmatched);

// Gives `value` to the parameter now. Each warning or error logged meanwhile is the parameter refusing the
// value: it is noted in `context` as a dropped value.
void GiveValue(Parameter& parameter, const nlohmann::json& value, Context& context);
void ApplyValue(Parameter& parameter, const nlohmann::json& value, Context& context, References references);
// Applies the entry at `index` of a stored scope to `scope` of `op`. A parameter value, bundle list or group
// without member is added to `unmatched`: a rebuild of the operator may still make it.
void ApplyEntry(Operator& op, ParameterGroup& scope, std::size_t index, const nlohmann::json& entry,
                Context& context, References references, std::vector<Unmatched>& unmatched);
void ApplyScope(Operator& op, ParameterGroup& scope, const nlohmann::json& entries, Context& context,
                References references, std::vector<Unmatched>& unmatched);
// Marks the operator's structure dirty and rebuilds it.
void RebuildStructure(Operator& op);
// PruneOrphanListInputs, noting each removed input in `context` when there is one.
void PruneListInputs(Operator& op, Context* context);

}  // namespace Deserialization::Detail
}  // namespace Vantel
