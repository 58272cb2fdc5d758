#include <Vantel/Operators/Data.h>

#include <atomic>

#include <Vantel/Objects/ObjectType.h>

namespace Vantel {
namespace {

std::atomic<std::uint64_t> nextSerial{1};

}  // namespace

Data::Data() : serial(nextSerial.fetch_add(1, std::memory_order_relaxed)) {}

Data::~Data() = default;

const Image* Data::GetPreviewImage() const {
    return nullptr;
}

VANTEL_DEFINE_OBJECT_TYPE_NO_FACTORY(Data, Object, "Vantel.Data")

}  // namespace Vantel
