#include <Vantel/Operators/Graph.h>

#include <Vantel/Objects/ObjectType.h>

namespace Vantel {

Graph::Graph() = default;

Graph::~Graph() = default;

const ObjectType* Graph::Type() {
    static const ObjectType type("Vantel.General.Graph", Operator::Type(), MakeFactory<Graph>());
    return &type;
}

const ObjectType* Graph::GetType() const {
    return Type();
}

}  // namespace Vantel
