// Posts jobs to the main thread for an object that lives there: those that come after the object
// has gone are dropped. A member of that object; any thread may post while the object lives.
#pragma once

#include "base/MainThread.h"

#include <functional>
#include <memory>
#include <utility>

namespace kelvaro {

class MainPoster {
public:
    explicit MainPoster(MainThread& main) : main_(main) {}
    MainPoster(const MainPoster&) = delete;
    MainPoster& operator=(const MainPoster&) = delete;

    void post(std::function<void()> job) const {
        main_.post([alive = std::weak_ptr<char>(alive_), job = std::move(job)] {
            if (!alive.expired()) job();
        });
    }
    MainThread& main() const { return main_; }

private:
    MainThread& main_;
    std::shared_ptr<char> alive_ = std::make_shared<char>();
};

} // namespace kelvaro
