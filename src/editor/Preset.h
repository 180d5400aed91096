// A named set of adjustments, and the folder of files that keeps them: one JSON file each, as
// recipes are. Blocking; any thread, one at a time.
#pragma once

#include "editor/PasteParts.h"
#include "platform/FileSystem.h"
#include "platform/Random.h"

#include <string>
#include <vector>

namespace kelvaro {

struct Preset {
    std::string name;
    Adjustments adjustments;
    PasteParts parts; // what applying it sets
    std::filesystem::path file;
};

struct PresetList {
    std::vector<Preset> presets;       // by name
    std::vector<std::string> problems; // a sentence for each file that could not be used
};

// The edit with the preset applied.
Adjustments applied(const Preset& preset, const Adjustments& edit);

class PresetFolder {
public:
    static constexpr std::int64_t largestFile = 8 << 20;
    static constexpr std::size_t mostNameBytes = 120;

    // `folder` is a folder of our own, `<settings>/presets`; it need not exist.
    PresetFolder(FileSystem& files, RandomSource& random, std::filesystem::path folder)
        : files_(files), random_(random), folder_(std::move(folder)) {}

    PresetList load();
    // A preset of the same name is replaced. Fails for a name without anything to read in it.
    Result<Preset> save(std::string name, const Adjustments& adjustments, const PasteParts& parts);
    Result<Preset> rename(const Preset& preset, std::string name);
    Result<void> remove(const Preset& preset);

private:
    Result<Preset> read(const std::filesystem::path& file);

    FileSystem& files_;
    RandomSource& random_;
    std::filesystem::path folder_;
};

// A name that every file system takes: what could mean something to one is replaced, no name is
// hidden or reserved. Without extension; not unique.
std::string presetFileName(std::string_view name);

} // namespace kelvaro
