// Reading typed members of a stored object. An absent member, or null, gives the default; a wrong
// type, or a number that must be finite and is not, is noted once and the reader goes on with the
// default, so that decoding reads straight down and looks at the failure at the end.
#pragma once

#include "recipe/Json.h"
#include "recipe/RecipeCoding.h"

#include <optional>

namespace kelvaro {

class StoredFields {
public:
    enum class NonFinite { refuse, keep };

    StoredFields(const json::Object& object, std::optional<DecodeFailure>& failure)
        : object_(object), failure_(failure) {}

    bool has(std::string_view key) const { return member(key) != nullptr; }
    double number(std::string_view key, double otherwise,
                  NonFinite nonFinite = NonFinite::refuse) const;
    bool boolean(std::string_view key, bool otherwise) const;
    std::string text(std::string_view key, std::string otherwise) const;

    // None, and no failure, for anything that is not the text of an identifier.
    std::optional<Uuid> identifier(std::string_view key) const;

    // Calls `use` with the fields of the object under the key; not at all when it is absent.
    template<class Use>
    void object(std::string_view key, Use use) const {
        const json::Value* value = member(key);
        if (!value) return;
        if (const auto* found = value->get<json::Object>())
            use(StoredFields(*found, failure_));
        else
            note(key, "an object");
    }

    // Calls `use` for every object of the array under the key, until something has failed.
    template<class Use>
    void eachObject(std::string_view key, Use use) const {
        const json::Value* value = member(key);
        if (!value) return;
        const auto* items = value->get<json::Array>();
        if (!items) return note(key, "a list");
        for (const json::Value& item : *items) {
            if (failure_) return;
            if (const auto* found = item.get<json::Object>())
                use(StoredFields(*found, failure_));
            else
                note(key, "a list of objects");
        }
    }

    void note(std::string_view key, std::string_view expected) const;
    void note(FailureKind kind, std::string_view key, std::string_view message) const;

private:
    const json::Value* member(std::string_view key) const; // null for an absent one and for null

    const json::Object& object_;
    std::optional<DecodeFailure>& failure_;
};

} // namespace kelvaro
