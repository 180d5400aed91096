// What one view shows of the library: a state value that is read again after changes of the store,
// at most once for each turn of the main thread, and is published only when it differs. Main
// thread.
#pragma once

#include "base/MainThread.h"
#include "base/Published.h"

#include <functional>
#include <memory>

namespace kelvaro {

class LibraryStore;

template<class State>
class LibrarySlice {
public:
    using Read = std::function<State(const LibraryStore&)>;

    // `changes` are the store's; the store and `main` outlive the slice.
    LibrarySlice(const LibraryStore& lib, const Changes& changes, MainThread& main, Read read)
        : lib_(lib), main_(main), read_(std::move(read)), state_(read_(lib)) {
        subscription_ = changes.observe([this] { schedule(); });
    }

    const State& state() const { return *state_; }
    // Called when the state has become another one.
    [[nodiscard]] Subscription observe(Changes::Observer observer) const {
        return state_.observe(std::move(observer));
    }

private:
    void schedule() {
        if (scheduled_) return;
        scheduled_ = true;
        main_.post([this, alive = std::weak_ptr<char>(alive_)] {
            if (!alive.expired()) refresh();
        });
    }
    void refresh() {
        scheduled_ = false;
        state_.update(read_(lib_));
    }

    const LibraryStore& lib_;
    MainThread& main_;
    Read read_;
    Published<State> state_;
    bool scheduled_ = false; // a refresh has been posted
    std::shared_ptr<char> alive_ = std::make_shared<char>();
    Subscription subscription_;
};

} // namespace kelvaro
