#include "Output.h"

#include <iostream>
#include <memory>

namespace VantelHost {
namespace {

std::unique_ptr<std::ostream>& HostOutput() {
    static std::unique_ptr<std::ostream> output;
    return output;
}

}  // namespace

void Fail(int code, const std::string& message) {
    throw HostError(code, message);
}

void SeparateLibraryLog() {
    // The library and the host share the standard streams, so pointing std::cout at stderr's buffer moves the
    // library's lines; the host writes its results through a stream of its own on the old buffer.
    HostOutput() = std::make_unique<std::ostream>(std::cout.rdbuf());
    std::cout.rdbuf(std::cerr.rdbuf());
}

std::ostream& Out() {
    return HostOutput() != nullptr ? *HostOutput() : std::cout;
}

}  // namespace VantelHost
