#include "ui/editor/InspectorView.h"

#include "editor/ToolRows.h"
#include "recipe/AdjustmentCatalogue.h"
#include "recipe/RecipeTexts.h"
#include "ui/Texts.h"
#include "ui/controls/Labels.h"
#include "ui/controls/Naming.h"
#include "ui/controls/Switch.h"
#include "ui/library/Toolbar.h"
#include "ui/shell/CommandActions.h"

#include <QPainter>
#include <QScrollBar>

#include <algorithm>

namespace kelvaro {
namespace {

QString resetTip(AdjustmentSpec::Group group) {
    return words("Set everything in %1 to 0").arg(words(title(group)));
}

// Its bar lies in the margin of the rows, so that they keep their width whether it is there or not.
class MarginScroll final : public QScrollArea {
public:
    explicit MarginScroll(QWidget* parent)
        : QScrollArea(parent), bar_(new QScrollBar(Qt::Vertical, this)) {
        setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
        bar_->setFocusPolicy(Qt::NoFocus);
        QScrollBar* own = verticalScrollBar();
        QObject::connect(own, &QScrollBar::rangeChanged, this, [this](int low, int high) {
            bar_->setRange(low, high);
            bar_->setPageStep(viewport()->height());
            bar_->setVisible(high > low);
        });
        QObject::connect(own, &QScrollBar::valueChanged, bar_, &QScrollBar::setValue);
        QObject::connect(bar_, &QScrollBar::valueChanged, own, &QScrollBar::setValue);
        bar_->hide();
    }

protected:
    void resizeEvent(QResizeEvent* event) override {
        QScrollArea::resizeEvent(event);
        bar_->setPageStep(viewport()->height());
        bar_->setGeometry(width() - bar_->sizeHint().width(), 0, bar_->sizeHint().width(),
                          height());
        bar_->raise();
    }

private:
    QScrollBar* bar_;
};

} // namespace

QScrollArea* inspectorScroll(QWidget* content, const char* name, const QString& title,
                             QWidget* parent) {
    auto* scroll = new MarginScroll(parent);
    scroll->setWidgetResizable(true);
    scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    scroll->setFocusPolicy(Qt::NoFocus);
    scroll->setObjectName(name);
    scroll->setAccessibleName(title);
    scroll->setWidget(content);
    content->setAutoFillBackground(false);
    scroll->viewport()->setAutoFillBackground(false);
    return scroll;
}

InspectorView::InspectorView(const Appearance& appearance, CommandActions& commands,
                             QWidget* parent)
    : QWidget(parent), appearance_(appearance) {
    setObjectName("inspector");
    setFixedWidth(measure::inspectorWidth);
    QAction* clipping = commands.action(CommandId::toggleClipping);
    histogram_ = named(new HistogramView(appearance, this), "histogram", words("Histogram"),
                       clipping->toolTip());
    QObject::connect(histogram_, &QAbstractButton::clicked, clipping, &QAction::trigger);
    QObject::connect(clipping, &QAction::changed, this,
                     [this, clipping] { histogram_->setToolTip(clipping->toolTip()); });
    reason_ = wrappedLabel({}, "warning", measure::inspectorWidth - 32, this);
    reason_->setObjectName("readOnlyReason");
    reason_->hide();
    stack_ = new QStackedWidget(this);
    scroll_ = inspectorScroll(makePanels(), "panels", words("Adjustments"), stack_);
    crop_ = new CropControls(appearance, stack_);
    masks_ = new MaskControls(appearance, stack_);
    stack_->addWidget(scroll_);
    stack_->addWidget(crop_);
    stack_->addWidget(masks_);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(histogram_);
    auto* banner = new QHBoxLayout;
    banner->setContentsMargins(16, 0, 16, 8);
    banner->addWidget(reason_);
    column->addLayout(banner);
    column->addWidget(stack_, 1);
    column->addWidget(makeFoot(commands));
    show(inspectorPanels({}, {}), {});
}

QWidget* InspectorView::makePanels() {
    auto* content = new QWidget;
    auto* column = new QVBoxLayout(content);
    column->setContentsMargins(0, 0, 0, measure::unit);
    column->setSpacing(0);
    for (const AdjustmentSpec::Group group : AdjustmentSpec::allGroups) {
        const QString name = QString("panel.%1").arg(static_cast<int>(group));
        auto* panel =
            new PanelView(appearance_, name, words(title(group)), resetTip(group), content);
        panel->onReset = [this, group] {
            if (onResetPanel) onResetPanel(group);
        };
        panel->onFolded = [this](bool) {
            if (onFolded) onFolded();
        };
        panels_[group] = panel;
        for (const AdjustmentSpec& spec : sliderCatalogue(group)) {
            if (spec.format == AdjustmentSpec::Format::toggle) {
                panel->add(makeSwitchRow(spec));
                continue;
            }
            auto* row = new SliderRow(appearance_, panel);
            bind(row, spec);
            rows_[spec.id] = row;
            panel->add(row);
        }
        column->addWidget(panel);
    }
    pick_ =
        named(new IconButton(appearance_, IconName::eyedropper), "pickButton", words("Pick a grey"),
              words("Click something grey in the photo to balance its colours"));
    QObject::connect(pick_, &QToolButton::clicked, this, [this] {
        if (onPick) onPick();
    });
    panels_.at(AdjustmentSpec::Group::whiteBalance)->addTool(pick_);
    straighten_ = new SliderRow(appearance_, content);
    straighten_->show(straightenRow({}));
    bind(straighten_, *straighten_->row().spec);
    straighten_->setObjectName("row.straighten.panel");
    panels_.at(AdjustmentSpec::Group::crop)->add(straighten_);
    column->addStretch(1);
    return content;
}

void InspectorView::bind(SliderRow* row, const AdjustmentSpec& spec) {
    row->onBegin = [this, &spec] {
        if (onBegin) onBegin(spec);
    };
    row->onValue = [this, &spec](double value) {
        if (onValue) onValue(spec, value);
    };
    row->onEnd = [this] {
        if (onEnd) onEnd();
    };
    row->onReset = [this, &spec] {
        if (onBegin) onBegin(spec);
        if (onValue) onValue(spec, 0);
        if (onEnd) onEnd();
    };
    row->onKelvin = [this, row] {
        if (onKelvin) onKelvin(row);
    };
}

QWidget* InspectorView::makeSwitchRow(const AdjustmentSpec& spec) {
    auto* row = new QWidget;
    auto* toggle = named(new Switch(appearance_, row), "switch", words(spec.title),
                         words(texts::blackAndWhiteTip));
    toggle->setObjectName("row." + fromUtf8(spec.id));
    auto* line = new QHBoxLayout(row);
    line->setContentsMargins(16, 4, 16, 4);
    auto* name = label(words(spec.title), "body", row);
    name->setToolTip(words(texts::blackAndWhiteTip));
    line->addWidget(name, 1);
    line->addWidget(toggle);
    QObject::connect(toggle, &QAbstractButton::clicked, this, [this, &spec](bool on) {
        if (onBegin) onBegin(spec);
        if (onValue) onValue(spec, on ? 1 : 0);
        if (onEnd) onEnd();
    });
    switches_[spec.id] = toggle;
    return row;
}

QWidget* InspectorView::makeFoot(CommandActions& commands) {
    auto* foot = new QWidget(this);
    auto* line = new QHBoxLayout(foot);
    line->setContentsMargins(12, 8, 12, 8);
    line->setSpacing(4);
    const std::tuple<CommandId, const char*, const char*> buttons[] = {
        {CommandId::copyAdjustments, "copyButton", "Copy"},
        {CommandId::pasteAdjustments, "pasteButton", "Paste"},
        {CommandId::revertToOriginal, "revertButton", "Revert"}};
    for (const auto& [id, name, title] : buttons) {
        QAction* action = commands.action(id);
        auto* button =
            named(new QPushButton(words(title), foot), name, action->text(), action->toolTip());
        button->setProperty("kind", "quiet");
        const auto follow = [button, action] { button->setEnabled(action->isEnabled()); };
        follow();
        QObject::connect(action, &QAction::changed, button, follow);
        QObject::connect(button, &QPushButton::clicked, action, &QAction::trigger);
        line->addWidget(button, 1);
    }
    return foot;
}

SliderRow* InspectorView::row(std::string_view id) const {
    const auto found = rows_.find(id);
    return found == rows_.end() ? nullptr : found->second;
}

void InspectorView::show(const std::vector<InspectorPanel>& panels, const QString& reason) {
    const bool canChange = reason.isEmpty();
    reason_->setText(reason);
    reason_->setVisible(!canChange);
    pick_->setEnabled(canChange);
    for (const InspectorPanel& panel : panels) {
        PanelView* view = panels_.at(panel.group);
        view->setChanged(panel.isChanged);
        view->setNote(words(panel.note));
        view->resetButton()->setEnabled(canChange);
        for (const InspectorRow& row : panel.rows) {
            if (const auto toggle = switches_.find(row.spec->id); toggle != switches_.end()) {
                toggle->second->setChecked(row.value != 0);
                toggle->second->parentWidget()->setEnabled(canChange); // and its name
                continue;
            }
            rows_.at(row.spec->id)->show(row);
            rows_.at(row.spec->id)->setEnabled(canChange);
        }
    }
}

void InspectorView::showStraighten(const Adjustments& edit, bool canChange) {
    straighten_->show(straightenRow(edit));
    straighten_->setEnabled(canChange);
}

void InspectorView::setFolded(const std::vector<std::string>& titles) {
    for (const auto& [group, panel] : panels_)
        panel->setFolded(std::ranges::count(titles, title(group)) > 0);
}

std::vector<std::string> InspectorView::folded() const {
    std::vector<std::string> titles;
    for (const auto& [group, panel] : panels_)
        if (panel->isFolded()) titles.emplace_back(title(group));
    return titles;
}

void InspectorView::finish() {
    for (QAbstractSlider* slider : findChildren<QAbstractSlider*>())
        if (auto* row = dynamic_cast<SliderRow*>(slider)) row->finish();
}

void InspectorView::setMode(Mode mode) {
    mode_ = mode;
    finish();
    stack_->setCurrentIndex(static_cast<int>(mode));
}

void InspectorView::paintEvent(QPaintEvent*) {
    QPainter(this).fillRect(rect(), appearance_.theme().panel);
}

} // namespace kelvaro
