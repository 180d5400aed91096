#include "ui/export/ExportStatus.h"

#include "export/ExportTexts.h"
#include "ui/Texts.h"
#include "ui/controls/Labels.h"
#include "ui/controls/Naming.h"

#include <QHBoxLayout>
#include <QPushButton>
#include <QVBoxLayout>

#include <cmath>

namespace kelvaro {
namespace {

constexpr double enoughSeconds = 2; // before anything is said about the time left
constexpr std::size_t namedFailures = 5;

} // namespace

QString timeLeft(std::size_t done, std::size_t total, double seconds) {
    if (done == 0 || seconds < enoughSeconds || done >= total) return {};
    const double left = seconds / double(done) * double(total - done);
    if (left < 5) return words("a few seconds left");
    if (left < 55) return words("about %1 seconds left").arg(number(std::lround(left / 5) * 5));
    return counted(std::lround(left / 60), "about 1 minute left", "about %1 minutes left");
}

ExportStatus::ExportStatus(const Appearance& appearance, Exporter& exporter, Desktop& desktop,
                           QWidget* window)
    : QObject(window),
      appearance_(appearance),
      exporter_(exporter),
      desktop_(desktop),
      window_(window),
      pill_(appearance, "exportPill", window, 24),
      subscription_(exporter.state().observe([this] { show(); })) {}

void ExportStatus::begin() {
    files_.clear();
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
    auto* sheet = new Overlay(appearance_, Overlay::Kind::sheet, window_);
    sheet->setObjectName("exportDone");
    sheet->setDeletesItself(true);
    auto* column = new QVBoxLayout(sheet->panel());
    column->setContentsMargins(24, 24, 24, 20);
    column->setSpacing(measure::unit);
    const DonePanelTexts said = donePanelTexts(state);
    auto* title = wrappedLabel(words(said.title), "heading", 360);
    title->setObjectName("doneTitle");
    column->addWidget(title);
    if (!said.failures.empty()) {
        column->addWidget(label(words(said.failures), "warning"));
        for (std::size_t at = 0; at < std::min(namedFailures, state.failures.size()); ++at) {
            const ExportFailure& failure = state.failures[at];
            column->addWidget(wrappedLabel(
                fromUtf8(failure.fileName) + ": " + words(failure.message), "secondary", 360));
        }
    }
    column->addSpacing(measure::unit);
    const QString showing = words(exportText::showFolder);
    auto* show = named(new QPushButton(showing), "showExported", showing, showing);
    auto* done =
        named(new QPushButton(words("Done")), "closeDone", words("Done"), words("Close (Esc)"));
    done->setProperty("kind", "primary");
    QObject::connect(show, &QPushButton::clicked, sheet,
                     [this, sheet, folder = *state.finishedFolder] {
                         files_.empty() ? desktop_.openFolder(folder) : desktop_.showFiles(files_);
                         sheet->dismiss();
                     });
    QObject::connect(done, &QPushButton::clicked, sheet, [sheet] { sheet->dismiss(); });
    auto* row = new QHBoxLayout;
    row->addStretch(1);
    row->addWidget(show);
    row->addWidget(done);
    column->addLayout(row);
    sheet->setFirstFocus(done);
    sheet->open();
}

} // namespace kelvaro
