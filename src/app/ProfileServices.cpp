#include "app/ProfileServices.h"

namespace kelvaro {

ProfileServices::ProfileServices(const Parts& parts)
    : exporter_(parts.exporter),
      usage_(parts.settings, sender_, parts.version, parts.desktop.systemName()),
      exports_(parts.settings),
      model_({parts.library, exports_, parts.settings, parts.clock, parts.calendar, parts.texts,
              parts.main}),
      noted_(parts.exporter.state().get().exported) {
    usage_.countLaunch();
    usage_.sendPending();
    runs_ = exporter_.state().observe([this] { noteExports(); });
}

// Photo by photo, so that a run that breaks off counts for what it wrote.
void ProfileServices::noteExports() {
    const std::size_t exported = exporter_.state().get().exported;
    if (exported < noted_) noted_ = 0; // another run
    const auto more = static_cast<std::int64_t>(exported - noted_);
    noted_ = exported;
    if (more == 0) return;
    exports_.add(dayNumber(model_.now()), more);
    usage_.countExport(more);
}

} // namespace kelvaro
