#include "Support/LogCapture.h"

#include <iostream>

namespace Vantel::Testing {

LogCapture::LogCapture() : previous(std::cout.rdbuf(buffer.rdbuf())) {}

LogCapture::~LogCapture() {
    std::cout.rdbuf(previous);
}

std::vector<std::string> LogCapture::Lines() const {
    std::vector<std::string> lines;
    std::istringstream stream(buffer.str());
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}

void LogCapture::Clear() {
    buffer.str({});
}

}  // namespace Vantel::Testing
