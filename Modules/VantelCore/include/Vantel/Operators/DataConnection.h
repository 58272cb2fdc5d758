// DataConnection.h: a data output feeding a data input.
//
//   DataConnection connection{&blur.output, &sharpen.input};
//   graph.AddDataConnection(connection);
#pragma once

namespace Vantel {

class DataInput;
class DataOutput;

// Two pointers; equal when both are equal. The graph keeps the connections; the output keeps a copy of each
// connection that leaves it and the input the one that enters it.
struct DataConnection {
    DataOutput* output = nullptr;
    DataInput* input = nullptr;
    bool operator==(const DataConnection&) const = default;
};

}  // namespace Vantel
