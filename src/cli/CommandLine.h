// What a person asked for on the command line, as plain values, and how commands answer.
#pragma once

#include "base/Result.h"
#include "develop/Pipeline.h"
#include "export/DateStamp.h"
#include "export/ExportFormat.h"
#include "library/PhotoQuery.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace kelvaro {

// What the process answers its caller.
enum class ExitCode { done = 0, someFailed = 1, wrongUse = 2, stopped = 130 };

struct DevelopRequest {
    std::filesystem::path photo, output;
    std::vector<std::string> settings; // "key=value"
    std::optional<std::filesystem::path> recipe;
    bool noSidecar = false;
    std::optional<int> longEdge; // pixels
    double quality = 0.9;        // 0 … 1
    Pipeline::OutputSpace space = Pipeline::OutputSpace::sRGB;
    bool linear = false;     // the working space before the gamut stage, as float
    bool sceneStage = false; // the scene-linear capture of a RAW file, as float
    bool timings = false;
    std::optional<std::filesystem::path> analysis; // folder for what the analysis found
};

struct RecipeRequest {
    std::filesystem::path photo;
    std::vector<std::string> settings;
    bool json = false, clear = false;
    std::optional<std::filesystem::path> copyFrom;
};

struct PanelRequest {
    std::vector<std::filesystem::path> photos;
    bool json = false;
};

struct FavoriteRequest {
    std::vector<std::filesystem::path> photos;
    bool off = false;
};

struct ListRequest {
    std::vector<std::filesystem::path> folders;
    std::string query;
    Scope::Kind scope = Scope::Kind::all; // all, edited or favorites
    PhotoFilter filter;
    SortOrder order{SortKey::dateTaken, true};
    bool groups = false, json = false;
};

struct ProfileRequest {
    std::vector<std::filesystem::path> folders;
    std::optional<std::int64_t> from, to; // days since 1970-01-01, both inclusive
    bool json = false;
};

// Which part of a set of photos to work on, where several machines share it: 1 of 1 is all of it.
struct Shard {
    std::size_t number = 1, count = 1;
};

struct ExportOrder {
    std::vector<std::filesystem::path> paths; // photos, and folders of photos
    std::filesystem::path folder;
    ExportFormat format = ExportFormat::jpeg;
    double quality = 85;         // 10 … 100
    std::optional<int> longEdge; // pixels
    std::optional<double> borderPercent;
    DateStamp::Style stamp = DateStamp::Style::none;
    Pipeline::OutputSpace space = Pipeline::OutputSpace::sRGB;
    bool noMetadata = false, replace = false, noVerify = false, json = false, timings = false;
    Shard shard;
};

} // namespace kelvaro
