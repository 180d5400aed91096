#include "editor/EditorModel.h"

#include "recipe/RecipeTexts.h"

#include <fmt/format.h>

namespace kelvaro {

EditorModel::EditorModel(EditSaver& saver, Hooks hooks) : saver_(saver), hooks_(std::move(hooks)) {}

EditorModel::~EditorModel() {
    leave();
}

void EditorModel::open(EditedPhoto photo, const Adjustments& stored, std::string readOnlyReason) {
    leave();
    photo_ = std::move(photo);
    readOnlyReason_ = std::move(readOnlyReason);
    presence_ = PhotoPresence::here;
    edit_ = stored;
    const SharedEdit onDisk = SharedEdit::of(edit_, SharedEdit());
    // What could not be saved yet is what the user left.
    const SharedEdit start = saver_.unsavedEdit(photo_.location).value_or(onDisk);
    edit_ = start.value();
    const auto [at, isNew] = histories_.try_emplace(photo_.location, start);
    history_ = &at->second;
    // The library or another program may have changed it since it was last open.
    if (!isNew && history_->current() != start) history_->push(start, "Change Elsewhere");
    if (!isReadOnly()) {
        saver_.opened(photo_.location, onDisk);
        saver_.setLive(photo_.location,
                       [this] { return SharedEdit::of(edit_, history_->current()); });
    }
    hooks_.changed();
}

void EditorModel::learned(EditedPhoto photo) {
    if (!isOpen() || photo.location != photo_.location) return;
    photo_ = std::move(photo);
    hooks_.changed();
}

void EditorModel::makeReadOnly(std::string reason) {
    if (!isOpen()) return;
    cancelChange();
    saver_.endLive();
    readOnlyReason_ = std::move(reason);
    hooks_.changed();
}

void EditorModel::leave(std::function<void()> done) {
    if (isOpen()) {
        preview_.reset();
        endChange();
        saver_.endLive();
        history_ = nullptr;
    }
    if (done) saver_.whenSettled(photo_.location, std::move(done));
}

bool EditorModel::beginChange(std::string name) {
    if (!isOpen() || isReadOnly()) return false;
    preview_.reset();
    if (isChanging_) return true;
    isChanging_ = true;
    changeName_ = std::move(name);
    return true;
}

void EditorModel::editChanged() {
    saver_.liveChanged();
    hooks_.changed();
}

bool EditorModel::endChange() {
    if (!std::exchange(isChanging_, false)) return false;
    SharedEdit edit = SharedEdit::of(edit_, history_->current());
    const bool differs = edit != history_->current();
    if (differs) history_->push(std::move(edit), std::move(changeName_));
    save();
    hooks_.changed();
    return differs;
}

void EditorModel::cancelChange() {
    if (!std::exchange(isChanging_, false)) return;
    take(history_->current());
}

void EditorModel::take(const SharedEdit& edit) {
    preview_.reset();
    edit_ = edit.value();
    save();
    hooks_.changed();
}

void EditorModel::save() {
    saver_.save(photo_.location, history_->current());
}

bool EditorModel::apply(std::string name, const Adjustments& edit) {
    if (isChanging_) endChange();
    return change(std::move(name), [&](Adjustments& current) { current = edit; });
}

bool EditorModel::resetPanel(AdjustmentSpec::Group group) {
    return apply(fmt::format("Reset {}", title(group)), withPanelReset(edit_, group));
}

bool EditorModel::revertToOriginal() {
    return apply(std::string(texts::revertToOriginal), revertedToOriginal(edit_));
}

bool EditorModel::removeAllMasks() {
    return apply(std::string(texts::removeAllMasks), withoutMasks(edit_));
}

Adjustments EditorModel::copied() {
    if (isOpen()) hooks_.notice(std::string(texts::adjustmentsCopied));
    return edit_;
}

bool EditorModel::paste(const Adjustments& clipboard, const PasteParts& parts) {
    if (!isOpen() || isReadOnly()) return false;
    const bool differs =
        apply(std::string(texts::pasteAdjustments), withParts(clipboard, edit_, parts));
    hooks_.notice(pastedNotice(1));
    return differs;
}

void EditorModel::setPreview(std::optional<Adjustments> preview) {
    if (!isOpen() || isReadOnly() || isChanging_ || preview_ == preview) return;
    preview_ = std::move(preview);
    hooks_.changed();
}

std::string EditorModel::undoName() const {
    if (!canUndo()) return {};
    return isChanging_ ? changeName_ : history_->undoName();
}

std::string EditorModel::redoName() const {
    return canRedo() ? history_->redoName() : std::string();
}

void EditorModel::undo() {
    if (isChanging_) return cancelChange();
    if (!canUndo()) return;
    history_->undo();
    take(history_->current());
}

void EditorModel::redo() {
    if (!canRedo()) return;
    history_->redo();
    take(history_->current());
}

void EditorModel::changedOnDisk(const Adjustments& stored) {
    if (!isOpen() || isReadOnly()) return;
    const SharedEdit other = SharedEdit::of(Adjustments(stored));
    if (other == history_->current()) return;
    if (!isSaved()) return saver_.keepBeside(photo_.location, other);
    history_->push(other, "Change Elsewhere");
    saver_.adoptedFromDisk(photo_.location, other);
    edit_ = stored;
    hooks_.notice(
        fmt::format("{} was edited elsewhere; that edit is shown now. Undo brings yours back.",
                    photo_.location.filename().string()));
    hooks_.changed();
}

void EditorModel::setPresence(PhotoPresence presence) {
    if (!isOpen() || std::exchange(presence_, presence) == presence) return;
    const std::string name = photo_.location.filename().string();
    switch (presence) {
    case PhotoPresence::here:
        saver_.retry();
        break;
    case PhotoPresence::deleted:
        hooks_.notice(fmt::format("“{}” isn't there any more. Its edit is kept.", name));
        break;
    case PhotoPresence::replaced:
        hooks_.notice(fmt::format("“{}” was replaced by another file. Its edit is kept.", name));
        presence_ = PhotoPresence::here;
        cancelChange();
        hooks_.reload();
        break;
    case PhotoPresence::unplugged:
        hooks_.notice(fmt::format("The drive of “{}” is gone. Changes are kept and are saved when "
                                  "it is back.",
                                  name));
        break;
    }
    hooks_.changed();
}

} // namespace kelvaro
