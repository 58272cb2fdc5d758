// Clock.h: what a host tells the runner about time before the first frame has been measured.
//
//   class DisplayClock : public Clock {
//       void Reset() override {}
//       double GetFirstFrameDuration() const override { return 1.0 / 60.0; }
//   };
#pragma once

#include <Vantel/Export.h>

namespace Vantel {

// Clock
//
// Supplied by the host and owned by its Runner. The runner measures every frame after the first itself; only
// the first frame's duration comes from here.
class VANTEL_API Clock {
public:
    Clock() = default;
    Clock(const Clock&) = default;
    Clock& operator=(const Clock&) = default;
    virtual ~Clock();

    // For the host's own use (restarting its time base); the library never calls it.
    virtual void Reset() = 0;
    // Seconds: the duration of the first frame.
    virtual double GetFirstFrameDuration() const = 0;
};

}  // namespace Vantel
