#include "ui/export/DonePanel.h"

#include "export/ExportTexts.h"
#include "ui/Texts.h"
#include "ui/controls/Labels.h"
#include "ui/controls/Naming.h"
#include "ui/controls/Overlay.h"

#include <QAccessible>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QPainter>
#include <QPushButton>
#include <QVBoxLayout>

namespace kelvaro {
namespace {

constexpr std::size_t namedFailures = 5;
constexpr int textPx = 320;

} // namespace

DonePanel::DonePanel(const Appearance& appearance, const Exporter::State& state,
                     std::vector<std::filesystem::path> files, Desktop& desktop, QWidget* window)
    : QWidget(window), appearance_(appearance), window_(window) {
    setObjectName("exportDone");
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(panelShadowPx + 20, panelShadowPx + 16, panelShadowPx + 16,
                               panelShadowPx + 16);
    column->setSpacing(measure::unit);
    addTexts(state);
    addButtons(state, std::move(files), desktop);
    window_->installEventFilter(this);
    place();
    show();
    raise();
    QAccessibleEvent told(this, QAccessible::Alert);
    QAccessible::updateAccessibility(&told);
}

void DonePanel::addTexts(const Exporter::State& state) {
    const DonePanelTexts said = donePanelTexts(state);
    setAccessibleName(words(said.title));
    auto* title = wrappedLabel(words(said.title), "heading", textPx);
    title->setObjectName("doneTitle");
    layout()->addWidget(title);
    if (said.failures.empty()) return;
    layout()->addWidget(label(words(said.failures), "warning"));
    for (std::size_t at = 0; at < std::min(namedFailures, state.failures.size()); ++at) {
        const ExportFailure& failure = state.failures[at];
        layout()->addWidget(wrappedLabel(fromUtf8(failure.fileName) + ": " + words(failure.message),
                                         "secondary", textPx));
    }
}

void DonePanel::addButtons(const Exporter::State& state, std::vector<std::filesystem::path> files,
                           Desktop& desktop) {
    const QString showing = words(exportText::showFolder);
    auto* show = named(new QPushButton(showing), "showExported", showing,
                       words("Open the folder with the exported files selected"));
    auto* done = named(new QPushButton(words("Done")), "closeDone", words("Done"),
                       words("Close this message"));
    done->setProperty("kind", "primary");
    QObject::connect(show, &QPushButton::clicked, this,
                     [this, &desktop, folder = *state.finishedFolder, files = std::move(files)] {
                         files.empty() ? desktop.openFolder(folder) : desktop.showFiles(files);
                         deleteLater();
                         hide();
                     });
    QObject::connect(done, &QPushButton::clicked, this, [this] {
        deleteLater();
        hide();
    });
    auto* row = new QHBoxLayout;
    row->addStretch(1);
    row->addWidget(show);
    row->addWidget(done);
    static_cast<QVBoxLayout*>(layout())->addLayout(row);
}

void DonePanel::place() {
    const QSize size = sizeHint().boundedTo(window_->size());
    setGeometry(
        QRect(QPoint(window_->width() - size.width(), window_->height() - size.height()), size));
}

void DonePanel::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    paintPanel(
        painter,
        QRectF(rect()).adjusted(panelShadowPx, panelShadowPx, -panelShadowPx, -panelShadowPx),
        appearance_.theme());
}

void DonePanel::keyPressEvent(QKeyEvent* event) {
    if (event->key() != Qt::Key_Escape) return QWidget::keyPressEvent(event);
    deleteLater();
    hide();
}

bool DonePanel::eventFilter(QObject* watched, QEvent* event) {
    if (watched == window_ && event->type() == QEvent::Resize) place();
    return QWidget::eventFilter(watched, event);
}

} // namespace kelvaro
