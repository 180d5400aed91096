// The open photo and its edit: changes as steps that can be undone, saving after each, and what
// happens when the photo or its sidecar change under it. Holds no pixels and no widgets. Main
// thread.
#pragma once

#include "base/Geometry.h"
#include "editor/EditHistory.h"
#include "editor/EditSaver.h"
#include "editor/PasteParts.h"
#include "recipe/RecipeActions.h"

namespace kelvaro {

// The photo as the editor needs to know it.
struct EditedPhoto {
    std::filesystem::path location;
    PixelSize size; // upright, full resolution
    bool isRaw = false;
    double asShotKelvin = 6500, asShotTint = 0;
};

// Where the open photo's file is.
enum class PhotoPresence { here, deleted, replaced, unplugged };

class EditorModel {
public:
    struct Hooks {
        std::function<void()> changed; // read it again: the edit, or whether it can be undone
        std::function<void(std::string text)> notice;
        // The file has other content: open it anew, its size may differ.
        std::function<void()> reload;
    };

    EditorModel(EditSaver& saver, Hooks hooks);
    ~EditorModel();
    EditorModel(const EditorModel&) = delete;
    EditorModel& operator=(const EditorModel&) = delete;

    // Leaves the photo that was open. With a reason (the sidecar is from a newer version, or can't
    // be read) the edit can be looked at and not changed. A photo that was open before in this
    // session has its steps again.
    void open(EditedPhoto photo, const Adjustments& stored, std::string readOnlyReason = {});
    // What the decoder tells of the open photo, once it is known.
    void learned(EditedPhoto photo);
    // The open photo's sidecar turned out to be unreadable.
    void makeReadOnly(std::string reason);
    // Finishes a drag and saves; `done` once that has settled, for better or worse.
    void leave(std::function<void()> done = {});

    bool isOpen() const { return history_ != nullptr; }
    const EditedPhoto& photo() const { return photo_; }
    const Adjustments& edit() const { return edit_; }
    // What the canvas draws: the edit, or what a preset under the pointer would make of it.
    const Adjustments& shown() const { return preview_ ? *preview_ : edit_; }
    bool isReadOnly() const { return !readOnlyReason_.empty(); }
    const std::string& readOnlyReason() const { return readOnlyReason_; }
    PhotoPresence presence() const { return presence_; }

    // --- Changes; each does nothing on a read-only photo and returns whether it did something ---
    // From begin to end all changes are one step; several begins count as one. `name` stands behind
    // "Undo".
    bool beginChange(std::string name);
    // Changes the edit in place. Outside of begin and end it is a step of its own.
    template<class F>
    bool change(std::string name, F&& f) {
        const bool isOwnStep = !isChanging_;
        if (isOwnStep && !beginChange(std::move(name))) return false;
        std::forward<F>(f)(edit_);
        editChanged();
        return !isOwnStep || endChange();
    }
    bool endChange();
    void cancelChange(); // back to where the drag began
    bool isChanging() const { return isChanging_; }

    bool apply(std::string name, const Adjustments& edit);
    bool resetPanel(AdjustmentSpec::Group group);
    bool revertToOriginal();
    bool removeAllMasks();
    Adjustments copied(); // confirms by notice
    bool paste(const Adjustments& clipboard, const PasteParts& parts = {});
    // What the edit would be; none ends it. Nothing is saved.
    void setPreview(std::optional<Adjustments> preview);

    bool canUndo() const {
        return history_ && !isReadOnly() && (isChanging_ || history_->canUndo());
    }
    bool canRedo() const {
        return history_ && !isReadOnly() && !isChanging_ && history_->canRedo();
    }
    std::string undoName() const;
    std::string redoName() const;
    void undo(); // a drag in progress is taken back first
    void redo();
    const EditHistory& history() const { return *history_; }

    // --- What happens outside ---
    // The sidecar has another recipe than the one that was saved. Where nothing of ours waits it
    // becomes a step; else ours stays and the other one is kept beside.
    void changedOnDisk(const Adjustments& stored);
    void setPresence(PhotoPresence presence);

    bool isSaved() const { return !isChanging_ && saver_.isSaved(photo_.location); }
    std::string saveProblem() const { return saver_.problem(photo_.location); }

private:
    void editChanged();
    void take(const SharedEdit& edit); // as the current edit, saved
    void save();

    EditSaver& saver_;
    Hooks hooks_;
    EditedPhoto photo_;
    std::string readOnlyReason_;
    PhotoPresence presence_ = PhotoPresence::here;
    std::map<std::filesystem::path, EditHistory> histories_;
    EditHistory* history_ = nullptr; // of the open photo
    Adjustments edit_;
    std::optional<Adjustments> preview_;
    bool isChanging_ = false;
    std::string changeName_;
};

} // namespace kelvaro
