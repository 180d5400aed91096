#include "ui/library/InfoPanel.h"

#include "library/LibraryTexts.h"
#include "ui/Texts.h"
#include "ui/controls/IconButton.h"
#include "ui/controls/Labels.h"
#include "ui/controls/Naming.h"

#include <QGridLayout>
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
    scroll_ = new QScrollArea(this);
    scroll_->setWidgetResizable(true);
    scroll_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    named(scroll_, "infoRows", words("Photo Info"), words("Everything the photo's file tells"));
    scroll_->setToolTip({});
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(16, 8, 0, 0);
    column->setSpacing(measure::unit / 2);
    heading->setContentsMargins(0, 0, 12, 0);
    column->addLayout(heading);
    column->addWidget(name_);
    column->addWidget(state_);
    column->addWidget(scroll_, 1);
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
    auto* content = new QWidget;
    auto* grid = new QGridLayout(content);
    grid->setContentsMargins(0, 0, 12, 16);
    grid->setHorizontalSpacing(measure::unit);
    grid->setVerticalSpacing(measure::unit / 2);
    grid->setColumnStretch(1, 1);
    std::string_view section;
    int line = 0;
    for (const InfoRow& row : rows) {
        if (row.section != section) {
            section = row.section;
            auto* title = label(words(section), "caption");
            title->setContentsMargins(0, line == 0 ? 8 : 16, 0, 2);
            grid->addWidget(title, line++, 0, 1, 2);
        }
        auto* key = wrappedLabel(words(row.label), "secondary", labelPx);
        auto* value = label(fromUtf8(row.text));
        value->setWordWrap(true);
        value->setTextInteractionFlags(Qt::TextSelectableByMouse);
        value->setAccessibleName(words(row.label) + ": " + fromUtf8(row.text));
        grid->addWidget(key, line, 0, Qt::AlignTop);
        grid->addWidget(value, line++, 1, Qt::AlignTop);
    }
    grid->setRowStretch(line, 1);
    scroll_->setWidget(content);
    content->setAutoFillBackground(false);
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
