#include "ui/export/ExportStatus.h"

#include "ui/Texts.h"

#include <cmath>

namespace kelvaro {
namespace {

constexpr double enoughSeconds = 2; // before anything is said about the time left

} // namespace

QString timeLeft(std::size_t done, std::size_t total, double seconds) {
    if (done == 0 || seconds < enoughSeconds || done >= total) return {};
    const double left = seconds / double(done) * double(total - done);
    if (left < 5) return words("a few seconds left");
    if (left < 55) return words("about %1 seconds left").arg(number(std::lround(left / 5) * 5));
    return counted(std::lround(left / 60), "about 1 minute left", "about %1 minutes left");
}

ExportStatus::ExportStatus(const Appearance& appearance, Exporter& exporter, Desktop& desktop,
                           QWidget* window, Pill::Place place)
    : QObject(window),
      appearance_(appearance),
      exporter_(exporter),
      desktop_(desktop),
      window_(window),
      pill_(appearance, "exportPill", window, statusHeightPx, std::move(place)),
      subscription_(exporter.state().observe([this] { show(); })) {}

void ExportStatus::begin() {
    files_.clear();
    if (done_) done_->deleteLater();
    running_.start();
}

void ExportStatus::show() {
    const Exporter::State& state = exporter_.state().get();
    if (state.running) {
        const double seconds = double(running_.elapsed()) / 1000;
        QString text = words("Exporting %1 of %2")
                           .arg(number(static_cast<qint64>(std::min(state.done + 1, state.total))))
                           .arg(number(static_cast<qint64>(state.total)));
        const QString left = timeLeft(state.done, state.total, seconds);
        if (!left.isEmpty()) text += " · " + left;
        pill_.showProgress(text, state.total ? double(state.done) / double(state.total) : 0,
                           [this] { exporter_.stop(); });
    } else {
        pill_.leave();
        if (wasRunning_ && state.finishedFolder) showDone(state);
    }
    wasRunning_ = state.running;
}

void ExportStatus::showDone(const Exporter::State& state) {
    done_ = new DonePanel(appearance_, state, files_, desktop_, window_);
}

} // namespace kelvaro
