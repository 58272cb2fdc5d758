#include "BackgroundImageJob.h"

#include <utility>

#include <Vantel/Execution/Tasks.h>

namespace VantelStandard {

using Vantel::Image;
using Vantel::Tasks;

void BackgroundImageJob::Start(Image input, Work work) {
    const std::uint64_t generation = ++*latest;
    result->reset();
    std::weak_ptr<std::optional<Image>> slot = result;
    Tasks::RunInBackground(Tasks::Kind::General, [slot, latest = latest, generation, input = std::move(input),
                                                  work = std::move(work)] {
        // expired() only reads the control block; locking here could make this thread the slot's last owner.
        if (slot.expired() || latest->load() != generation) {
            return;  // the operator is gone, or a newer job was started: the work would be thrown away
        }
        Image output = work(input);
        Tasks::RunOnMainThread([slot, latest, generation, output = std::move(output)]() mutable {
            const std::shared_ptr<std::optional<Image>> owner = slot.lock();
            if (owner == nullptr || latest->load() != generation) {
                return;
            }
            *owner = std::move(output);
        });
    });
}

void BackgroundImageJob::Cancel() {
    ++*latest;
    result->reset();
}

bool BackgroundImageJob::HasResult() const {
    return result->has_value();
}

std::optional<Image> BackgroundImageJob::Take() {
    std::optional<Image> taken = std::move(*result);
    result->reset();
    return taken;
}

}  // namespace VantelStandard
