#include "render/RenderSession.h"

#include "base/Require.h"
#include "render/SessionWork.h"

#include <utility>

namespace kelvaro {

RenderSession::RenderSession(RenderEngine& engine, PhotoSessionCache& sessions)
    : work_(std::make_unique<Work>(engine, sessions)) {}

RenderSession::~RenderSession() = default;

void RenderSession::open(const std::filesystem::path& photo, OpenedCallback opened) {
    work_->open(photo, std::move(opened));
}

void RenderSession::close() {
    work_->close();
}

void RenderSession::render(ViewRequest request, ViewCallback callback) {
    KELVARO_REQUIRE(callback);
    work_->render(std::move(request), std::move(callback));
}

void RenderSession::sample(Point at, int radiusPx, SampleCallback callback) {
    work_->sample(at, radiusPx, std::move(callback));
}

void RenderSession::setHistogramCallback(HistogramCallback callback) {
    work_->setHistogramCallback(std::move(callback));
}

void RenderSession::displayed(std::uint64_t frame) {
    RenderEngine& engine = work_->engine();
    engine.perf().displayed(frame, engine.clock().monotonicSeconds());
}

void RenderSession::prepare(std::vector<Neighbour> neighbours) {
    work_->prepare(std::move(neighbours));
}

void RenderSession::waitUntilIdle() {
    work_->waitUntilIdle();
}

} // namespace kelvaro
