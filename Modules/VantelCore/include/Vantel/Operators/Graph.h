// Graph.h: an operator that holds other operators and the connections between them.
//
//   std::unique_ptr<Object> made = TypeLibrary::Get().FindType("Vantel.General.Graph")->CreateInstance();
#pragma once

#include <memory>

#include <Vantel/Export.h>
#include <Vantel/Operators/Operator.h>

namespace Vantel {

// Graph
//
// Graphs nest: a graph is itself an operator. The project owns the top graph.
class VANTEL_API Graph : public Operator {
public:
    Graph();
    ~Graph() override;

    static const ObjectType* Type();
    const ObjectType* GetType() const override;
};

}  // namespace Vantel
