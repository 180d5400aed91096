// Memory as Linux tells of it: pressure-stall triggers of the whole machine and, where the program
// is confined to a control group, of that and its event counters.
#pragma once

#include "platform/MemoryPressure.h"

namespace kelvaro {

class LinuxMemoryMonitor final : public MemoryMonitor {
public:
    std::int64_t physicalBytes() const override;
    std::unique_ptr<Subscription> subscribe(std::function<void(MemoryPressure)> handler) override;
};

} // namespace kelvaro
