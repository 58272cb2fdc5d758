// The Win32 side: ExitProcess ends the other threads first, then detaches the libraries, whose statics die
// then.
#ifdef _WIN32

#include "Platform/Threads.h"

namespace Vantel::Platform {

bool ThreadsOutliveStatics() {
    return false;
}

}  // namespace Vantel::Platform

#endif
