#include "develop/PhaseTimes.h"

#include <algorithm>

namespace kelvaro {

void PhaseTimes::add(const std::string& name, Duration time) {
    phases_.with([&](std::vector<Phase>& phases) {
        auto phase = std::find_if(phases.begin(), phases.end(),
                                  [&](const Phase& known) { return known.name == name; });
        if (phase == phases.end()) phase = phases.insert(phases.end(), Phase{name, {}, 0});
        phase->time += time;
        ++phase->count;
    });
}

PhaseTimes::Duration PhaseTimes::steadyClock() {
    return std::chrono::steady_clock::now().time_since_epoch();
}

} // namespace kelvaro
