// Threads.h: what the end of the process leaves of the library's own threads, and thread-local variables
// read on every operator's run.
//
//   VANTEL_HOT_THREAD_LOCAL thread_local Counter counter;
#pragma once

// A thread-local variable of a shared library is reached through a call into the dynamic loader, unless it
// takes the initial-exec model: then it is one load beside the thread pointer. A library opened while the
// process runs takes such variables from a small reserve, so only a few small ones may.
#if defined(__ELF__)
#define VANTEL_HOT_THREAD_LOCAL [[gnu::tls_model("initial-exec")]]
#else
#define VANTEL_HOT_THREAD_LOCAL
#endif

namespace Vantel::Platform {

// True where the library's statics are destroyed while the process's other threads still run (exit() on POSIX
// systems), so that a static may stop and join its threads. False on Windows, which ends every other thread
// before it unloads the libraries: a join there would wait for ever.
bool ThreadsOutliveStatics();

}  // namespace Vantel::Platform
