#pragma once
#include "foundation/Async.h"

namespace orvan {

// Wall-clock time and sleeps on the Qt event loop of the calling thread.
class QtClock final : public Clock {
public:
    TimePoint now() const override;
    Task<bool> sleep(Duration duration, Cancel cancel = {}) override;
};

} // namespace orvan
