#include "ui/viewer/ViewerPage.h"

#include "library/LibraryTexts.h"
#include "ui/Texts.h"
#include "ui/controls/Labels.h"
#include "ui/controls/Naming.h"
#include "ui/library/Toolbar.h"
#include "ui/shell/CommandActions.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QPushButton>
#include <QVBoxLayout>

namespace kelvaro {

ViewerPage::ViewerPage(const Appearance& appearance, LibraryStore& lib, RenderEngine& engine,
                       PhotoSessionCache& sessions, ThumbnailLoader& thumbnails,
                       CommandActions& commands, QWidget* parent)
    : QWidget(parent),
      lib_(lib),
      thumbnails_(thumbnails),
      bar_(new QWidget(this)),
      canvas_(new PhotoCanvas(appearance, engine, sessions, this)) {
    setObjectName("viewer");
    setFocusPolicy(Qt::StrongFocus);
    setAccessibleName(words("Photo"));
    setAccessibleDescription(words("Left and right show the photos beside this one"));
    setToolTip({});
    makeBar(appearance, commands);
    auto* shown = new QHBoxLayout;
    shown->setSpacing(0);
    shown->addWidget(canvas_, 1);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(bar_);
    column->addLayout(shown, 1);
    subscriptions_.push_back(lib.openPhoto().observe([this] { showOpenPhoto(); }));
    subscriptions_.push_back(lib.version().observe([this] {
        const auto& open = lib_.openPhoto().get();
        const Adjustments* edit = open ? lib_.edit(*open) : nullptr;
        if (open) canvas_->setEdit(edit ? *edit : Adjustments{});
    }));
    subscriptions_.push_back(lib.editorTools().observe([this] { showTools(); }));
}

void ViewerPage::makeBar(const Appearance& appearance, CommandActions& commands) {
    auto* back = named(new QPushButton(words("‹ Library"), bar_), "backButton",
                       words("Back to Library"), words(texts::backToLibrary));
    back->setProperty("kind", "quiet");
    QObject::connect(back, &QPushButton::clicked, this, [this] { lib_.closeEditor(); });
    name_ = label({}, "body", bar_);
    place_ = label({}, "secondary", bar_);
    name_->setObjectName("photoName");
    place_->setObjectName("photoPlace");
    favorite_ = actionButton(appearance, IconName::favorite, commands.action(CommandId::favorite),
                             "favoriteButton", bar_);
    auto* row = new QHBoxLayout(bar_);
    row->setContentsMargins(measure::unit, measure::unit, measure::margin, measure::unit);
    row->setSpacing(measure::unit / 2);
    row->addWidget(back);
    row->addSpacing(measure::unit);
    row->addWidget(name_);
    row->addSpacing(measure::unit / 2);
    row->addWidget(place_);
    row->addStretch(1);
    row->addWidget(favorite_);
    row->addWidget(actionButton(appearance, IconName::info, commands.action(CommandId::photoInfo),
                                "infoButton", bar_));
    row->addWidget(actionButton(appearance, IconName::exportArrow,
                                commands.action(CommandId::exportPhotos), "viewerExportButton",
                                bar_));
}

void ViewerPage::setSidePanel(QWidget* panel) {
    static_cast<QBoxLayout*>(layout()->itemAt(1)->layout())->addWidget(panel);
}

void ViewerPage::showOpenPhoto() {
    const auto& open = lib_.openPhoto().get();
    if (!open) return canvas_->close();
    const Adjustments* edit = lib_.edit(*open);
    const Adjustments recipe = edit ? *edit : Adjustments{};
    // What the grid showed stands in until the first stage comes.
    QImage standIn;
    for (const int sizePx : {1024, 512, 256, 128}) {
        if (const Thumbnail small = thumbnails_.inMemory({*open, recipe, sizePx})) {
            standIn = imageOf(small);
            break;
        }
    }
    canvas_->show(*open, recipe, standIn);
    showTools();
    prepareNeighbours();
}

void ViewerPage::prepareNeighbours() {
    std::vector<RenderSession::Neighbour> neighbours;
    for (const int step : {1, -1}) {
        const auto photo = lib_.neighbour(step);
        if (!photo) continue;
        const Adjustments* edit = lib_.edit(*photo);
        neighbours.push_back({*photo, edit ? *edit : Adjustments{}, canvas_->fit()});
    }
    canvas_->prepare(std::move(neighbours));
}

void ViewerPage::showTools() {
    const EditorTools& tools = lib_.editorTools().state();
    const auto& open = lib_.openPhoto().get();
    if (!open) return;
    name_->setText(fromUtf8(texts::displayName(*open)));
    favorite_->setIconName(tools.isFavorite ? IconName::favoriteFilled : IconName::favorite);
    const auto& photos = lib_.view().get()->photos;
    const auto at =
        std::ranges::find_if(photos, [&](const Photo* each) { return each->url == *open; });
    place_->setText(at == photos.end() ? QString()
                                       : words("%1 of %2")
                                             .arg(number(at - photos.begin() + 1))
                                             .arg(number(static_cast<qint64>(photos.size()))));
}

void ViewerPage::keyPressEvent(QKeyEvent* event) {
    switch (event->key()) {
    case Qt::Key_Left:
        lib_.openNeighbour(-1);
        break;
    case Qt::Key_Right:
        lib_.openNeighbour(1);
        break;
    case Qt::Key_Escape:
        lib_.closeEditor();
        break;
    default:
        QWidget::keyPressEvent(event);
    }
}

} // namespace kelvaro
