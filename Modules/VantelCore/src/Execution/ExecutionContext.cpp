#include <Vantel/Execution/ExecutionContext.h>

namespace Vantel {

class ExecutionContext::Implementation {
public:
    double time = 0.0;
    double deltaTime = 0.0;
    unsigned long long frameNumber = 0;
    unsigned long long operatorsRun = 0;
};

ExecutionContext::ExecutionContext(double time, double deltaTime, unsigned long long frameNumber)
    : implementation(std::make_unique<Implementation>()) {
    Update(time, deltaTime, frameNumber);
}

void ExecutionContext::Update(double time, double deltaTime, unsigned long long frameNumber) {
    implementation->time = time;
    implementation->deltaTime = deltaTime;
    implementation->frameNumber = frameNumber;
}

void ExecutionContext::CountOperatorRun() {
    ++implementation->operatorsRun;
}

ExecutionContext::~ExecutionContext() = default;

double ExecutionContext::GetTime() const {
    return implementation->time;
}

double ExecutionContext::GetDeltaTime() const {
    return implementation->deltaTime;
}

unsigned long long ExecutionContext::GetFrameNumber() const {
    return implementation->frameNumber;
}

unsigned long long ExecutionContext::GetOperatorsRun() const {
    return implementation->operatorsRun;
}

}  // namespace Vantel
