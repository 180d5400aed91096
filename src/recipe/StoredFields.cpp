#include "recipe/StoredFields.h"

#include "recipe/RecipeTexts.h"

#include <cmath>
#include <fmt/format.h>

namespace kelvaro {

const json::Value* StoredFields::member(std::string_view key) const {
    const json::Value* value = object_.find(key);
    return value && !value->isNull() ? value : nullptr;
}

double StoredFields::number(std::string_view key, double otherwise, NonFinite nonFinite) const {
    const json::Value* value = member(key);
    if (!value) return otherwise;
    const auto* number = value->get<json::Number>();
    if (!number) {
        note(key, "a number");
        return otherwise;
    }
    if (nonFinite == NonFinite::refuse && !std::isfinite(number->value)) {
        note(FailureKind::malformed, key, texts::notFinite);
        return otherwise;
    }
    return number->value;
}

bool StoredFields::boolean(std::string_view key, bool otherwise) const {
    const json::Value* value = member(key);
    if (!value) return otherwise;
    if (const auto* boolean = value->get<bool>()) return *boolean;
    note(key, "true or false");
    return otherwise;
}

std::string StoredFields::text(std::string_view key, std::string otherwise) const {
    const json::Value* value = member(key);
    if (!value) return otherwise;
    if (const auto* text = value->get<std::string>()) return *text;
    note(key, "a text");
    return otherwise;
}

std::optional<Uuid> StoredFields::identifier(std::string_view key) const {
    const json::Value* value = object_.find(key);
    const auto* text = value ? value->get<std::string>() : nullptr;
    return text ? uuidFromText(*text) : std::nullopt;
}

void StoredFields::note(std::string_view key, std::string_view expected) const {
    note(FailureKind::malformed, key, fmt::format("The edit's “{}” is not {}.", key, expected));
}

void StoredFields::note(FailureKind kind, std::string_view key, std::string_view message) const {
    if (!failure_) failure_ = DecodeFailure{{kind, std::string(message)}, std::string(key)};
}

} // namespace kelvaro
