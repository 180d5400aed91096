#include "recipe/RecipeCoding.h"

#include "recipe/AdjustmentCatalogue.h"
#include "recipe/MaskCoding.h"
#include "recipe/RecipeTexts.h"

#include <cmath>
#include <map>

namespace kelvaro {
namespace {

constexpr std::string_view versionKey = "processVersion";
constexpr std::string_view blackKey = "black";
constexpr std::string_view blackPointKey = "blackPoint"; // what older versions wrote instead
constexpr std::string_view masksKey = "masks";

bool isWhole(double value) {
    return std::isinf(value) || std::trunc(value) == value;
}

// Looks at the version before anything else: a later format may give every other key new meaning.
void checkVersion(const StoredFields& fields) {
    const double version = fields.number(versionKey, 0, StoredFields::NonFinite::keep);
    if (!isWhole(version)) {
        fields.note(versionKey, "a whole number");
    } else if (version > Adjustments::currentVersion) {
        fields.note(FailureKind::newerVersion, versionKey, texts::newerVersion);
    }
}

void decodeLegacyBlack(const StoredFields& fields, Adjustments& adjustments) {
    if (fields.has(blackKey)) return;
    const AdjustmentSpec* black = findStoredKey(blackKey);
    KELVARO_REQUIRE(black != nullptr);
    const double point = black->range.clamped(fields.number(blackPointKey, 0));
    black->setValue(adjustments, point == 0 ? 0 : -point);
}

Adjustments decodeFields(const StoredFields& fields, RandomSource& random) {
    Adjustments adjustments;
    for (const AdjustmentSpec& spec : storedKeyCatalogue()) {
        spec.setValue(adjustments, spec.range.clamped(fields.number(spec.id, 0)));
    }
    decodeLegacyBlack(fields, adjustments);
    fields.eachObject(masksKey, [&](const StoredFields& mask) {
        adjustments.masks.push_back(decodeMask(mask, random));
    });
    return adjustments;
}

void keepUnknownMembers(json::Object& encoded, const json::Object& existing) {
    encoded.addMissing(existing.members());
}

std::optional<Uuid> identifierOf(const json::Object& object) {
    std::optional<DecodeFailure> ignored;
    return StoredFields(object, ignored).identifier("id");
}

// The objects of the array under `key`, by identifier; of repeated ones the first.
std::map<Uuid, const json::Object*> objectsByIdentifier(const json::Object& holder,
                                                        std::string_view key) {
    std::map<Uuid, const json::Object*> found;
    const json::Value* value = holder.find(key);
    const auto* items = value ? value->get<json::Array>() : nullptr;
    if (!items) return found;
    for (const json::Value& item : *items) {
        const auto* object = item.get<json::Object>();
        const auto id = object ? identifierOf(*object) : std::nullopt;
        if (id) found.emplace(*id, object);
    }
    return found;
}

// Calls `keep` with each object of both arrays that has the same identifier in both.
template<class Keep>
void matchObjects(json::Object& encoded, const json::Object& existing, std::string_view key,
                  Keep keep) {
    const auto known = objectsByIdentifier(existing, key);
    json::Value* value = encoded.find(key);
    auto* items = value ? value->get<json::Array>() : nullptr;
    if (known.empty() || !items) return;
    for (json::Value& item : *items) {
        auto* object = item.get<json::Object>();
        const auto id = object ? identifierOf(*object) : std::nullopt;
        const auto found = id ? known.find(*id) : known.end();
        if (found != known.end()) keep(*object, *found->second);
    }
}

} // namespace

Result<Adjustments, DecodeFailure> decodeAdjustments(const json::Value& document,
                                                     RandomSource& random) {
    std::optional<DecodeFailure> failure;
    const auto* object = document.get<json::Object>();
    if (!object) {
        return Unexpected{
            DecodeFailure{{FailureKind::malformed, "The edit isn't a JSON object."}, ""}};
    }
    const StoredFields fields(*object, failure);
    checkVersion(fields);
    Adjustments adjustments;
    if (!failure) adjustments = decodeFields(fields, random);
    if (failure) return Unexpected{std::move(*failure)};
    return adjustments;
}

Result<Adjustments, DecodeFailure> decodeAdjustments(std::string_view text, RandomSource& random) {
    auto document = json::parse(text);
    if (!document) return Unexpected{DecodeFailure{std::move(document).error(), ""}};
    return decodeAdjustments(*document, random);
}

std::int64_t storedVersion(const json::Object& document) {
    const json::Value* value = document.find(versionKey);
    const auto* number = value ? value->get<json::Number>() : nullptr;
    constexpr double countable = 9'000'000'000'000'000'000; // fits into 64 bits with their sign
    if (!number || !isWhole(number->value) || std::abs(number->value) > countable) return 1;
    return static_cast<std::int64_t>(number->value);
}

Result<json::Object> encodeAdjustments(const Adjustments& adjustments) {
    const auto notFinite = [] {
        return fail(FailureKind::malformed, std::string(texts::notFinite));
    };
    std::vector<json::Member> members{
        {std::string(versionKey),
         {json::Number{static_cast<double>(adjustments.processVersion),
                       std::to_string(adjustments.processVersion)}}}};
    for (const AdjustmentSpec& spec : storedKeyCatalogue()) {
        const double value = spec.value(adjustments);
        if (!std::isfinite(value)) return notFinite();
        members.push_back({std::string(spec.id), json::number(value)});
    }
    json::Array masks;
    for (const LocalMask& mask : adjustments.masks) {
        if (!isFinite(mask)) return notFinite();
        masks.push_back({encodeMask(mask)});
    }
    if (!masks.empty()) members.push_back({std::string(masksKey), {std::move(masks)}});
    return json::Object(std::move(members));
}

Result<std::string> encodedText(const Adjustments& adjustments) {
    auto object = encodeAdjustments(adjustments);
    if (!object) return fail(std::move(object).error());
    return json::print({std::move(*object)});
}

void keepUnknownKeys(json::Object& encoded, const json::Object& existing) {
    std::vector<json::Member> unknown;
    for (const json::Member& member : existing.members())
        if (member.key != masksKey && member.key != blackPointKey) unknown.push_back(member);
    encoded.addMissing(unknown);
    matchObjects(encoded, existing, masksKey, [](json::Object& mask, const json::Object& before) {
        keepUnknownMembers(mask, before);
        matchObjects(mask, before, "components", keepUnknownMembers);
    });
}

} // namespace kelvaro
