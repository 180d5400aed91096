#include "render/RenderEngine.h"

namespace kelvaro {

RenderEngine::RenderEngine(Renderer& screen, Renderer& exports, const Clock& clock,
                           MainThread& mainThread, MemoryMonitor& memory,
                           std::unique_ptr<Perf> perf)
    : screen_(screen),
      exports_(exports),
      clock_(clock),
      mainThread_(mainThread),
      work_(clock, memory.physicalBytes()),
      perf_(std::move(perf)),
      pressure_(mainThread),
      pressureSource_(memory.subscribe([this](MemoryPressure event) {
          work_.setPressure(event != MemoryPressure::normal);
          pressure_.post(event);
      })) {}

} // namespace kelvaro
