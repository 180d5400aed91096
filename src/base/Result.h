// A value or the reason why there is none. Must be looked at; member names follow std::expected,
// which the compilers we support lack.
#pragma once

#include "base/Failure.h"
#include "base/Require.h"

#include <type_traits>
#include <utility>
#include <variant>

namespace kelvaro {

template<class E>
struct Unexpected {
    E error;
};

template<class E>
Unexpected(E) -> Unexpected<E>;

// The failure to return from a function whose result type is some Result<T>.
inline Unexpected<Failure> fail(FailureKind kind, std::string message) {
    return {Failure{kind, std::move(message)}};
}
inline Unexpected<Failure> fail(Failure failure) {
    return {std::move(failure)};
}

template<class T, class E = Failure>
class [[nodiscard]] Result {
public:
    using value_type = T;
    using error_type = E;

    // Converting on purpose, so that `return value;` and `return fail(…);` both work.
    template<class U = T>
    requires(std::is_constructible_v<T, U&&> && !std::is_same_v<std::decay_t<U>, Result>)
        Result(U&& value)
        : state_(std::in_place_index<0>, std::forward<U>(value)) {}
    template<class G>
    requires std::is_constructible_v<E, G&&> Result(Unexpected<G> unexpected)
        : state_(std::in_place_index<1>, std::move(unexpected.error)) {}

    bool has_value() const { return state_.index() == 0; }
    explicit operator bool() const { return has_value(); }

    T& value() & {
        KELVARO_REQUIRE(has_value());
        return *std::get_if<0>(&state_);
    }
    const T& value() const& {
        KELVARO_REQUIRE(has_value());
        return *std::get_if<0>(&state_);
    }
    T&& value() && {
        KELVARO_REQUIRE(has_value());
        return std::move(*std::get_if<0>(&state_));
    }
    const E& error() const& {
        KELVARO_REQUIRE(!has_value());
        return *std::get_if<1>(&state_);
    }
    E&& error() && {
        KELVARO_REQUIRE(!has_value());
        return std::move(*std::get_if<1>(&state_));
    }

    T& operator*() & { return value(); }
    const T& operator*() const& { return value(); }
    T&& operator*() && { return std::move(*this).value(); }
    T* operator->() { return &value(); }
    const T* operator->() const { return &value(); }

    template<class U>
    T value_or(U&& otherwise) const& {
        return has_value() ? value() : static_cast<T>(std::forward<U>(otherwise));
    }

private:
    std::variant<T, E> state_;
};

template<class E>
class [[nodiscard]] Result<void, E> {
public:
    using value_type = void;
    using error_type = E;

    Result() = default;
    template<class G>
    requires std::is_constructible_v<E, G&&> Result(Unexpected<G> unexpected)
        : failed_(true), error_(std::move(unexpected.error)) {}

    bool has_value() const { return !failed_; }
    explicit operator bool() const { return has_value(); }
    void value() const { KELVARO_REQUIRE(has_value()); }
    const E& error() const& {
        KELVARO_REQUIRE(failed_);
        return error_;
    }
    E&& error() && {
        KELVARO_REQUIRE(failed_);
        return std::move(error_);
    }

private:
    bool failed_ = false;
    E error_{};
};

} // namespace kelvaro
