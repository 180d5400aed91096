// Layout and commands of the editor; see also EditorPageOpening.cpp and EditorPageTools.cpp.
#include "ui/editor/EditorPage.h"

#include "app/CommandTable.h"
#include "library/LibraryTexts.h"
#include "recipe/RecipeActions.h"
#include "ui/Texts.h"

#include <QApplication>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLineEdit>
#include <QVBoxLayout>

#include <algorithm>

namespace kelvaro {
EditorPage::EditorPage(const Appearance& appearance, const EditorParts& parts, QWidget* parent)
    : QWidget(parent),
      appearance_(appearance),
      parts_(parts),
      model_(parts.editing.saver(),
             {[this] { refresh(); }, [this](const std::string& text) { notice(text); },
              [this] { showOpenPhoto(); }}),
      bar_(new EditorBar(appearance, parts.commands, this)),
      canvas_(new EditorCanvas(appearance, parts.engine, parts.sessions, this)),
      inspector_(new InspectorView(appearance, parts.commands, this)),
      photoBar_(new PhotoBar(appearance, parts.library, parts.thumbnails, this)),
      kelvin_(new KelvinPopover(appearance, parent->window(), inspector_->row("temperature"))),
      presets_(new PresetPopover(appearance, parent->window(), bar_->presetsButton())),
      veils_{new DimLayer(appearance, inspector_), new DimLayer(appearance, photoBar_)},
      menu_(makeMenu()),
      pick_(*canvas_),
      mask_(model_) {
    setObjectName("editor");
    makeLayout();
    bindCommands();
    bindCanvas();
    bindInspector();
    bindCrop();
    bindMasks();
    bindPresets();
    observeStore();
}

EditorPage::~EditorPage() {
    subscriptions_.clear();
    isOpening_ = true; // nothing is shown any more
    canvas_->setTool(nullptr);
    parts_.editing.onSaverChanged = nullptr;
}

void EditorPage::makeLayout() {
    auto* left = new QVBoxLayout;
    left->setContentsMargins(0, 0, 0, 0);
    left->setSpacing(0);
    left->addWidget(canvas_, 1);
    left->addWidget(photoBar_);
    auto* row = new QHBoxLayout;
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(0);
    row->addLayout(left, 1);
    row->addWidget(inspector_);
    middle_ = row;
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(bar_);
    column->addLayout(row, 1);
}

QMenu* EditorPage::makeMenu() {
    auto* menu = new QMenu(this);
    menu->setObjectName("editorMenu");
    for (const CommandId id :
         {CommandId::favorite, CommandId::photoInfo, CommandId::copyAdjustments,
          CommandId::pasteAdjustments, CommandId::revertToOriginal}) {
        menu->addAction(parts_.commands.action(id));
        if (id == CommandId::photoInfo) menu->addSeparator();
    }
    auto* unmask =
        menu->addAction(words("Remove All Masks"), this, [this] { model_.removeAllMasks(); });
    unmask->setObjectName("removeAllMasks");
    unmask->setToolTip(words("Removes every mask; the other adjustments stay (⌘Z undoes)"));
    menu->addSeparator();
    menu->addAction(parts_.commands.action(CommandId::exportPhotos));
    menu->addAction(parts_.commands.action(CommandId::showFolder));
    QObject::connect(menu, &QMenu::aboutToShow, this, [this, unmask] {
        unmask->setEnabled(!model_.edit().masks.empty() && !model_.isReadOnly());
    });
    return menu;
}

void EditorPage::bindCommands() {
    CommandActions& commands = parts_.commands;
    commands.on(CommandId::undo, [this] {
        inspector_->finish();
        model_.undo();
    });
    commands.on(CommandId::redo, [this] { model_.redo(); });
    commands.on(CommandId::crop,
                [this] { setMode(mode() == Mode::crop ? Mode::adjust : Mode::crop); });
    commands.on(CommandId::masks,
                [this] { setMode(mode() == Mode::masks ? Mode::adjust : Mode::masks); });
    commands.on(CommandId::toggleClipping, [this] {
        clipping_ = !clipping_;
        showDisplay();
    });
    commands.on(CommandId::colourAssessment, [this] {
        assessment_ = !assessment_;
        for (DimLayer* veil : veils_)
            veil->setOn(assessment_);
        showDisplay();
        showBar();
    });
    commands.on(CommandId::maskOverlay, [this] {
        MaskToolState state = mask_.state();
        state.overlay = !state.overlay;
        mask_.setState(state);
    });
    commands.on(CommandId::brushErases, [this] {
        BrushTool brush = mask_.state().brush;
        brush.erase = !brush.erase;
        mask_.setBrush(brush);
    });
    commands.on(CommandId::showOriginal, [this] {
        split_.originalHeld = !split_.originalHeld;
        showDisplay();
    });
    bar_->onBack = [this] { parts_.library.closeEditor(); };
    bar_->onSplit = [this] {
        split_.isSplit = !split_.isSplit;
        showDisplay();
        showBar();
    };
    bar_->onOriginal = [this](bool held) {
        split_.originalHeld = held;
        showDisplay();
    };
    parts_.editing.onSaverChanged = [this] { showBar(); };
}

void EditorPage::bindCanvas() {
    canvas_->onOpened = [this](const Result<PhotoFacts>& facts) { learn(facts); };
    canvas_->onHistogram = [this](const Histogram& histogram) {
        inspector_->histogram().show(histogram);
        parts_.commands.setOn(CommandId::toggleClipping, inspector_->histogram().clipsHighlights());
    };
    canvas_->onSplitMoved = [this](double share) { split_.share = share; };
    canvas_->onContextMenu = [this](QPoint at) { menu_->popup(at); };
    photoBar_->onOpen = [this](const PhotoUrl& photo) { parts_.library.openEditor(photo); };
    photoBar_->onContextMenu = [this](QPoint at) { menu_->popup(at); };
}

void EditorPage::setScreenProfile(const QColorSpace& profile) {
    canvas_->setScreenProfile(profile);
    photoBar_->setScreenProfile(profile);
}

unsigned EditorPage::circumstances() const {
    unsigned now = 0;
    if (!model_.isOpen()) return now;
    if (model_.canUndo()) now |= circumstance::undoable;
    if (model_.canRedo()) now |= circumstance::redoable;
    if (isEdited(model_.edit())) now |= circumstance::editedPhoto;
    if (mode() == Mode::masks) now |= circumstance::maskEditing;
    return now;
}

// --- Showing ---

void EditorPage::refresh() {
    if (isOpening_ || !model_.isOpen()) return;
    const bool isMoving = model_.isChanging() || &model_.shown() != &model_.edit();
    if (isMoving) parts_.engine.work().noteInput();
    canvas_->setEdit(model_.shown(), isMoving);
    // A point more of a stroke changes nothing but the photo, and there may be a thousand a second.
    if (!mask_.state().isPainting) showEdit();
    if (!model_.isChanging()) showBar();
    const unsigned now = circumstances();
    if (std::exchange(told_, now) != now && onCircumstances) onCircumstances();
    const auto title = [](const char* verb, const std::string& step) {
        return step.empty() ? words(verb) : words(verb) + " " + words(step);
    };
    parts_.commands.action(CommandId::undo)->setText(title("Undo", model_.undoName()));
    parts_.commands.action(CommandId::redo)->setText(title("Redo", model_.redoName()));
}

void EditorPage::showEdit() {
    inspector_->show(
        inspectorPanels(model_.edit(), {model_.photo().isRaw, model_.photo().asShotKelvin}),
        words(model_.readOnlyReason()));
    mask_.follow();
    showTools();
}

void EditorPage::showBar() {
    const auto& open = parts_.library.openPhoto().get();
    if (!open || isOpening_) return;
    const EditorTools& tools = parts_.library.editorTools().state();
    EditorBarState state;
    state.name = fromUtf8(texts::displayName(*open));
    const auto& photos = parts_.library.view().get()->photos;
    const auto at =
        std::ranges::find_if(photos, [&](const Photo* each) { return each->url == *open; });
    if (at != photos.end())
        state.place = words("%1 of %2")
                          .arg(number(at - photos.begin() + 1))
                          .arg(number(static_cast<qint64>(photos.size())));
    if (!model_.saveProblem().empty()) state.state = words("Not saved yet");
    state.isFavorite = tools.isFavorite;
    state.isSplit = split_.isSplit;
    state.isCropping = mode() == Mode::crop;
    state.isMasking = mode() == Mode::masks;
    state.isAssessing = assessment_;
    bar_->show(state);
    photoBar_->setVisible(tools.showsFilmstrip);
}

void EditorPage::showDisplay() {
    CanvasDisplay display;
    display.whole = mode() == Mode::crop;
    display.clipping = clipping_;
    display.assessment = assessment_;
    display.overlay = shownOverlay(mask_.state());
    display.split = split_;
    if (display.whole) display.split.isSplit = false;
    canvas_->setDisplay(display);
}

// --- Commands ---

void EditorPage::copy() {
    inspector_->finish();
    parts_.library.setClipboard(model_.copied());
}

void EditorPage::paste() {
    inspector_->finish();
    const auto& clipboard = parts_.library.clipboard().get();
    if (!clipboard || model_.isReadOnly()) return;
    model_.paste(*clipboard);
    parts_.library.notePaste();
}

void EditorPage::escape() {
    // A field that is being typed into is left first.
    QWidget* focus = QApplication::focusWidget();
    if (qobject_cast<QLineEdit*>(focus) && isAncestorOf(focus)) return canvas_->setFocus();
    if (picking_) return setPicking(false);
    if (split_.originalHeld) {
        split_.originalHeld = false;
        return showDisplay();
    }
    if (mode() == Mode::crop) return leaveCrop(false);
    if (mode() == Mode::masks) return setMode(Mode::adjust);
    if (parts_.library.infoRequest().get()) return parts_.library.requestInfo(std::nullopt);
    parts_.library.closeEditor();
}

void EditorPage::setMode(Mode mode) {
    if (mode == this->mode() || !model_.isOpen()) return;
    setPicking(false);
    if (this->mode() == Mode::crop) leaveCrop(true);
    canvas_->setTool(nullptr);
    inspector_->setMode(mode);
    if (mode == Mode::crop) enterCrop();
    if (mode == Mode::masks) canvas_->setTool(&mask_);
    canvas_->setFocus();
    showDisplay();
    refresh();
    showBar();
}

void EditorPage::growFrom(const QRect& global) {
    canvas_->growFrom(QRect(canvas_->mapFromGlobal(global.topLeft()), global.size()));
}

void EditorPage::settle(std::function<void()> done) {
    inspector_->finish();
    model_.leave(std::move(done));
}

void EditorPage::keyPressEvent(QKeyEvent* event) {
    LibraryStore& lib = parts_.library;
    switch (event->key()) {
    case Qt::Key_Left:
        return lib.openNeighbour(-1);
    case Qt::Key_Right:
        return lib.openNeighbour(1);
    case Qt::Key_Return:
    case Qt::Key_Enter:
        if (mode() == Mode::crop) return leaveCrop(true);
        if (lib.infoRequest().get()) return lib.requestInfo(std::nullopt);
        return setMode(Mode::adjust);
    case Qt::Key_0:
        return canvas_->zoomTo(CanvasView::Zoom::fit);
    case Qt::Key_1:
        return canvas_->zoomTo(CanvasView::Zoom::actual);
    case Qt::Key_2:
        return canvas_->zoomTo(CanvasView::Zoom::twice);
    case Qt::Key_Plus:
    case Qt::Key_Equal:
        return canvas_->zoomBy(1.25);
    case Qt::Key_Minus:
        return canvas_->zoomBy(0.8);
    case Qt::Key_Backslash:
        if (event->isAutoRepeat()) return;
        split_.originalHeld = true;
        return showDisplay();
    default:
        QWidget::keyPressEvent(event);
    }
}

void EditorPage::keyReleaseEvent(QKeyEvent* event) {
    if (event->key() != Qt::Key_Backslash || event->isAutoRepeat())
        return QWidget::keyReleaseEvent(event);
    split_.originalHeld = false;
    showDisplay();
}

void EditorPage::hideEvent(QHideEvent*) {
    split_.originalHeld = false;
}

} // namespace kelvaro
