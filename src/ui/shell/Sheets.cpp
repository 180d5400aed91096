#include "ui/shell/Sheets.h"

#include "ui/Texts.h"
#include "ui/controls/Labels.h"
#include "ui/controls/Naming.h"
#include "ui/shell/ProgramIcon.h"

#include <QApplication>
#include <QHBoxLayout>
#include <QPainter>
#include <QPushButton>
#include <QStackedWidget>
#include <QVBoxLayout>

#include <array>

namespace kelvaro {
namespace {

constexpr int emblemPx = 88, iconPx = 32;

struct Page {
    IconName icon;
    const char* title;
    const char* text;
};
constexpr std::array pages{
    Page{IconName::photos, "Your photos stay where they are",
         "Add folders from any drive. Kelvaro shows their photos by day and never changes an "
         "original: edits are kept beside the photos."},
    Page{IconName::search, "Find anything while you type",
         "Search for a camera, a lens, 35mm, f/1.8, iso 400, a month or a weekday. Mark favorites "
         "with the . key. Return opens a photo, Esc brings you back."},
    Page{IconName::exportArrow, "Develop, then share",
         "Edits are only numbers until you export. Choose photos and press ⇧⌘E for finished files "
         "in the size, colours and format you need."},
};

// Where one is among the pages, as dots.
class Dots final : public QWidget {
public:
    Dots(const Appearance& appearance, int count) : appearance_(appearance), count_(count) {
        setFixedSize(count * pitch, 8);
    }
    void show(int at) {
        at_ = at;
        setAccessibleName(words("%1 of %2").arg(at + 1).arg(count_));
        update();
    }

protected:
    void paintEvent(QPaintEvent*) override {
        const Theme& theme = appearance_.theme();
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        for (int dot = 0; dot < count_; ++dot) {
            painter.setBrush(dot == at_ ? theme.text : theme.disabled);
            painter.drawEllipse(QRectF(dot * pitch + (pitch - 6) / 2.0, 1, 6, 6));
        }
    }

private:
    static constexpr int pitch = 14;
    const Appearance& appearance_;
    int count_, at_ = 0;
};

// A large icon on a quiet round ground.
class Emblem final : public QWidget {
public:
    Emblem(const Appearance& appearance, IconName name) : appearance_(appearance), name_(name) {
        setFixedSize(emblemPx, emblemPx);
    }

protected:
    void paintEvent(QPaintEvent*) override {
        const Theme& theme = appearance_.theme();
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        painter.setBrush(theme.control);
        painter.drawEllipse(rect().adjusted(8, 8, -8, -8));
        constexpr int at = (emblemPx - iconPx) / 2;
        painter.drawPixmap(at, at, iconPixmap(name_, iconPx, theme.text, devicePixelRatioF()));
    }

private:
    const Appearance& appearance_;
    IconName name_;
};

QWidget* introductionPage(QWidget* emblem, const Page& page) {
    auto* widget = new QWidget;
    auto* column = new QVBoxLayout(widget);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(measure::margin);
    column->addWidget(emblem, 0, Qt::AlignHCenter);
    auto* title = wrappedLabel(words(page.title), "greeting", 432);
    auto* text = wrappedLabel(words(page.text), "secondary", 432);
    title->setAlignment(Qt::AlignHCenter);
    text->setAlignment(Qt::AlignHCenter);
    column->addWidget(title);
    column->addWidget(text);
    column->addStretch(1);
    return widget;
}

QLabel* programEmblem() {
    auto* icon = new QLabel;
    icon->setPixmap(programIcon().pixmap(QSize(emblemPx, emblemPx), qApp->devicePixelRatio()));
    return icon;
}

QPushButton* button(const char* objectName, const QString& title, const char* kind) {
    auto* made = named(new QPushButton(title), objectName, title, title);
    made->setProperty("kind", kind);
    return made;
}

} // namespace

void showAbout(const Appearance& appearance, QWidget* window, const QString& version) {
    auto* sheet = new Overlay(appearance, Overlay::Kind::sheet, window);
    sheet->setObjectName("aboutSheet");
    sheet->setDeletesItself(true);
    auto* column = new QVBoxLayout(sheet->panel());
    column->setContentsMargins(48, 32, 48, 24);
    column->setSpacing(measure::unit);
    column->addWidget(programEmblem(), 0, Qt::AlignHCenter);
    column->addWidget(label("Kelvaro", "greeting"), 0, Qt::AlignHCenter);
    column->addWidget(label(words("Version %1").arg(version), "secondary"), 0, Qt::AlignHCenter);
    column->addSpacing(measure::unit);
    auto* text =
        wrappedLabel(words("A photo library and non-destructive RAW developer"), "secondary", 224);
    text->setAlignment(Qt::AlignHCenter);
    column->addWidget(text, 0, Qt::AlignHCenter);
    column->addSpacing(measure::margin);
    auto* close = button("closeAbout", words("Close"), "primary");
    QObject::connect(close, &QPushButton::clicked, sheet, [sheet] { sheet->dismiss(); });
    column->addWidget(close, 0, Qt::AlignHCenter);
    sheet->open();
}

void showIntroduction(const Appearance& appearance, QWidget* window,
                      std::function<void()> addFolder, std::function<void()> closed) {
    auto* sheet = new Overlay(appearance, Overlay::Kind::sheet, window);
    sheet->setObjectName("introduction");
    sheet->setDeletesItself(true);
    sheet->setClosesOnClickOutside(false);
    auto* stack = new QStackedWidget;
    for (const Page& page : pages) {
        QWidget* emblem = &page == pages.data() ? static_cast<QWidget*>(programEmblem())
                                                : new Emblem(appearance, page.icon);
        stack->addWidget(introductionPage(emblem, page));
    }
    auto* skip = button("skipIntroduction", words("Skip"), "quiet");
    auto* next = button("nextIntroduction", words("Continue"), "primary");
    auto* place = new Dots(appearance, int(pages.size()));
    const auto show = [stack, place, next](int at) {
        stack->setCurrentIndex(at);
        place->show(at);
        const QString title =
            at + 1 == int(pages.size()) ? words("Add a folder of photos") : words("Continue");
        next->setText(title);
        next->setAccessibleName(title);
        next->setToolTip(title);
    };
    show(0);
    QObject::connect(skip, &QPushButton::clicked, sheet, [sheet] { sheet->dismiss(); });
    QObject::connect(next, &QPushButton::clicked, sheet, [sheet, stack, show, addFolder] {
        if (stack->currentIndex() + 1 < stack->count()) return show(stack->currentIndex() + 1);
        sheet->dismiss();
        addFolder();
    });
    auto* row = new QHBoxLayout;
    row->addWidget(skip);
    row->addStretch(1);
    row->addWidget(place);
    row->addStretch(1);
    row->addWidget(next);
    auto* column = new QVBoxLayout(sheet->panel());
    column->setContentsMargins(40, 40, 40, 24);
    column->setSpacing(24);
    column->addWidget(stack);
    column->addLayout(row);
    sheet->setFirstFocus(next);
    sheet->onClosed = std::move(closed);
    sheet->open();
}

} // namespace kelvaro
