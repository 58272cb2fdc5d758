// BackgroundImageJob.h: runs an operator's image work on the background pool and hands the newest result
// back.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>

#include <Vantel/Support/Image.h>

namespace VantelStandard {

// BackgroundImageJob
//
// Owned by an operator (main thread only). Start queues `work` on the general pool; its result comes back
// through the main-thread queue and is kept until Take. Only the result of the latest Start (or none, after
// Cancel) is kept: an older one arriving later is dropped. The background task holds no pointer to the
// operator, only a weak handle on the state shared with it, so destroying the owner while work is in flight
// simply drops the result.
class BackgroundImageJob {
public:
    using Work = std::function<Vantel::Image(const Vantel::Image&)>;

    void Start(Vantel::Image input, Work work);
    // Drops the result of any job started so far.
    void Cancel();
    // True once the latest job's result has arrived and until it is taken.
    bool HasResult() const;
    std::optional<Vantel::Image> Take();

private:
    // The generation of the latest Start or Cancel; background tasks share it to skip work already stale.
    std::shared_ptr<std::atomic<std::uint64_t>> latest = std::make_shared<std::atomic<std::uint64_t>>(0);
    // The latest job's result; the background side holds only a weak handle, and uses it on the main thread.
    std::shared_ptr<std::optional<Vantel::Image>> result = std::make_shared<std::optional<Vantel::Image>>();
};

}  // namespace VantelStandard
