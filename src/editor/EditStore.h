// What the editor asks of whoever keeps recipes on the disk. Calls come on the main thread and
// return at once; answers come back on the main thread. Writes of one photo keep their order.
#pragma once

#include "editor/EditSaving.h"
#include "editor/SharedEdit.h"

#include <functional>

namespace kelvaro {

struct SaveRequest {
    std::filesystem::path photo;
    SharedEdit edit;
    SharedEdit onDisk; // what the sidecar should hold by now; another version is kept beside
    double editedAt = 0;
};

class EditStore {
public:
    using Saved = std::function<void(Result<SaveOutcome>)>;
    using Kept = std::function<void(Result<std::string>)>;

    virtual ~EditStore() = default;
    // As `saveKeepingOther`.
    virtual void save(SaveRequest request, Saved done) = 0;
    // As `keepBeside`.
    virtual void keep(const std::filesystem::path& photo, SharedEdit edit, Kept done) = 0;
};

} // namespace kelvaro
