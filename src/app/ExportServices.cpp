#include "app/ExportServices.h"

#include "platform/system/LinuxMemoryMonitor.h"

namespace kelvaro {

ExportParts exportParts(Services& services, Renderer& renderer, RenderWork& work,
                        const Clock& clock) {
    return {*services.files,
            *services.random,
            *services.reader,
            *services.writer,
            *services.raw,
            *services.properties,
            *services.metadata,
            renderer,
            *services.brushes,
            work,
            clock};
}

ExportServices::ExportServices(Services& services, const Clock& clock, MainThread& mainThread)
    : memory_(std::make_unique<LinuxMemoryMonitor>()),
      engine_(*services.renderer, *services.renderer, clock, mainThread, *memory_,
              std::make_unique<Perf>()),
      exporter_(exportParts(services, engine_.exportRenderer(), engine_.work(), clock),
                mainThread) {}

} // namespace kelvaro
