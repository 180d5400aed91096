// How the editor follows the library: opening, leaving, photos and sidecars that change outside.
#include "ui/Texts.h"
#include "ui/editor/EditorPage.h"

#include "recipe/Sidecar.h"

namespace kelvaro {
namespace {

EditedPhoto editedPhoto(const Photo& photo, PixelSize size) {
    return {photo.url, size, photo.isRaw, 6500, 0};
}

} // namespace

void EditorPage::observeStore() {
    LibraryStore& lib = parts_.library;
    subscriptions_.push_back(lib.openPhoto().observe([this] { showOpenPhoto(); }));
    subscriptions_.push_back(lib.version().observe([this] { storeChanged(); }));
    subscriptions_.push_back(lib.missingFolders().observe([this] { storeChanged(); }));
    subscriptions_.push_back(lib.editorTools().observe([this] { showBar(); }));
    // The photo's information stands in the place of the adjustments.
    subscriptions_.push_back(lib.infoRequest().observe(
        [this, &lib] { inspector_->setVisible(!lib.infoRequest().get().has_value()); }));
    subscriptions_.push_back(lib.view().observe([this] { showBar(); }));
}

void EditorPage::showOpenPhoto() {
    LibraryStore& lib = parts_.library;
    const auto& open = lib.openPhoto().get();
    isOpening_ = true;
    inspector_->finish();
    setPicking(false);
    canvas_->setTool(nullptr);
    crop_.reset();
    inspector_->setMode(Mode::adjust);
    MaskToolState masks;
    masks.brush = mask_.state().brush;
    mask_.setState(masks);
    parts_.engine.work().setEditing(open.has_value());
    const Photo* photo = open ? lib.photo(*open) : nullptr;
    if (!photo) {
        opened_.reset();
        model_.leave();
        canvas_->close();
        isOpening_ = false;
        return;
    }
    opened_ = *photo;
    const Adjustments* stored = lib.edit(*open);
    storeKnows_ = stored ? *stored : Adjustments{};
    const SharedMeta meta = lib.meta(*open);
    const PixelSize guess = meta ? PixelSize{meta->width, meta->height} : PixelSize{};
    model_.open(editedPhoto(*photo, guess), storeKnows_);
    // What the grid showed stands in until the first stage comes.
    QImage standIn;
    for (const int sizePx : {1024, 512, 256, 128}) {
        if (const Thumbnail small = parts_.thumbnails.inMemory({*open, storeKnows_, sizePx})) {
            standIn = imageOf(small);
            break;
        }
    }
    inspector_->histogram().clear();
    showDisplay();
    canvas_->showPhoto(photo->url, model_.shown(), guess, standIn);
    photoBar_->setOpen(*open);
    isOpening_ = false;
    checkSidecar(*open);
    prepareNeighbours();
    refresh();
    showBar();
}

void EditorPage::learn(const Result<PhotoFacts>& facts) {
    if (!facts || !opened_) return;
    EditedPhoto photo = editedPhoto(*opened_, facts->size);
    photo.isRaw = facts->isRaw;
    if (facts->isRaw) {
        photo.asShotKelvin = facts->asShotTemperature;
        photo.asShotTint = facts->asShotTint;
    }
    model_.learned(std::move(photo));
}

// A sidecar that can't be read must not be overwritten: the photo is shown and nothing changed.
void EditorPage::checkSidecar(const PhotoUrl& photo) {
    Services& services = parts_.editing.services();
    later(
        [&services, photo]() -> std::string {
            Sidecar sidecar(*services.files, *services.random);
            const auto stored = sidecar.loadPhoto(photo);
            const bool isThere = stored || stored.error().kind != FailureKind::notFound;
            return stored || !isThere ? std::string() : stored.error().message;
        },
        [this, photo](const std::string& reason) {
            const auto& open = parts_.library.openPhoto().get();
            if (reason.empty() || !open || *open != photo) return;
            model_.makeReadOnly(reason);
            if (mode() == Mode::crop) setMode(Mode::adjust);
        });
}

void EditorPage::storeChanged() {
    const auto& open = parts_.library.openPhoto().get();
    if (!open || !opened_ || isOpening_ || !model_.isOpen()) return;
    LibraryStore& lib = parts_.library;
    const Photo* photo = lib.photo(*open);
    PhotoPresence presence = PhotoPresence::here;
    if (lib.missingFolders().get().contains(FolderUrl(folderOf(*open)))) {
        presence = PhotoPresence::unplugged;
    } else if (!photo) {
        presence = PhotoPresence::deleted;
    } else if (photo->fileSize != opened_->fileSize || photo->modified != opened_->modified) {
        opened_ = *photo;
        presence = PhotoPresence::replaced;
    }
    model_.setPresence(presence);
    const Adjustments* stored = lib.edit(*open);
    const Adjustments now = stored ? *stored : Adjustments{};
    if (!photo || now == storeKnows_) return;
    storeKnows_ = now;
    if (!parts_.editing.isWritingNow()) model_.changedOnDisk(now);
}

void EditorPage::prepareNeighbours() {
    std::vector<RenderSession::Neighbour> neighbours;
    for (const int step : {1, -1}) {
        const auto photo = parts_.library.neighbour(step);
        if (!photo) continue;
        const Adjustments* edit = parts_.library.edit(*photo);
        neighbours.push_back({*photo, edit ? *edit : Adjustments{}, canvas_->fit()});
    }
    canvas_->prepare(std::move(neighbours));
}

} // namespace kelvaro
