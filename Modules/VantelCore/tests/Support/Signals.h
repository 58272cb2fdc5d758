// Signals.h: lets background tasks tell a test that they got somewhere, without sleeping.
//
//   auto signals = std::make_shared<Signals>();
//   Tasks::RunInBackground(Tasks::Kind::General, [signals] { Work(); signals->Send(); });
//   EXPECT_TRUE(signals->Await());
#pragma once

#include <chrono>
#include <semaphore>

namespace Vantel::Testing {

// Counts signals sent from any thread. Tasks capture it through a shared_ptr, so that it outlives them even
// when a check fails early. The timeout, reached only when something is broken, turns a hang into a failure.
class Signals {
public:
    void Send() { semaphore.release(); }
    bool Await(unsigned count = 1) {
        for (unsigned i = 0; i < count; ++i) {
            if (!semaphore.try_acquire_for(std::chrono::seconds(30))) {
                return false;
            }
        }
        return true;
    }

private:
    std::counting_semaphore<> semaphore{0};
};

}  // namespace Vantel::Testing
