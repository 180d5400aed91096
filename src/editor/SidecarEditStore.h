// Recipes kept straight in the sidecars, on a queue that is handed in (that of the library's
// sidecars, so that nothing else writes them meanwhile). Main thread.
#pragma once

#include "base/MainThread.h"
#include "base/SerialQueue.h"
#include "editor/EditStore.h"

namespace kelvaro {

class SidecarEditStore final : public EditStore {
public:
    // All are used until every answer has been given; jobs on the queue may outlive the store.
    SidecarEditStore(FileSystem& files, RandomSource& random, SerialQueue& queue, MainThread& main)
        : files_(files), random_(random), queue_(queue), main_(main) {}

    void save(SaveRequest request, Saved done) override;
    void keep(const std::filesystem::path& photo, SharedEdit edit, Kept done) override;

private:
    FileSystem& files_;
    RandomSource& random_;
    SerialQueue& queue_;
    MainThread& main_;
};

} // namespace kelvaro
