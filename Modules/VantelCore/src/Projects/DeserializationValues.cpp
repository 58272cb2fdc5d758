// Parameter values: walking the stored "parameters" of an operator entry against its parameter tree.
#include <Vantel/Projects/Deserialization.h>

#include <string>
#include <utility>
#include <vector>

#include <Vantel/Objects/Access.h>
#include <Vantel/Objects/ObjectCast.h>
#include <Vantel/Operators/Operator.h>
#include <Vantel/Operators/OperatorImplementation.h>
#include <Vantel/Parameters/Parameter.h>
#include <Vantel/Parameters/ParameterBundle.h>
#include <Vantel/Parameters/ParameterBundleList.h>
#include <Vantel/Parameters/ParameterRootGroup.h>
#include <Vantel/Support/Logging.h>

#include "Projects/DeserializationSupport.h"
#include "Support/LogListener.h"

namespace Vantel::Deserialization {
namespace {

using nlohmann::json;

// The child at the entry's own position when its key matches (the common case of an unchanged operator
// type), else the child with that key anywhere in the scope.
ParameterNode* FindMember(ParameterGroup& scope, std::size_t index, const std::string& key) {
    ParameterNode* atIndex = scope.GetChild(index);
    if (atIndex != nullptr && !key.empty() && atIndex->GetKey() == key) {
        return atIndex;
    }
    return scope.Find(key);
}

void ApplyBundles(Operator& op, ParameterGroup& scope, std::size_t index, const json& entry, Context& context,
                  Detail::References references, std::vector<Detail::Unmatched>& unmatched) {
    auto* list = ObjectCast<ParameterBundleList>(FindMember(scope, index, Detail::KeyOf(entry)));
    if (list == nullptr) {
        unmatched.push_back({Ptr<ParameterGroup>(&scope), index, entry});
        return;
    }
    for (ParameterBundle* bundle : list->GetBundles()) {
        list->RemoveBundle(bundle);
    }
    for (const json& bundleEntry : Detail::AsArray(entry.at("bundles"))) {
        const std::string kind = bundleEntry.value("kind", std::string());
        const std::string key = Detail::KeyOf(bundleEntry);
        ParameterBundle* bundle = list->CreateBundle(kind, key);
        if (bundle == nullptr) {
            Detail::DropEntry(context, DroppedEntry::Kind::Bundle, *list, key,
                              "CreateBundles: bundle list '" + list->GetKey() + "' in operator '" +
                                  op.GetName() + "' refused bundle '" + key + "' of kind '" + kind +
                                  "', it is dropped.");
            continue;
        }
        Detail::ApplyScope(op, *bundle, Detail::ArrayAt(bundleEntry, "parameters"), context, references,
                           unmatched);
    }
    Detail::RebuildStructure(op);
}

}  // namespace

namespace Detail {

const json& ArrayAt(const json& entry, const char* key) {
    if (!entry.is_object()) {
        return AsArray(nullptr);
    }
    const auto found = entry.find(key);
    return found == entry.end() ? AsArray(nullptr) : AsArray(*found);
}

const json& AsArray(const json& value) {
    static const json empty = json::array();
    if (value.is_null()) {
        return empty;
    }
    static_cast<void>(value.get_ref<const json::array_t&>());  // another type is a type error of the file
    return value;
}

std::string KeyOf(const json& entry) {
    return entry.is_object() ? entry.value("key", std::string()) : std::string();
}

const std::string& StringField(const json& entry, const char* key, std::string& storage) {
    if (entry.is_object()) {
        const auto found = entry.find(key);
        if (found != entry.end() && found->is_string()) {
            return found->get_ref<const std::string&>();
        }
    }
    storage = entry.value(key, std::string());
    return storage;
}

DroppedEntry::Kind KindOf(const Unmatched& unmatched) {
    if (unmatched.entry.is_array()) {
        return DroppedEntry::Kind::ParameterScope;
    }
    return unmatched.entry.contains("bundles") ? DroppedEntry::Kind::BundleList
                                               : DroppedEntry::Kind::ParameterValue;
}

std::string KeyOf(const Unmatched& unmatched) {
    // A group is stored without key: its position is all that names it.
    return unmatched.entry.is_array() ? std::to_string(unmatched.index) : KeyOf(unmatched.entry);
}

std::string DropReason(const Operator& op, const Unmatched& unmatched) {
    const std::string key = KeyOf(unmatched);
    switch (KindOf(unmatched)) {
        case DroppedEntry::Kind::ParameterScope:
            return "ApplyParameterValues: scope '" + key + "' not found in operator '" + op.GetName() +
                   "', its values are dropped.";
        case DroppedEntry::Kind::BundleList:
            return "CreateBundles: bundle list '" + key + "' not found in operator '" + op.GetName() +
                   "', its bundles are dropped.";
        default:
            return "ApplyParameterValues: parameter '" + key + "' not found in operator '" + op.GetName() +
                   "', its value is dropped.";
    }
}

void GiveValue(Parameter& parameter, const json& value, Context& context) {
    Vantel::Detail::LogListener listener;
    parameter.DeserializeValue(value);
    for (std::string& message : listener.TakeMessages()) {
        ContextAccess::NoteRefusedValue(context, parameter, std::move(message));
    }
}

void ApplyValue(Parameter& parameter, const json& value, Context& context, References references) {
    if (references == References::Defer && parameter.ValueReferencesObjects()) {
        context.DeferReferenceValue(parameter, value);
        return;
    }
    GiveValue(parameter, value, context);
}

void ApplyEntry(Operator& op, ParameterGroup& scope, std::size_t index, const json& entry, Context& context,
                References references, std::vector<Unmatched>& unmatched) {
    if (entry.is_null()) {
        return;  // a node the writer had no form for
    }
    if (entry.is_array()) {
        // A plain group's form; an operator's tree holds none (its root takes parameters and bundle lists).
        unmatched.push_back({Ptr<ParameterGroup>(&scope), index, entry});
        return;
    }
    static_cast<void>(
        entry.get_ref<const json::object_t&>());  // any other kind of entry is a type error of the file
    if (entry.contains("bundles")) {
        ApplyBundles(op, scope, index, entry, context, references, unmatched);
        return;
    }
    // A member the user added came with its value when it was created; on an operator that cannot hold one
    // it was reported then.
    if (entry.contains("type")) {
        return;
    }
    const auto value = entry.find("value");
    if (value == entry.end()) {
        return;  // nothing stored, nothing to lose (outputs, derived members)
    }
    auto* parameter = ObjectCast<Parameter>(FindMember(scope, index, KeyOf(entry)));
    if (parameter == nullptr) {
        unmatched.push_back({Ptr<ParameterGroup>(&scope), index, entry});
        return;
    }
    ApplyValue(*parameter, *value, context, references);
}

void ApplyScope(Operator& op, ParameterGroup& scope, const json& entries, Context& context,
                References references, std::vector<Unmatched>& unmatched) {
    const json& array = AsArray(entries);
    for (std::size_t index = 0; index < array.size(); ++index) {
        ApplyEntry(op, scope, index, array[index], context, references, unmatched);
    }
}

void RebuildStructure(Operator& op) {
    Operator::Implementation& implementation = *Access::GetImplementation(op);
    implementation.MarkStructureDirty();
    implementation.UpdateStructureIfDirty();
}

}  // namespace Detail

void ApplyParameterValues(Operator& op, const json& entry, Context& context) {
    std::vector<Detail::Unmatched> unmatched;
    Detail::ApplyScope(op, op.GetParameterGroup(), Detail::ArrayAt(entry, "parameters"), context,
                       Detail::References::Defer, unmatched);
    Detail::RebuildStructure(op);

    // The rebuild may have made the members that a structural value asked for: try those entries again.
    std::vector<Detail::Unmatched> missing;
    for (Detail::Unmatched& entryLeft : unmatched) {
        if (ParameterGroup* scope = entryLeft.scope.Get()) {
            Detail::ApplyEntry(op, *scope, entryLeft.index, entryLeft.entry, context,
                               Detail::References::Defer, missing);
        } else {
            missing.push_back(std::move(entryLeft));
        }
    }
    if (missing.empty()) {
        return;
    }
    // A structural reference resolved later may still make them.
    if (context.HasDeferredStructuralValue(op)) {
        for (Detail::Unmatched& entryLeft : missing) {
            ParameterGroup* scope = entryLeft.scope.Get();
            context.StoreValue(op, scope != nullptr ? *scope : op.GetParameterGroup(), entryLeft.index,
                               std::move(entryLeft.entry));
        }
        return;
    }
    for (const Detail::Unmatched& entryLeft : missing) {
        ParameterGroup* scope = entryLeft.scope.Get();
        Detail::DropEntry(context, Detail::KindOf(entryLeft),
                          scope != nullptr ? static_cast<Object&>(*scope) : static_cast<Object&>(op),
                          Detail::KeyOf(entryLeft), Detail::DropReason(op, entryLeft));
    }
}

}  // namespace Vantel::Deserialization
