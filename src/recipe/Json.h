// A JSON document as a value that keeps what it does not understand: numbers keep their text, so
// that one that no double can hold survives a rewrite. Objects are sorted by key; of a repeated key
// the last value counts. Reading never throws and is bounded in depth; printing is pretty and
// sorted.
#pragma once

#include "base/Result.h"

#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace kelvaro::json {

struct Value;
struct Member;

struct Number {
    double value = 0; // infinite where the text is too large for a double
    std::string text;
};

using Array = std::vector<Value>;

class Object {
public:
    Object() = default;
    // Sorts; of members with equal keys the last stays.
    explicit Object(std::vector<Member> members);

    const std::vector<Member>& members() const { return members_; }
    // Null when there is no such key.
    const Value* find(std::string_view key) const;
    Value* find(std::string_view key);
    void set(std::string_view key, Value value);
    // Takes over those members whose keys are not there yet.
    void addMissing(const std::vector<Member>& members);

private:
    std::vector<Member> members_;
};

struct Value {
    std::variant<std::nullptr_t, bool, Number, std::string, Array, Object> content;

    bool isNull() const { return std::holds_alternative<std::nullptr_t>(content); }
    template<class T>
    const T* get() const {
        return std::get_if<T>(&content);
    }
    template<class T>
    T* get() {
        return std::get_if<T>(&content);
    }
};

struct Member {
    std::string key;
    Value value;
};

// The number with its shortest text; `value` must be finite.
Value number(double value);

// Documents nested deeper than this are refused, so that walking one never exhausts the stack.
inline constexpr std::size_t deepestNesting = 256;
// And those with more values than this: two bytes of text can ask for sixty of memory.
inline constexpr std::size_t mostValues = 2'400'000;

// One whole document of RFC 8259 in UTF-8. Fails with `malformed`, `tooLarge` or `outOfMemory`.
Result<Value> parse(std::string_view text);

// Indented by two blanks, keys in byte order, a line break at the end. Text that is not UTF-8 has
// its wrong bytes replaced by U+FFFD.
std::string print(const Value& value);

} // namespace kelvaro::json
