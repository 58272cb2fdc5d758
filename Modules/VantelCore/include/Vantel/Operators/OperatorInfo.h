// OperatorInfo.h: the declared description of an operator type: its name, category, help text and members.
//
//   OperatorInfo info = ParseOperatorDoc(Graph::Type(), "Docs/Operators/General/Graph.md", text);
//   const OperatorInfo::Entry* input = info.FindInput("Image 2");     // exact key, else a "[...]" family
//   const OperatorInfo::Entry* opacity = info.FindBundleParameter("Layers", "Image", "Opacity");
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include <Vantel/Export.h>

namespace Vantel {

class ObjectType;

// OperatorInfo
//
// A record, copied by value: the type library owns the one it is given at registration. Filled mostly from
// the type's documentation (ParseOperatorDoc); whatever the doc lacks stays empty. Member keys in square
// brackets
// ("[Inputs]") stand for a family of members that share the part before the bracket, or that the user adds.
struct VANTEL_API OperatorInfo {
    struct BundleKind;

    // Entry
    //
    // One declared data input, data output or parameter. A parameter bundle list has kinds (and a summary)
    // instead of a type and a description.
    struct VANTEL_API Entry {
        std::string name;  // the member key, e.g. "Image" or "[Inputs]"
        std::string type;  // as shown to the user, e.g. "Texture" or "[Chosen when added]"
        std::string description;
        std::string summary;  // bundle lists only
        std::vector<BundleKind> kinds;

        bool IsBundleList() const;
        // The only kind when there is exactly one and it has no name (it then answers every kind name), else
        // the kind named `kind`, else null.
        const BundleKind* FindKind(std::string_view kind) const;
    };

    // BundleKind
    //
    // One kind of bundle of a bundle list; its name may be empty when the list has a single kind.
    struct BundleKind {
        std::string name;
        std::vector<Entry> parameters;
    };

    const ObjectType* type = nullptr;
    std::string name;      // the display name, e.g. "Graph Inputs"
    std::string category;  // e.g. "General"; empty when the doc lies in no category folder
    std::string summary;
    std::vector<std::string> tags;
    std::string text;  // the Markdown help text
    std::string path;  // the doc's path, e.g. "Docs/Operators/General/Graph.md"
    std::vector<Entry> outputs;
    std::vector<Entry> inputs;
    std::vector<Entry> parameters;

    // The first entry named exactly `name`; else the first family entry (one whose name contains "[") whose
    // part before the "[" begins `name` (a plain prefix test, so "[Inputs]" matches every name); else null.
    static const Entry* FindEntry(const std::vector<Entry>& entries, std::string_view name);
    const Entry* FindInput(std::string_view name) const;
    const Entry* FindOutput(std::string_view name) const;
    const Entry* FindParameter(std::string_view name) const;
    // The entry of `parameter` in bundles of kind `kind` of the bundle list `list`. Null when there is no
    // such list, it has no kinds, or the kind is not found: a list with one unnamed kind uses it for any
    // `kind`; otherwise an empty `kind` means the first unnamed kind.
    const Entry* FindBundleParameter(std::string_view list, std::string_view kind,
                                     std::string_view parameter) const;
};

}  // namespace Vantel
