#include "recipe/Json.h"

#include "recipe/NumberText.h"

#include <algorithm>
#include <cmath>
#include <nlohmann/json.hpp>

namespace kelvaro::json {
namespace {

auto position(auto& members, std::string_view key) {
    return std::lower_bound(
        members.begin(), members.end(), key,
        [](const Member& m, std::string_view k) { return m.key.compare(k) < 0; });
}

bool isPlain(std::string_view text) {
    return std::all_of(text.begin(), text.end(),
                       [](char c) { return c >= ' ' && c <= '~' && c != '"' && c != '\\'; });
}

void printText(std::string& out, const std::string& text) {
    if (isPlain(text)) {
        out.append(1, '"').append(text).append(1, '"');
    } else {
        using Library = nlohmann::json;
        out += Library(text).dump(-1, ' ', false, Library::error_handler_t::replace);
    }
}

void breakLine(std::string& out, std::size_t depth) {
    out.append(1, '\n').append(2 * depth, ' ');
}

void printValue(std::string& out, const Value& value, std::size_t depth);

void printItem(std::string& out, const Value& item, std::size_t depth) {
    printValue(out, item, depth);
}

void printItem(std::string& out, const Member& member, std::size_t depth) {
    printText(out, member.key);
    out += ": ";
    printValue(out, member.value, depth);
}

void printItems(std::string& out, const auto& items, std::size_t depth, std::string_view brackets) {
    out += brackets[0];
    bool first = true;
    for (const auto& item : items) {
        if (!std::exchange(first, false)) out += ',';
        breakLine(out, depth + 1);
        printItem(out, item, depth + 1);
    }
    if (!items.empty()) breakLine(out, depth);
    out += brackets[1];
}

void printValue(std::string& out, const Value& value, std::size_t depth) {
    if (const auto* boolean = value.get<bool>())
        out += *boolean ? "true" : "false";
    else if (const auto* number = value.get<Number>())
        out += number->text;
    else if (const auto* text = value.get<std::string>())
        printText(out, *text);
    else if (const auto* array = value.get<Array>())
        printItems(out, *array, depth, "[]");
    else if (const auto* object = value.get<Object>()) {
        printItems(out, object->members(), depth, "{}");
    } else
        out += "null";
}

} // namespace

Object::Object(std::vector<Member> members) : members_(std::move(members)) {
    const auto isWrong = [](const Member& a, const Member& b) { return a.key >= b.key; };
    if (std::adjacent_find(members_.begin(), members_.end(), isWrong) == members_.end()) return;
    // Backwards and stable: of equal keys the last comes first, and is the one that `unique` keeps.
    std::reverse(members_.begin(), members_.end());
    std::stable_sort(members_.begin(), members_.end(),
                     [](const Member& a, const Member& b) { return a.key < b.key; });
    const auto end = std::unique(members_.begin(), members_.end(),
                                 [](const auto& a, const auto& b) { return a.key == b.key; });
    members_.erase(end, members_.end());
}

const Value* Object::find(std::string_view key) const {
    const auto found = position(members_, key);
    return found != members_.end() && found->key == key ? &found->value : nullptr;
}

Value* Object::find(std::string_view key) {
    return const_cast<Value*>(std::as_const(*this).find(key));
}

void Object::set(std::string_view key, Value value) {
    const auto place = position(members_, key);
    if (place != members_.end() && place->key == key)
        place->value = std::move(value);
    else
        members_.insert(place, Member{std::string(key), std::move(value)});
}

void Object::addMissing(const std::vector<Member>& members) {
    std::vector<Member> all;
    for (const Member& member : members)
        if (!find(member.key)) all.push_back(member); // one that is there may be large
    if (all.empty()) return;
    all.insert(all.end(), std::make_move_iterator(members_.begin()),
               std::make_move_iterator(members_.end()));
    *this = Object(std::move(all)); // sorted once, which keeps hostile counts cheap
}

Value number(double value) {
    KELVARO_REQUIRE(std::isfinite(value));
    return {Number{value, numberText(value)}};
}

std::string print(const Value& value) {
    std::string out;
    printValue(out, value, 0);
    out += '\n';
    return out;
}

} // namespace kelvaro::json
