#include <Vantel/Operators/Data.h>

#include <atomic>

#include <Vantel/Objects/ObjectType.h>

namespace Vantel {
namespace {

std::atomic<std::uint64_t> nextSerial{1};

}  // namespace

Data::Data() : serial(nextSerial.fetch_add(1, std::memory_order_relaxed)) {}

Data::~Data() = default;

const ObjectType* Data::Type() {
    static const ObjectType type("Vantel.Data", Object::Type(), nullptr);
    return &type;
}

const ObjectType* Data::GetType() const {
    return Type();
}

}  // namespace Vantel
