#include "editor/LibraryEditStore.h"

#include "editor/EditFingerprint.h"
#include "recipe/Sidecar.h"

#include <algorithm>
#include <array>

namespace kelvaro {
namespace {

// Keeps what another program wrote, if it did; fails where the sidecar can't be read.
Result<SaveOutcome> kept(FileSystem& files, RandomSource& random, const SaveRequest& request) {
    Sidecar sidecar(files, random);
    auto stored = sidecar.loadPhoto(request.photo);
    if (!stored) return fail(std::move(stored).error());
    const Adjustments there = *stored ? (*stored)->adjustments : Adjustments();
    const std::uint64_t found = editFingerprint(there);
    const std::array known{editFingerprint(request.onDisk.value()),
                           editFingerprint(request.edit.value())};
    if (std::ranges::count(known, found) > 0) return SaveOutcome{};
    auto name = keepBeside(files, sidecar, request.photo, there);
    if (!name) return fail(std::move(name).error());
    return SaveOutcome{*name};
}

} // namespace

void LibraryEditStore::save(SaveRequest request, Saved done) {
    const bool isListed = library_.photo(request.photo.string()) != nullptr;
    library_.afterWrites([&files = files_, &random = random_, &main = main_, isListed,
                          alive = Alive(self_), request = std::move(request),
                          done = std::move(done)] {
        if (!isListed) {
            Sidecar sidecar(files, random);
            const std::array known{editFingerprint(request.onDisk.value())};
            auto outcome = saveKeepingOther(files, sidecar, request.photo, request.edit.value(),
                                            known, request.editedAt);
            return main.post([outcome = std::move(outcome), done] { done(outcome); });
        }
        main.post([alive, request, outcome = kept(files, random, request), done] {
            const auto self = alive.lock();
            if (!self) return; // the journal has it
            if (!outcome) return done(outcome);
            (*self)->write(request, *outcome, done);
        });
    });
}

void LibraryEditStore::write(const SaveRequest& request, SaveOutcome outcome, Saved done) {
    const PhotoUrl photo = request.photo.string();
    isGiving_ = true;
    library_.setAdjustments(photo, request.edit.value());
    isGiving_ = false;
    library_.afterWrites(
        [&main = main_, alive = Alive(self_), photo, outcome = std::move(outcome), done] {
            main.post([alive, photo, outcome, done] {
                const auto self = alive.lock();
                if (!self) return;
                const auto& unsaved = (*self)->library_.unsavedEdits().get();
                if (!unsaved.contains(FolderUrl(folderOf(photo)))) return done(outcome);
                done(fail(FailureKind::unwritable,
                          "“" + std::string(fileNameOf(photo)) +
                              "”: the edit can't be saved yet. It is kept until it can."));
            });
        });
}

void LibraryEditStore::keep(const std::filesystem::path& photo, SharedEdit edit, Kept done) {
    library_.afterWrites([&files = files_, &random = random_, &main = main_, photo,
                          edit = std::move(edit), done = std::move(done)] {
        Sidecar sidecar(files, random);
        auto name = keepBeside(files, sidecar, photo, edit.value());
        main.post([name = std::move(name), done] { done(name); });
    });
}

} // namespace kelvaro
