// The thread of the window's event loop as the main thread of everything else.
#pragma once

#include "base/MainThread.h"

#include <QObject>

namespace kelvaro {

class QtMainThread final : public MainThread {
public:
    // Made on the thread that runs the event loop.
    QtMainThread() = default;
    void post(std::function<void()> job) override;
    bool isCurrent() const override;

private:
    QObject receiver_; // jobs end with it
};

} // namespace kelvaro
