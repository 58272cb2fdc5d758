#include <Vantel/Operators/Data.h>

#include <atomic>

#include <Vantel/Objects/ObjectType.h>

#include "Platform/Threads.h"

namespace Vantel {
namespace {

std::atomic<std::uint64_t> nextSerial{1};

// Each thread takes its serials from the shared counter a batch at a time, so that a frame that publishes
// thousands of values touches the shared counter rarely. Serials stay unique and rise on each thread.
constexpr std::uint64_t kSerialBatch = 1024;

struct SerialBatch {
    std::uint64_t next = 0;
    std::uint64_t end = 0;
};

std::uint64_t TakeSerial() {
    VANTEL_HOT_THREAD_LOCAL thread_local SerialBatch batch;
    if (batch.next == batch.end) {
        batch.next = nextSerial.fetch_add(kSerialBatch, std::memory_order_relaxed);
        batch.end = batch.next + kSerialBatch;
    }
    return batch.next++;
}

}  // namespace

Data::Data() : serial(TakeSerial()) {}

Data::~Data() = default;

const Image* Data::GetPreviewImage() const {
    return nullptr;
}

VANTEL_DEFINE_OBJECT_TYPE_NO_FACTORY(Data, Object, "Vantel.Data")

}  // namespace Vantel
