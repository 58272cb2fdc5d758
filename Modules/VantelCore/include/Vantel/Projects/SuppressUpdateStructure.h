// SuppressUpdateStructure.h: defers operator structure rebuilds on this thread for a scope.
//
//   SuppressUpdateStructure suppress;              // several structural writes, one rebuild later
//   if (SuppressUpdateStructure::IsActive()) { /* mark the structure dirty and return */ }
#pragma once

#include <Vantel/Export.h>

namespace Vantel {

// SuppressUpdateStructure
//
// A scope guard on a per-thread counter: while one lives on the calling thread, operators leave their
// structure dirty instead of rebuilding it. Nests; other threads are not affected.
class VANTEL_API SuppressUpdateStructure {
public:
    SuppressUpdateStructure();
    ~SuppressUpdateStructure();
    SuppressUpdateStructure(const SuppressUpdateStructure&) = delete;
    SuppressUpdateStructure& operator=(const SuppressUpdateStructure&) = delete;

    static bool IsActive();
};

}  // namespace Vantel
