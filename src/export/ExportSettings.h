// The options of an export, as the sheet edits them and as they are kept between launches. A plain
// value; any thread.
#pragma once

#include "develop/Pipeline.h"
#include "export/DateStamp.h"
#include "export/ExportFormat.h"
#include "platform/SettingsStore.h"
#include "platform/UserFolders.h"

#include <string>
#include <string_view>

namespace kelvaro {

struct ExportSettings {
    static constexpr std::string_view key = "exportSettings"; // in the settings store

    ExportFormat format = ExportFormat::jpeg;
    double quality = 85; // 10 … 100, for JPEG and HEIC
    bool resize = false;
    bool border = false;
    double borderPercent = 1; // of the photo's long edge; every use clamps it
    DateStamp::Style dateStamp = DateStamp::Style::none;
    int longEdge = 3000; // pixels, border included; every use clamps it
    bool includeMetadata = true;
    std::string destination; // a folder's path
    Pipeline::OutputSpace colorSpace = Pipeline::OutputSpace::sRGB;
    bool replaceExisting = false;

    bool operator==(const ExportSettings&) const = default;

    // The defaults, with "Kelvaro Exports" in the user's Pictures folder as the destination.
    static ExportSettings defaults(const UserFolders& folders);
    // What is stored; the defaults where nothing is, or nothing that can be read.
    static ExportSettings load(const SettingsStore& store, const UserFolders& folders);
    void save(SettingsStore& store) const;

    // JSON. Absent keys, and names of formats, stamps or spaces that are not known, give the value
    // of `otherwise`, as does the whole text when it cannot be read.
    static ExportSettings decoded(std::string_view text, const ExportSettings& otherwise);
    std::string encoded() const;

    // Width of the border on each side as a fraction of the photo's long edge; 0 without one.
    double borderFraction() const;
    int clampedLongEdge() const; // 256 … 20000
};

} // namespace kelvaro
