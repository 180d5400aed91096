// Reading JSON. The library does the grammar, the escapes and the UTF-8 check and reports events;
// it stops at a number that overflows a double, so such numbers are found first and shown to it as
// 0.
#include "base/Require.h"
#include "recipe/Json.h"
#include "recipe/NumberText.h"

#include <cmath>
#include <new>
#include <nlohmann/json.hpp>

namespace kelvaro::json {
namespace {

using Library = nlohmann::json;

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

// Whether `text` is exactly one number of the JSON grammar.
bool isJsonNumber(std::string_view text) {
    const auto skipDigits = [&text] {
        std::size_t count = 0;
        while (count < text.size() && isDigit(text[count]))
            ++count;
        text.remove_prefix(count);
        return count > 0;
    };
    if (text.starts_with('-')) text.remove_prefix(1);
    if (text.starts_with('0'))
        text.remove_prefix(1);
    else if (!skipDigits())
        return false;
    if (text.starts_with('.')) {
        text.remove_prefix(1);
        if (!skipDigits()) return false;
    }
    if (text.starts_with('e') || text.starts_with('E')) {
        text.remove_prefix(1);
        if (text.starts_with('+') || text.starts_with('-')) text.remove_prefix(1);
        if (!skipDigits()) return false;
    }
    return text.empty();
}

bool overflows(std::string_view token) {
    constexpr std::size_t longestHarmless = 300; // digits without an exponent
    if (token.size() <= longestHarmless && token.find_first_of("eE") == token.npos) return false;
    if (!isJsonNumber(token)) return false; // the library will refuse it
    const auto value = numberFromText(token);
    return value && !std::isfinite(*value);
}

// The texts of all numbers in order, and the document that the library gets.
struct Numbers {
    std::vector<std::string_view> texts;
    std::string patched; // empty when no number overflows: then the document itself will do
};

Numbers findNumbers(std::string_view document) {
    Numbers numbers;
    std::size_t copied = 0;
    bool inText = false;
    for (std::size_t i = 0; i < document.size(); ++i) {
        const char c = document[i];
        if (inText) {
            if (c == '\\')
                ++i;
            else if (c == '"')
                inText = false;
        } else if (c == '"') {
            inText = true;
        } else if (c == '-' || isDigit(c)) {
            const std::size_t end =
                std::min(document.find_first_not_of("0123456789+-.eE", i), document.size());
            const std::string_view token = document.substr(i, end - i);
            if (numbers.texts.size() > mostValues) break; // refused when they are counted
            numbers.texts.push_back(token);
            if (overflows(token)) {
                numbers.patched.append(document.substr(copied, i - copied)).append(1, '0');
                copied = end;
            }
            i = end - 1;
        }
    }
    if (copied > 0) numbers.patched.append(document.substr(copied));
    return numbers;
}

// Builds the value from the library's events. The containers that are still open stand in `open_`.
class Builder final : public Library::json_sax_t {
public:
    explicit Builder(std::vector<std::string_view> numbers) : numbers_(std::move(numbers)) {}

    bool null() override { return add({nullptr}); }
    bool boolean(bool value) override { return add({value}); }
    bool number_integer(number_integer_t) override { return addNumber(); }
    bool number_unsigned(number_unsigned_t) override { return addNumber(); }
    bool number_float(number_float_t, const string_t&) override { return addNumber(); }
    bool string(string_t& text) override { return add({std::move(text)}); }
    bool binary(binary_t&) override { return false; }
    bool start_object(std::size_t) override { return begin(true); }
    bool start_array(std::size_t) override { return begin(false); }
    bool key(string_t& key) override {
        open_.back().key = std::move(key);
        return true;
    }
    bool end_object() override {
        std::vector<Member> members = std::move(open_.back().members);
        open_.pop_back();
        return place({Object(std::move(members))});
    }
    bool end_array() override {
        Array items = std::move(open_.back().items);
        open_.pop_back();
        return place({std::move(items)});
    }
    bool parse_error(std::size_t, const std::string&, const Library::exception&) override {
        return false;
    }

    bool tooDeep() const { return tooDeep_; }
    bool tooMany() const { return count_ > mostValues; }
    Value takeRoot() { return std::move(root_); }

private:
    struct Open {
        bool isObject = false;
        std::string key; // of the member whose value comes next
        std::vector<Member> members;
        Array items;
    };

    // Containers count when they begin, so that none is built in vain.
    bool begin(bool isObject) {
        if (++count_ > mostValues) return false;
        tooDeep_ = open_.size() >= deepestNesting;
        if (!tooDeep_) open_.push_back({isObject, {}, {}, {}});
        return !tooDeep_;
    }
    bool add(Value value) { return ++count_ <= mostValues && place(std::move(value)); }
    bool place(Value value) {
        if (open_.empty())
            root_ = std::move(value);
        else if (Open& top = open_.back(); top.isObject) {
            top.members.push_back({std::move(top.key), std::move(value)});
        } else
            top.items.push_back(std::move(value));
        return true;
    }
    bool addNumber() {
        if (next_ >= numbers_.size()) return false;
        const std::string_view text = numbers_[next_++];
        return add({Number{numberFromText(text).value_or(0), std::string(text)}});
    }

    std::vector<std::string_view> numbers_;
    std::size_t next_ = 0;
    std::vector<Open> open_;
    Value root_;
    std::size_t count_ = 0;
    bool tooDeep_ = false;
};

Result<Value> parseOrThrow(std::string_view text) {
    Numbers numbers = findNumbers(text);
    const std::string_view document = numbers.patched.empty() ? text : numbers.patched;
    Builder builder(std::move(numbers.texts));
    if (!Library::sax_parse(document.begin(), document.end(), &builder)) {
        if (builder.tooMany()) return fail(FailureKind::tooLarge, "The edit is too large.");
        if (builder.tooDeep())
            return fail(FailureKind::malformed, "The edit is nested too deeply.");
        return fail(FailureKind::malformed, "The edit isn't valid JSON.");
    }
    return builder.takeRoot();
}

} // namespace

Result<Value> parse(std::string_view text) {
    try {
        return parseOrThrow(text);
    } catch (const std::bad_alloc&) {
        return fail(FailureKind::outOfMemory, "There isn't enough memory to read the edit.");
    }
}

} // namespace kelvaro::json
