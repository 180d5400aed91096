#include "editor/Preset.h"

#include "recipe/RecipeCoding.h"
#include "recipe/StoredFields.h"

#include <algorithm>
#include <fmt/format.h>

namespace kelvaro {
namespace {

constexpr std::string_view extension = ".json", nameKey = "presetName", partsKey = "presetParts";
constexpr int mostFiles = 10'000;

// As they stand in the files.
constexpr std::array<std::string_view, AdjustmentSpec::allGroups.size()> groupKeys{
    "whiteBalance", "basic", "color", "detail", "effects", "crop"};
constexpr std::string_view masksPart = "masks";

std::string tidy(std::string name) {
    std::ranges::replace_if(
        name, [](char c) { return static_cast<unsigned char>(c) < ' ' || c == 127; }, ' ');
    const std::size_t first = name.find_first_not_of(' ');
    if (first == std::string::npos) return {};
    name = name.substr(first, name.find_last_not_of(' ') - first + 1);
    std::size_t end = std::min(name.size(), PresetFolder::mostNameBytes);
    while (end > 0 && end < name.size() && (static_cast<unsigned char>(name[end]) & 0xC0) == 0x80)
        --end;
    return name.substr(0, end);
}

json::Value encodedParts(const PasteParts& parts) {
    json::Array list;
    for (std::size_t i = 0; i < groupKeys.size(); ++i)
        if (parts.groups[i]) list.emplace_back().content = std::string(groupKeys[i]);
    if (parts.masks) list.emplace_back().content = std::string(masksPart);
    return {std::move(list)};
}

// A recipe file without parts, put there by hand, applies as pasting does.
PasteParts decodedParts(const json::Object& object) {
    const json::Value* value = object.find(partsKey);
    const auto* list = value ? value->get<json::Array>() : nullptr;
    if (!list) return {};
    PasteParts parts;
    parts.masks = false;
    parts.groups.fill(false);
    for (const json::Value& item : *list) {
        const auto* text = item.get<std::string>();
        if (!text) continue;
        parts.masks = parts.masks || *text == masksPart;
        const auto found = std::ranges::find(groupKeys, *text);
        if (found != groupKeys.end()) {
            parts.groups[static_cast<std::size_t>(found - groupKeys.begin())] = true;
        }
    }
    return parts;
}

Result<std::string> encodedPreset(const Preset& preset) {
    auto object = encodeAdjustments(preset.adjustments);
    if (!object) return fail(std::move(object).error());
    object->set(nameKey, {preset.name});
    object->set(partsKey, encodedParts(preset.parts));
    return json::print({std::move(*object)});
}

bool isReserved(std::string_view name) {
    // Names that other systems keep for devices; a settings folder may travel.
    static constexpr std::array reserved{"con", "prn", "aux", "nul", "com", "lpt"};
    std::string lower(name.substr(0, name.find('.')));
    std::ranges::transform(lower, lower.begin(),
                           [](char c) { return c >= 'A' && c <= 'Z' ? char(c + 32) : c; });
    if (lower.size() == 4 && lower[3] >= '0' && lower[3] <= '9') lower.pop_back();
    return std::ranges::find(reserved, lower) != reserved.end();
}

} // namespace

Adjustments applied(const Preset& preset, const Adjustments& edit) {
    return withParts(preset.adjustments, edit, preset.parts);
}

std::string presetFileName(std::string_view name) {
    std::string file = tidy(std::string(name));
    std::ranges::replace_if(
        file,
        [](char c) { return std::string_view("/\\:*?\"<>|").find(c) != std::string_view::npos; },
        '-');
    std::replace_if(
        file.begin(), file.begin() + std::ptrdiff_t(!file.empty()), [](char c) { return c == '.'; },
        '-');
    while (!file.empty() && (file.back() == '.' || file.back() == ' '))
        file.pop_back();
    if (file.empty()) return "Preset";
    return isReserved(file) ? file + "-" : file;
}

Result<Preset> PresetFolder::read(const std::filesystem::path& file) {
    const auto bytes = files_.read(file, largestFile);
    if (!bytes) return fail(bytes.error());
    const std::string_view text(reinterpret_cast<const char*>(bytes->data()), bytes->size());
    auto document = json::parse(text);
    if (!document) return fail(std::move(document).error());
    auto edit = decodeAdjustments(*document, random_);
    if (!edit) return fail(edit.error().kind, edit.error().message);
    const auto* object = document->get<json::Object>();
    std::optional<DecodeFailure> failure;
    Preset preset;
    preset.name = tidy(StoredFields(*object, failure).text(nameKey, file.stem().string()));
    if (failure) return fail(failure->kind, failure->message);
    if (preset.name.empty()) preset.name = file.stem().string();
    preset.adjustments = std::move(*edit);
    preset.parts = decodedParts(*object);
    preset.file = file;
    return preset;
}

PresetList PresetFolder::load() {
    PresetList list;
    const auto entries = files_.list(folder_);
    if (!entries) {
        if (entries.error().kind != FailureKind::notFound) {
            list.problems.push_back(entries.error().message);
        }
        return list;
    }
    for (const FolderEntry& entry : *entries) {
        if (entry.name.starts_with('.') || !entry.name.ends_with(extension)) continue;
        auto preset = read(folder_ / entry.name);
        if (preset)
            list.presets.push_back(std::move(*preset));
        else
            list.problems.push_back(fmt::format("The preset “{}” can't be used: {}", entry.name,
                                                preset.error().message));
    }
    std::ranges::sort(list.problems);
    std::ranges::sort(list.presets, [](const Preset& a, const Preset& b) {
        return std::tie(a.name, a.file) < std::tie(b.name, b.file);
    });
    return list;
}

Result<Preset> PresetFolder::save(std::string name, const Adjustments& adjustments,
                                  const PasteParts& parts) {
    Preset preset{tidy(std::move(name)), adjustments, parts, {}};
    if (preset.name.empty()) return fail(FailureKind::malformed, "A preset needs a name.");
    const auto text = encodedPreset(preset);
    if (!text) return fail(text.error());
    if (auto made = files_.createFolder(folder_); !made) return fail(std::move(made).error());
    for (const Preset& existing : load().presets)
        if (existing.name == preset.name) preset.file = existing.file;
    const std::string base = presetFileName(preset.name);
    for (int number = 1; preset.file.empty() && number <= mostFiles; ++number) {
        const auto candidate =
            folder_ / (number == 1 ? base + std::string(extension)
                                   : fmt::format("{} {}{}", base, number, extension));
        const auto status = files_.status(candidate);
        if (!status && status.error().kind == FailureKind::notFound) preset.file = candidate;
    }
    if (preset.file.empty()) {
        return fail(FailureKind::unwritable, "There is no free file name for the preset.");
    }
    auto written = writeAtomically(files_, preset.file, std::as_bytes(std::span(*text)));
    if (!written) return fail(std::move(written).error());
    return preset;
}

Result<Preset> PresetFolder::rename(const Preset& preset, std::string name) {
    if (tidy(name) == preset.name) return preset;
    auto saved = save(std::move(name), preset.adjustments, preset.parts);
    if (!saved) return saved;
    if (auto removed = remove(preset); !removed) return fail(std::move(removed).error());
    return saved;
}

Result<void> PresetFolder::remove(const Preset& preset) {
    auto removed = files_.remove(preset.file);
    if (!removed && removed.error().kind == FailureKind::notFound) return {};
    return removed;
}

} // namespace kelvaro
