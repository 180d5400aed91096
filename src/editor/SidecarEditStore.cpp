#include "editor/SidecarEditStore.h"

#include "editor/EditFingerprint.h"

#include <array>

namespace kelvaro {

void SidecarEditStore::save(SaveRequest request, Saved done) {
    queue_.post([&files = files_, &random = random_, &main = main_, request = std::move(request),
                 done = std::move(done)] {
        Sidecar sidecar(files, random);
        const std::array known{editFingerprint(request.onDisk.value())};
        auto outcome = saveKeepingOther(files, sidecar, request.photo, request.edit.value(), known,
                                        request.editedAt);
        main.post([outcome = std::move(outcome), done] { done(outcome); });
    });
}

void SidecarEditStore::keep(const std::filesystem::path& photo, SharedEdit edit, Kept done) {
    queue_.post([&files = files_, &random = random_, &main = main_, photo, edit = std::move(edit),
                 done = std::move(done)] {
        Sidecar sidecar(files, random);
        auto name = keepBeside(files, sidecar, photo, edit.value());
        main.post([name = std::move(name), done] { done(name); });
    });
}

} // namespace kelvaro
