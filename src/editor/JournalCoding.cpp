#include "editor/JournalCoding.h"

#include "editor/EditFingerprint.h"
#include "recipe/RecipeCoding.h"
#include "recipe/StoredFields.h"

#include <charconv>
#include <fmt/format.h>
#include <map>

namespace kelvaro {
namespace {

constexpr std::string_view mark = "kelvaro-edit ";
constexpr std::string_view beginning = R"({"begins":true})";
constexpr std::size_t headLength = 13 + 16 + 1 + 8 + 1; // mark, length, blank, checksum, line end

// Paths are bytes and JSON is text: everything but plain letters, digits and marks is spelt out.
std::string escapedPath(const std::filesystem::path& path) {
    std::string text;
    for (const char c : path.native()) {
        if (c > ' ' && c < 127 && c != '%')
            text += c;
        else
            text += fmt::format("%{:02X}", static_cast<unsigned char>(c));
    }
    return text;
}

std::filesystem::path unescapedPath(std::string_view text) {
    std::string path;
    for (std::size_t i = 0; i < text.size(); ++i) {
        unsigned code = 0;
        if (text[i] == '%' && i + 2 < text.size() &&
            std::from_chars(text.data() + i + 1, text.data() + i + 3, code, 16).ptr ==
                text.data() + i + 3) {
            path += static_cast<char>(code);
            i += 2;
        } else {
            path += text[i];
        }
    }
    return path;
}

std::optional<std::uint64_t> hexNumber(std::string_view text) {
    std::uint64_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, 16);
    if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return value;
}

json::Value textValue(std::string text) {
    return {std::move(text)};
}

json::Value fingerprints(const std::vector<std::uint64_t>& known) {
    json::Array list;
    for (const std::uint64_t print : known)
        list.push_back(textValue(fmt::format("{:x}", print)));
    return {std::move(list)};
}

// Takes the next record's payload off the front; none where it is torn or damaged.
std::optional<std::string_view> takePayload(std::string_view& journal) {
    if (journal.size() < headLength || !journal.starts_with(mark)) return std::nullopt;
    const auto length = hexNumber(journal.substr(mark.size(), 16));
    const auto sum = hexNumber(journal.substr(mark.size() + 17, 8));
    const bool isFramed = journal[mark.size() + 16] == ' ' && journal[headLength - 1] == '\n';
    if (!length || !sum || !isFramed || *length > journal.size() - headLength) return std::nullopt;
    const std::string_view payload = journal.substr(headLength, *length);
    if (crc32Of(payload) != *sum) return std::nullopt;
    journal.remove_prefix(headLength + payload.size());
    return payload;
}

std::optional<JournalRecord> decodedRecord(std::string_view payload, RandomSource& random) {
    auto document = json::parse(payload);
    const auto* object = document ? document->get<json::Object>() : nullptr;
    if (!object) return std::nullopt;
    std::optional<DecodeFailure> failure;
    const StoredFields fields(*object, failure);
    JournalRecord record;
    record.photo = unescapedPath(fields.text("photo", ""));
    record.time = fields.number("time", 0);
    if (const json::Value* known = object->find("known")) {
        const auto* list = known->get<json::Array>();
        for (const json::Value& item : list ? *list : json::Array()) {
            const auto* text = item.get<std::string>();
            const auto print = text ? hexNumber(*text) : std::nullopt;
            if (print) record.known.push_back(*print);
        }
    }
    if (const json::Value* stored = object->find("edit")) {
        auto edit = decodeAdjustments(*stored, random);
        if (!edit) return std::nullopt;
        record.edit = std::move(*edit);
    }
    if (failure || record.photo.empty()) return std::nullopt;
    return record;
}

std::string framed(std::string_view payload) {
    return fmt::format("{}{:016x} {:08x}\n{}", mark, payload.size(), crc32Of(payload), payload);
}

} // namespace

std::string encodedRecord(const JournalRecord& record) {
    json::Object object;
    object.set("photo", textValue(escapedPath(record.photo)));
    object.set("time", json::number(record.time));
    object.set("known", fingerprints(record.known));
    if (record.edit) {
        auto edit = encodeAdjustments(*record.edit);
        if (!edit) return {};
        object.set("edit", {std::move(*edit)});
    }
    return framed(json::print({std::move(object)}));
}

std::string beginningRecord() {
    return framed(beginning);
}

std::vector<JournalRecord> unsavedRecords(std::span<const std::string> files,
                                          RandomSource& random) {
    std::map<std::filesystem::path, JournalRecord> last;
    for (std::string_view journal : files)
        while (const auto payload = takePayload(journal)) {
            if (*payload == beginning) last.clear();
            auto record = decodedRecord(*payload, random);
            if (!record) continue;
            if (!record->edit)
                last.erase(record->photo);
            else
                last[record->photo] = std::move(*record);
        }
    std::vector<JournalRecord> records;
    for (auto& [photo, record] : last)
        records.push_back(std::move(record));
    return records;
}

std::vector<JournalRecord> unsavedRecords(const std::string& file, RandomSource& random) {
    return unsavedRecords(std::span(&file, 1), random);
}

std::filesystem::path nextJournalPath(const std::filesystem::path& path) {
    const std::string stem = path.stem().string();
    const std::string_view session = journalSession(stem);
    int number = 1;
    if (session.size() < stem.size())
        std::from_chars(stem.data() + session.size() + 1, stem.data() + stem.size(), number);
    return path.parent_path() /
           fmt::format("{}_{:04}{}", session, number + 1, path.extension().string());
}

std::string_view journalSession(std::string_view name) {
    return name.substr(0, name.find_first_of("_."));
}

} // namespace kelvaro
