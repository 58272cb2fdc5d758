// Resources.h: kept for the library's own includes; the accessors are exported from the public header.
#pragma once

#include <Vantel/Support/Resources.h>
