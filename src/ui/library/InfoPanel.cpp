#include "ui/library/InfoPanel.h"

#include "library/LibraryTexts.h"
#include "ui/Texts.h"
#include "ui/controls/IconButton.h"
#include "ui/controls/Labels.h"
#include "ui/controls/Naming.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QPainter>

namespace kelvaro {
namespace {

constexpr int labelPx = 116;

} // namespace

InfoPanel::InfoPanel(const Appearance& appearance, LibraryStore& lib, Rows rows, QWidget* parent)
    : QWidget(parent), appearance_(appearance), lib_(lib), rows_(std::move(rows)) {
    setObjectName("infoPanel");
    setFixedWidth(measure::inspectorWidth);
    auto* heading = new QHBoxLayout;
    heading->addWidget(label(words("Photo Info"), "heading"), 1);
    auto* close = named(new IconButton(appearance, IconName::close, this), "closeInfo",
                        words("Close"), words("Close Photo Info (Esc)"));
    QObject::connect(close, &QToolButton::clicked, this,
                     [this] { lib_.requestInfo(std::nullopt); });
    heading->addWidget(close);
    name_ = wrappedLabel({}, "body", measure::inspectorWidth - 32);
    state_ = wrappedLabel({}, "secondary", measure::inspectorWidth - 32);
    name_->setObjectName("infoName");
    state_->setObjectName("infoState");
    name_->setTextInteractionFlags(Qt::TextSelectableByMouse);
    // One text for all rows: a widget for each would take longer to make than a glance.
    text_ = named(new QTextEdit(this), "infoRows", words("Photo Info"),
                  words("Everything the photo's file tells"));
    text_->setToolTip({});
    text_->setReadOnly(true);
    text_->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    text_->setTabChangesFocus(true);
    text_->setFrameShape(QFrame::NoFrame);
    text_->setWordWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    text_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    text_->document()->setDocumentMargin(0);
    text_->viewport()->setAutoFillBackground(false);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(16, 8, 0, 0);
    column->setSpacing(measure::unit / 2);
    heading->setContentsMargins(0, 0, 12, 0);
    column->addLayout(heading);
    column->addWidget(name_);
    column->addWidget(state_);
    column->addWidget(text_, 1);
    const auto show = [this] { refresh(); };
    subscriptions_.push_back(lib.infoRequest().observe(show));
    subscriptions_.push_back(lib.info().observe(show));
    refresh();
}

void InfoPanel::refresh() {
    const auto& request = lib_.infoRequest().get();
    setVisible(request.has_value());
    if (!request) return;
    const QString name = fromUtf8(texts::displayName(request->url));
    const auto& info = lib_.info().get();
    // A name without blanks breaks anywhere rather than widening the panel.
    QString breakable = name;
    name_->setText(breakable.replace("_", QString("_") + QChar(0x200b)));
    const auto rows = info ? rows_(*info) : std::vector<InfoRow>{};
    state_->setVisible(rows.empty());
    if (!info) {
        name_->setText(name + words(texts::readingInfo));
        state_->hide();
    } else if (rows.empty()) {
        state_->setText(words(texts::noInformation));
    }
    if (info) showRows(rows);
}

void InfoPanel::showRows(const std::vector<InfoRow>& rows) {
    const QString secondary = appearance_.theme().secondary.name();
    const QString heading = "<tr><td colspan='2' style='padding-top: %1px; padding-bottom: 4px; "
                            "font-size: 11px; color: %2'>%3</td></tr>";
    const QString room = "padding-top: 2px; padding-bottom: 2px; padding-right: ";
    const QString row = "<tr><td width='%1' style='" + room + "8px; color: %2'>%3</td><td style='" +
                        room + "12px'>%4</td></tr>";
    QString html = "<table cellspacing='0' width='100%'>";
    std::string_view section;
    for (const InfoRow& shown : rows) {
        if (shown.section != section) {
            html += heading.arg(section.empty() ? 8 : 20)
                        .arg(secondary, words(shown.section).toHtmlEscaped());
            section = shown.section;
        }
        html += row.arg(labelPx).arg(secondary, words(shown.label).toHtmlEscaped(),
                                     fromUtf8(shown.text).toHtmlEscaped());
    }
    text_->setHtml(html + "</table>");
}

// The colours are part of the text.
void InfoPanel::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange && text_) refresh();
}

void InfoPanel::paintEvent(QPaintEvent*) {
    QPainter(this).fillRect(rect(), appearance_.theme().panel);
}

void InfoPanel::keyPressEvent(QKeyEvent* event) {
    const bool leaves = event->key() == Qt::Key_Escape || event->key() == Qt::Key_Return;
    if (leaves) {
        lib_.requestInfo(std::nullopt);
    } else {
        QWidget::keyPressEvent(event);
    }
}

} // namespace kelvaro
