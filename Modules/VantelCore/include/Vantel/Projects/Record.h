// Record.h: the changes a transaction collects, one struct per kind of edit.
//
//   Transaction::AddRecord(ParameterValueRecord{radius->GetPath(), 1.0, 2.5});
//   if (KindOf(record) == RecordKind::ParameterValue) { ... }
//   auto* move = std::get_if<OperatorPositionRecord>(&record);
#pragma once

#include <cstdint>
#include <string>
#include <type_traits>
#include <variant>
#include <vector>

#include <glm/vec2.hpp>
#include <nlohmann/json.hpp>

#include <Vantel/Objects/Path.h>
#include <Vantel/Operators/ComponentLink.h>

namespace Vantel {

// Record
//
// One edit of the model, holding enough to apply it and to revert it. Targets are named by path, never by
// pointer, so a record stays meaningful after its target was destroyed and re-created. Values and structures
// are JSON in the forms the project files use. The kind of a record (RecordKind, below) is its index in the
// variant:
//
//   kind  struct                     fields                                  clears pending  folds
//   0     ParameterValueRecord       path, previous, next (json)             yes             yes
//         the whole value of a parameter was written.
//   1     ParameterComponentRecord   path, component, previous, next         yes             yes
//         one component of a vector or colour parameter was written.
//   2     OperatorPositionRecord     path, previous, next (vec2)             no              yes
//         an operator was moved in its graph's view.
//   3     RenameRecord               path, previous, next (string)           yes             yes
//         the display name of an operator, parameter or data port changed; `path` is the one before the
//         change, and replay picks the setter by what it resolves to.
//   4     OperatorRecord             path, index, serializedOperator,        yes             no
//                                    presence
//         an operator was added to or removed from a graph at `index`.
//   5     DataConnectionRecord       output, input, presence                 yes             no
//   6     ParameterConnectionRecord  output, input, links, presence          yes             no
//   7     DataPortRecord             path, index, port, direction,           yes             no
//                                    presence
//         an input created in or removed from a data input list (the path's parent is the list), or a data
//         port the user added to or removed from an operator, as a rule a graph (the path's parent is the
//         operator; `index` is its input slot or output index, where undo puts it back).
//   8     StructureRecord            path, previous, next (json)             yes             no
//         an operator's own structure (its user-added parameter nodes) before and after a rebuild.
//   9     ListInputMoveRecord        path, previousIndex, nextIndex          no              yes
//   10    ParameterAddedRecord       path, index, node                       yes             no
//   11    ParameterRemovedRecord     path, index, node                       yes             no
//   12    BundleAddedRecord          path, index, node                       yes             no
//   13    BundleRemovedRecord        path, index, node                       yes             no
//         a user-added parameter or a bundle inserted into or detached from a parameter group at `index`.
//         During a rebuild in a graph, the removal of any parameter is recorded as ParameterRemoved, so that
//         undo gives the members the rebuild took away their values back.
//   14    ParameterNodeMoveRecord    path, previousIndex, nextIndex          no              yes
//   15    CompoundRecord             path, previous, next (json), nested     no              no
//         the whole-value write of a structural parameter; `nested` holds the records of the rebuild it
//         caused (a transaction opened inside another attaches its records here). Redo and undo both replay
//         the write first, which runs the rebuild again, then the nested records (undo: in reverse) on what
//         it made: below the rebuilt operator a target that is gone is done, and a node put back that exists
//         again only gets its stored values and place.
//
// "Clears pending": see Transaction::AddRecord. "Folds": see Transaction::Commit.
struct ParameterValueRecord;
struct ParameterComponentRecord;
struct OperatorPositionRecord;
struct RenameRecord;
struct OperatorRecord;
struct DataConnectionRecord;
struct ParameterConnectionRecord;
struct DataPortRecord;
struct StructureRecord;
struct ListInputMoveRecord;
struct ParameterAddedRecord;
struct ParameterRemovedRecord;
struct BundleAddedRecord;
struct BundleRemovedRecord;
struct ParameterNodeMoveRecord;
struct CompoundRecord;

using Record =
    std::variant<ParameterValueRecord, ParameterComponentRecord, OperatorPositionRecord, RenameRecord,
                 OperatorRecord, DataConnectionRecord, ParameterConnectionRecord, DataPortRecord,
                 StructureRecord, ListInputMoveRecord, ParameterAddedRecord, ParameterRemovedRecord,
                 BundleAddedRecord, BundleRemovedRecord, ParameterNodeMoveRecord, CompoundRecord>;

enum class Presence { Added, Removed };
enum class PortDirection { Input, Output };

struct ParameterValueRecord {
    Path path;
    nlohmann::json previous;
    nlohmann::json next;
    bool operator==(const ParameterValueRecord& other) const = default;
};

struct ParameterComponentRecord {
    Path path;
    int component = 0;
    double previous = 0.0;
    double next = 0.0;
    bool operator==(const ParameterComponentRecord& other) const = default;
};

struct OperatorPositionRecord {
    Path path;
    glm::vec2 previous{0.0f};
    glm::vec2 next{0.0f};
    bool operator==(const OperatorPositionRecord& other) const = default;
};

struct RenameRecord {
    Path path;
    std::string previous;
    std::string next;
    bool operator==(const RenameRecord& other) const = default;
};

struct OperatorRecord {
    Path path;
    std::uint64_t index = 0;
    nlohmann::json serializedOperator;
    Presence presence = Presence::Added;
    bool operator==(const OperatorRecord& other) const = default;
};

struct DataConnectionRecord {
    Path output;
    Path input;
    Presence presence = Presence::Added;
    bool operator==(const DataConnectionRecord& other) const = default;
};

struct ParameterConnectionRecord {
    Path output;
    Path input;
    std::vector<ComponentLink> links;
    Presence presence = Presence::Added;
    bool operator==(const ParameterConnectionRecord& other) const = default;
};

struct DataPortRecord {
    Path path;
    std::uint64_t index = 0;
    nlohmann::json port;
    PortDirection direction = PortDirection::Input;
    Presence presence = Presence::Added;
    bool operator==(const DataPortRecord& other) const = default;
};

struct StructureRecord {
    Path path;
    nlohmann::json previous;
    nlohmann::json next;
    bool operator==(const StructureRecord& other) const = default;
};

struct ListInputMoveRecord {
    Path path;
    std::uint64_t previousIndex = 0;
    std::uint64_t nextIndex = 0;
    bool operator==(const ListInputMoveRecord& other) const = default;
};

struct ParameterAddedRecord {
    Path path;
    std::uint64_t index = 0;
    nlohmann::json node;
    bool operator==(const ParameterAddedRecord& other) const = default;
};

struct ParameterRemovedRecord {
    Path path;
    std::uint64_t index = 0;
    nlohmann::json node;
    bool operator==(const ParameterRemovedRecord& other) const = default;
};

struct BundleAddedRecord {
    Path path;
    std::uint64_t index = 0;
    nlohmann::json node;
    bool operator==(const BundleAddedRecord& other) const = default;
};

struct BundleRemovedRecord {
    Path path;
    std::uint64_t index = 0;
    nlohmann::json node;
    bool operator==(const BundleRemovedRecord& other) const = default;
};

struct ParameterNodeMoveRecord {
    Path path;
    std::uint64_t previousIndex = 0;
    std::uint64_t nextIndex = 0;
    bool operator==(const ParameterNodeMoveRecord& other) const = default;
};

struct CompoundRecord {
    Path path;
    nlohmann::json previous;
    nlohmann::json next;
    std::vector<Record> nested;  // in the order made; replayed after this record's own change, both ways
    bool operator==(const CompoundRecord& other) const = default;
};

// RecordKind
//
// The kinds by name, each numbered as its struct's place in the variant (the table above). Code and tests
// name kinds; the numbers only matter to whoever keeps records outside the process.
enum class RecordKind : std::uint8_t {
    ParameterValue,
    ParameterComponent,
    OperatorPosition,
    Rename,
    Operator,
    DataConnection,
    ParameterConnection,
    DataPort,
    Structure,
    ListInputMove,
    ParameterAdded,
    ParameterRemoved,
    BundleAdded,
    BundleRemoved,
    ParameterNodeMove,
    Compound,
};

inline RecordKind KindOf(const Record& record) {
    return static_cast<RecordKind>(record.index());
}

namespace Detail {
template <RecordKind kind, typename T>
constexpr bool kKindNames =
    std::is_same_v<std::variant_alternative_t<static_cast<std::size_t>(kind), Record>, T>;
}  // namespace Detail

// A struct added to the variant, or moved in it, must be named here in the same place.
static_assert(std::variant_size_v<Record> == static_cast<std::size_t>(RecordKind::Compound) + 1);
static_assert(Detail::kKindNames<RecordKind::ParameterValue, ParameterValueRecord>);
static_assert(Detail::kKindNames<RecordKind::ParameterComponent, ParameterComponentRecord>);
static_assert(Detail::kKindNames<RecordKind::OperatorPosition, OperatorPositionRecord>);
static_assert(Detail::kKindNames<RecordKind::Rename, RenameRecord>);
static_assert(Detail::kKindNames<RecordKind::Operator, OperatorRecord>);
static_assert(Detail::kKindNames<RecordKind::DataConnection, DataConnectionRecord>);
static_assert(Detail::kKindNames<RecordKind::ParameterConnection, ParameterConnectionRecord>);
static_assert(Detail::kKindNames<RecordKind::DataPort, DataPortRecord>);
static_assert(Detail::kKindNames<RecordKind::Structure, StructureRecord>);
static_assert(Detail::kKindNames<RecordKind::ListInputMove, ListInputMoveRecord>);
static_assert(Detail::kKindNames<RecordKind::ParameterAdded, ParameterAddedRecord>);
static_assert(Detail::kKindNames<RecordKind::ParameterRemoved, ParameterRemovedRecord>);
static_assert(Detail::kKindNames<RecordKind::BundleAdded, BundleAddedRecord>);
static_assert(Detail::kKindNames<RecordKind::BundleRemoved, BundleRemovedRecord>);
static_assert(Detail::kKindNames<RecordKind::ParameterNodeMove, ParameterNodeMoveRecord>);
static_assert(Detail::kKindNames<RecordKind::Compound, CompoundRecord>);

// CommittedTransaction
//
// A finished user action as the host keeps it in its undo history: a value, freely copied.
struct CommittedTransaction {
    std::string name;
    std::vector<Record> records;  // in the order made
};

}  // namespace Vantel
