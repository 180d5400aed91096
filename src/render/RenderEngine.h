// What all renders share: the renderers for the screen and for export, the gate in front of them,
// work in flight by key, the timing log, and the notification that memory is short. One for the
// program, made at start-up. Made and ended on the main thread, used from any.
#pragma once

#include "platform/MemoryPressure.h"
#include "platform/Renderer.h"
#include "render/KeyedWork.h"
#include "render/Perf.h"
#include "render/PressureNotification.h"
#include "render/RenderWork.h"

#include <memory>

namespace kelvaro {

class RenderEngine {
public:
    // What a render that returns no image is called.
    static constexpr const char* renderFailedText = "GPU rendering failed.";

    // All references must outlive the engine. Subscribes to `memory` for its life.
    RenderEngine(Renderer& screen, Renderer& exports, const Clock& clock, MainThread& mainThread,
                 MemoryMonitor& memory, std::unique_ptr<Perf> perf);
    RenderEngine(const RenderEngine&) = delete;
    RenderEngine& operator=(const RenderEngine&) = delete;

    Renderer& renderer() { return screen_; }
    Renderer& exportRenderer() { return exports_; }
    const Clock& clock() const { return clock_; }
    MainThread& mainThread() { return mainThread_; }
    RenderWork& work() { return work_; }
    KeyedWork& keyed() { return keyed_; }
    Perf& perf() { return *perf_; }
    PressureNotification& pressure() { return pressure_; }

    // The editor is open as long as a photo lies on any canvas. On the main thread.
    void canvasOpened() { work_.setEditing(++canvases_ > 0); }
    void canvasClosed() { work_.setEditing(--canvases_ > 0); }

private:
    Renderer& screen_;
    Renderer& exports_;
    const Clock& clock_;
    MainThread& mainThread_;
    RenderWork work_;
    KeyedWork keyed_;
    std::unique_ptr<Perf> perf_;
    PressureNotification pressure_;
    int canvases_ = 0;                                            // with a photo on them
    std::unique_ptr<MemoryMonitor::Subscription> pressureSource_; // last: it calls into the rest
};

} // namespace kelvaro
