#include <Vantel/Projects/SuppressUpdateStructure.h>

namespace Vantel {

namespace {
thread_local int suppressionDepth = 0;
}  // namespace

SuppressUpdateStructure::SuppressUpdateStructure() {
    ++suppressionDepth;
}

SuppressUpdateStructure::~SuppressUpdateStructure() {
    --suppressionDepth;
}

bool SuppressUpdateStructure::IsActive() {
    return suppressionDepth > 0;
}

}  // namespace Vantel
