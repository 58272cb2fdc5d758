// The POSIX side: exit() runs the destructors of statics with every thread still running.
#ifndef _WIN32

#include "Platform/Threads.h"

namespace Vantel::Platform {

bool ThreadsOutliveStatics() {
    return true;
}

}  // namespace Vantel::Platform

#endif
