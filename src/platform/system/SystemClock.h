// The machine's clocks.
#pragma once

#include "base/Clock.h"

namespace kelvaro {

class SystemClock final : public Clock {
public:
    double monotonicSeconds() const override;
    double wallSeconds() const override;
};

} // namespace kelvaro
