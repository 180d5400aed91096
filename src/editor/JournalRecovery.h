// At start-up: what sessions that ended in a crash or a power cut left in their journals goes into
// the sidecars. Blocking; on the queue of the sidecars, before the library reads them.
#pragma once

#include "platform/AppendFile.h"
#include "platform/FileSystem.h"
#include "platform/Random.h"

#include <filesystem>
#include <string>
#include <vector>

namespace kelvaro {

struct RecoveryReport {
    struct Kept {
        std::filesystem::path photo;
        std::string name; // of the file beside its sidecar
    };
    std::vector<std::filesystem::path>
        restored;                               // photos whose sidecar now holds the session's edit
    std::vector<Kept> keptBeside;               // versions that had to make way, or could not
    std::vector<std::filesystem::path> waiting; // their folders can't be reached; tried next time

    // What to tell the user; empty when there is nothing to tell.
    std::string notice() const;
};

// A new journal's path in the folder of journals, `<support>/sessions`.
std::filesystem::path newJournalPath(const std::filesystem::path& support, RandomSource& random);

// Replays every journal in `<support>/sessions` that no running program holds. Those that are
// replayed are removed, or rewritten with what is waiting. Does no harm when it is itself cut off
// and run again.
RecoveryReport recoverSessions(FileSystem& files, AppendFiles& appendFiles, RandomSource& random,
                               const std::filesystem::path& support);

} // namespace kelvaro
