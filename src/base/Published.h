// Values that others watch, all on the main thread: `Changes` is a list of observers, `Published` a
// value that tells them when it is written. An observer stays for as long as its `Subscription`.
#pragma once

#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace kelvaro {

class Subscription;

// Observers may subscribe, leave and notify again while they are being notified.
class Changes {
public:
    using Observer = std::function<void()>;

    Changes() = default;
    Changes(const Changes&) = delete;
    Changes& operator=(const Changes&) = delete;

    [[nodiscard]] Subscription observe(Observer observer);
    void notify() const;

private:
    friend class Subscription;
    struct Entry {
        Observer call; // empty once the subscription has ended
    };
    // Shared with the subscriptions, which may outlive the subject.
    std::shared_ptr<std::vector<std::shared_ptr<Entry>>> entries_ =
        std::make_shared<std::vector<std::shared_ptr<Entry>>>();
};

class Subscription {
public:
    Subscription() = default;
    Subscription(Subscription&&) noexcept = default;
    Subscription& operator=(Subscription&& other) noexcept {
        if (this != &other) {
            end();
            list_ = std::move(other.list_);
            entry_ = std::move(other.entry_);
        }
        return *this;
    }
    ~Subscription() { end(); }
    void end();

private:
    friend class Changes;
    using List = std::vector<std::shared_ptr<Changes::Entry>>;
    Subscription(std::weak_ptr<List> list, std::shared_ptr<Changes::Entry> entry)
        : list_(std::move(list)), entry_(std::move(entry)) {}

    std::weak_ptr<List> list_;
    std::shared_ptr<Changes::Entry> entry_;
};

// A value with its observers. Every write notifies; `update` does so only for a different value.
template<class T>
class Published {
public:
    Published() = default;
    explicit Published(T value) : value_(std::move(value)) {}

    const T& get() const { return value_; }
    const T& operator*() const { return value_; }
    const T* operator->() const { return &value_; }

    void set(T value) {
        value_ = std::move(value);
        changes_.notify();
    }
    // Returns whether the value was another one.
    bool update(T value) {
        if (value_ == value) return false;
        set(std::move(value));
        return true;
    }
    // Changes the value in place.
    template<class F>
    void edit(F&& change) {
        std::forward<F>(change)(value_);
        changes_.notify();
    }
    [[nodiscard]] Subscription observe(Changes::Observer observer) const {
        return changes_.observe(std::move(observer));
    }

private:
    T value_{};
    mutable Changes changes_; // observing does not change the value
};

} // namespace kelvaro
