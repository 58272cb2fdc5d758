// DroppedEntry.h: one entry of a project file that loading could not restore.
//
//   for (const DroppedEntry& entry : project.GetDroppedEntries()) {
//       std::cerr << ToString(entry.kind) << " '" << entry.key << "' in " << entry.owner << ": " <<
//       entry.reason;
//   }
#pragma once

#include <string>
#include <string_view>

#include <Vantel/Export.h>

namespace Vantel {

// DroppedEntry
//
// A plain value: what kind of entry was lost, where, and why. Loading logs the reason as well; this is the
// same loss for a host that must decide what to do about it (refuse to save over the file, tell the user).
struct VANTEL_API DroppedEntry {
    enum class Kind {
        Operator,        // an operator of a graph: unknown type, no "type", cannot be made
        Position,        // an operator's position that is not two numbers; the operator loads
        ParameterValue,  // a stored value that found no parameter, or that its parameter refused
        ParameterScope,  // a stored group that found no group at its position
        BundleList,      // a bundle list with its bundles
        Bundle,          // one bundle with its values, refused by its list
        ListInputs,      // the inputs of a data input list that the operator does not have
        ListInput,       // one list input left without its connection
        AddedMember,     // a port or parameter the user added, on an operator that cannot hold it
        DataConnection,
        ParameterConnection,
    };

    Kind kind = Kind::Operator;
    // The path text of the object the entry belonged to ("/" for the root graph), as it is after the load;
    // empty when that object did not survive the load.
    std::string owner;
    // The entry's key; "output -> input" for a connection, the position for a group, "position".
    std::string key;
    // The message that loading logged for it, without its "[Error] " or "[Warning] ".
    std::string reason;

    bool operator==(const DroppedEntry&) const = default;
};

// The kind in lower-case words: "operator", "parameter value", "data connection", ...
VANTEL_API std::string_view ToString(DroppedEntry::Kind kind);

}  // namespace Vantel
