// Threads.h: what the end of the process leaves of the library's own threads.
#pragma once

namespace Vantel::Platform {

// True where the library's statics are destroyed while the process's other threads still run (exit() on POSIX
// systems), so that a static may stop and join its threads. False on Windows, which ends every other thread
// before it unloads the libraries: a join there would wait for ever.
bool ThreadsOutliveStatics();

}  // namespace Vantel::Platform
