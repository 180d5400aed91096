#include "app/ExportServices.h"

#include "platform/system/LinuxMemoryMonitor.h"

namespace kelvaro {

ExportParts exportParts(Services& services, RenderEngine& engine, AnalysisCache* analyses) {
    return {*services.files,   *services.random,     *services.reader,   *services.writer,
            *services.raw,     *services.properties, *services.metadata, engine.exportRenderer(),
            *services.brushes, engine.work(),        engine.clock(),     analyses};
}

ExportServices::ExportServices(Services& services, const Clock& clock, MainThread& mainThread)
    : memory_(std::make_unique<LinuxMemoryMonitor>()),
      engine_(*services.renderer, *services.renderer, clock, mainThread, *memory_,
              std::make_unique<Perf>()),
      exporter_(exportParts(services, engine_, nullptr), mainThread) {}

} // namespace kelvaro
