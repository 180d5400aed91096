#include "platform/PhotoProperties.h"

#include <cmath>
#include <limits>

namespace kelvaro {

const PropertyValue* PropertyDictionary::find(const std::string& key) const {
    const auto found = values_.find(key);
    return found == values_.end() ? nullptr : &found->second;
}

void PropertyDictionary::set(std::string key, PropertyValue value) {
    values_.insert_or_assign(std::move(key), std::move(value));
}

std::optional<std::string> PropertyDictionary::text(const std::string& key) const {
    const auto* value = find(key);
    const auto* string = value ? std::get_if<std::string>(value) : nullptr;
    if (!string) return std::nullopt;
    const char* blanks = " \t\r\n\v\f";
    const auto zero = string->find('\0');
    const std::string whole = string->substr(0, zero);
    const auto first = whole.find_first_not_of(blanks);
    if (first == std::string::npos) return std::nullopt;
    return whole.substr(first, whole.find_last_not_of(blanks) - first + 1);
}

std::optional<double> PropertyDictionary::number(const std::string& key) const {
    const auto* value = find(key);
    if (!value) return std::nullopt;
    std::optional<double> number;
    if (const auto* whole = std::get_if<std::int64_t>(value)) number = double(*whole);
    if (const auto* real = std::get_if<double>(value)) number = *real;
    if (const auto* list = std::get_if<std::vector<double>>(value); list && !list->empty())
        number = list->front();
    if (number && !std::isfinite(*number)) return std::nullopt;
    return number;
}

std::optional<std::int64_t> PropertyDictionary::integer(const std::string& key) const {
    const auto value = number(key);
    if (!value || std::abs(*value) > 9e15) return std::nullopt;
    return static_cast<std::int64_t>(std::llround(*value));
}

std::optional<PixelSize> PhotoProperties::uprightSize() const {
    if (!storedSize || orientation < 5) return storedSize;
    return PixelSize{storedSize->height, storedSize->width};
}

} // namespace kelvaro
