#include <Vantel/Objects/Path.h>

#include <cstdint>
#include <random>

namespace Vantel {
namespace {

std::mt19937_64& ThreadEngine() {
    thread_local std::mt19937_64 engine = [] {
        std::random_device device;
        const std::uint64_t high = device();
        const std::uint64_t low = device();
        return std::mt19937_64((high << 32) + low);
    }();
    return engine;
}

void AppendBase36Digits(std::string& text, std::uint64_t number, std::size_t count) {
    static constexpr std::string_view kAlphabet = "0123456789abcdefghijklmnopqrstuvwxyz";
    for (std::size_t i = 0; i < count; ++i) {  // least significant digit first
        text += kAlphabet[number % 36];
        number /= 36;
    }
}

}  // namespace

std::string GenerateKey(std::string_view base, const std::function<bool(std::string_view)>& isFree) {
    std::string prefix(base);
    for (char& c : prefix) {
        if (c == '/') {
            c = ' ';
        }
    }
    if (!prefix.empty()) {
        prefix += ' ';
    }
    for (std::size_t attempt = 0;; ++attempt) {
        std::string candidate = prefix + "[";
        AppendBase36Digits(candidate, ThreadEngine()(), 3 + attempt / 10);
        candidate += ']';
        if (isFree(candidate)) {
            return candidate;
        }
    }
}

}  // namespace Vantel
