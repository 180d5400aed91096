#include "platform/system/JsonSettingsStore.h"

#include <nlohmann/json.hpp>

namespace kelvaro {
namespace {

using Json = nlohmann::json;

constexpr std::int64_t largestFile = 16 << 20;
constexpr double lockPatienceSeconds = 5;

std::optional<SettingValue> valueOf(const Json& json) {
    if (json.is_boolean()) return json.get<bool>();
    if (json.is_number()) return json.get<double>();
    if (json.is_string()) return json.get<std::string>();
    if (!json.is_array()) return std::nullopt;
    std::vector<std::string> list;
    for (const Json& item : json) {
        if (!item.is_string()) return std::nullopt;
        list.push_back(item.get<std::string>());
    }
    return list;
}

// The object that the file holds; empty where there is no file, none where it is no such thing.
std::optional<Json> documentOf(FileSystem& files, const std::filesystem::path& file) {
    const auto bytes = files.read(file, largestFile);
    if (!bytes) {
        if (bytes.error().kind == FailureKind::notFound) return Json::object();
        return std::nullopt;
    }
    const auto* text = reinterpret_cast<const char*>(bytes->data());
    Json document = Json::parse(text, text + bytes->size(), nullptr, false);
    if (!document.is_object()) return std::nullopt;
    return document;
}

bool setAside(FileSystem& files, const std::filesystem::path& file) {
    const auto bytes = files.read(file, largestFile);
    std::filesystem::path aside = file;
    aside += ".damaged";
    return bytes && writeAtomically(files, aside, *bytes).has_value();
}

} // namespace

JsonSettingsStore::JsonSettingsStore(FileSystem& files, std::filesystem::path file)
    : files_(files), file_(std::move(file)) {
    const auto document = documentOf(files_, file_);
    if (!document) return;
    values_.with([&](Values& values) {
        for (const auto& [key, json] : document->items())
            if (auto value = valueOf(json)) values.emplace(key, std::move(*value));
    });
}

std::optional<SettingValue> JsonSettingsStore::value(std::string_view key) const {
    return values_.with([&](const Values& values) {
        const auto found = values.find(key);
        return found == values.end() ? std::nullopt : std::optional(found->second);
    });
}

void JsonSettingsStore::set(std::string_view key, SettingValue value) {
    change(std::string(key), std::move(value));
}

void JsonSettingsStore::remove(std::string_view key) {
    change(std::string(key), std::nullopt);
}

void JsonSettingsStore::change(std::string key, std::optional<SettingValue> value) {
    values_.with([&](Values& values) {
        if (value)
            values.insert_or_assign(key, *value);
        else
            values.erase(key);
    });
    const bool isFirst = unwritten_.with([&](Edits& edits) {
        edits.insert_or_assign(std::move(key), std::move(value));
        return edits.size() == 1;
    });
    if (isFirst) queue_.post([this] { write(); });
}

void JsonSettingsStore::flush() {
    queue_.waitUntilIdle();
}

void JsonSettingsStore::write() {
    const Edits edits = unwritten_.with([](Edits& all) { return std::exchange(all, {}); });
    const auto folder = file_.parent_path();
    if (!files_.createFolder(folder)) return;
    const auto lock = files_.lockFolder(folder, lockPatienceSeconds);
    if (!lock) return;
    auto document = documentOf(files_, file_);
    if (!document) {
        if (!setAside(files_, file_)) return;
        document = Json::object();
    }
    for (const auto& [key, value] : edits) {
        if (value)
            std::visit([&, &name = key](const auto& held) { (*document)[name] = held; }, *value);
        else
            document->erase(key);
    }
    const std::string text = document->dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
    // A disk that refuses costs the change after the next start, as the interface says.
    static_cast<void>(writeAtomically(files_, file_, std::as_bytes(std::span(text))));
}

} // namespace kelvaro
