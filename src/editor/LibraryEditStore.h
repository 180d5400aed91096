// Recipes go to the disk through the library, so that its grid follows and nothing else writes a
// sidecar meanwhile: what another program wrote is kept beside first, then the library is given the
// edit and writes it. A photo that the library does not list (any more) is written directly. Main
// thread.
#pragma once

#include "base/MainThread.h"
#include "editor/EditStore.h"
#include "library/LibraryStore.h"

#include <memory>

namespace kelvaro {

class LibraryEditStore final : public EditStore {
public:
    // All outlive the store; so do jobs that it gave to the library's queue.
    LibraryEditStore(LibraryStore& library, FileSystem& files, RandomSource& random,
                     MainThread& main)
        : library_(library), files_(files), random_(random), main_(main) {}

    void save(SaveRequest request, Saved done) override;
    void keep(const std::filesystem::path& photo, SharedEdit edit, Kept done) override;

    // The library is being given a recipe: what it tells of just now comes from here.
    bool isGiving() const { return isGiving_; }

private:
    using Alive = std::weak_ptr<LibraryEditStore*>;
    void write(const SaveRequest& request, SaveOutcome outcome, Saved done);

    LibraryStore& library_;
    FileSystem& files_;
    RandomSource& random_;
    MainThread& main_;
    bool isGiving_ = false;
    std::shared_ptr<LibraryEditStore*> self_ = std::make_shared<LibraryEditStore*>(this);
};

} // namespace kelvaro
