#include "render/RenderEngine.h"

#include "platform/FreeMemory.h"

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
          // After all who heard it have let go of theirs.
          if (event != MemoryPressure::normal) mainThread_.post(returnFreeMemory);
      })) {}

} // namespace kelvaro
