#include <Vantel/Projects/DroppedEntry.h>

namespace Vantel {

std::string_view ToString(DroppedEntry::Kind kind) {
    switch (kind) {
        case DroppedEntry::Kind::Operator:
            return "operator";
        case DroppedEntry::Kind::Position:
            return "position";
        case DroppedEntry::Kind::ParameterValue:
            return "parameter value";
        case DroppedEntry::Kind::ParameterScope:
            return "parameter group";
        case DroppedEntry::Kind::BundleList:
            return "bundle list";
        case DroppedEntry::Kind::Bundle:
            return "bundle";
        case DroppedEntry::Kind::ListInputs:
            return "list inputs";
        case DroppedEntry::Kind::ListInput:
            return "list input";
        case DroppedEntry::Kind::AddedMember:
            return "added member";
        case DroppedEntry::Kind::DataConnection:
            return "data connection";
        case DroppedEntry::Kind::ParameterConnection:
            return "parameter connection";
    }
    return "entry";
}

}  // namespace Vantel
