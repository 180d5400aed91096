// What programs that export photos need beside Services. Made and ended on the main thread.
#pragma once

#include "app/Services.h"
#include "base/Clock.h"
#include "export/Exporter.h"
#include "render/RenderEngine.h"

namespace kelvaro {

// For programs without a window, which have no other renders to share a gate with.
class ExportServices {
public:
    // All must outlive the object.
    ExportServices(Services& services, const Clock& clock, MainThread& mainThread);

    Exporter& exporter() { return exporter_; }

private:
    std::unique_ptr<MemoryMonitor> memory_;
    RenderEngine engine_;
    Exporter exporter_; // last: it uses the rest
};

// The parts of an exporter that renders as `engine` lays down. `analyses` may be null.
ExportParts exportParts(Services& services, RenderEngine& engine, AnalysisCache* analyses);

} // namespace kelvaro
