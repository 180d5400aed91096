// A QApplication that times everything the event loop does: what holds the main thread longer than
// a limit is kept with what was running then, as the thread's own stack tells.
#pragma once

#include <QApplication>

#include <array>
#include <atomic>
#include <functional>
#include <string>
#include <thread>
#include <vector>

namespace kelvaro {

class BlockWatch final : public QApplication {
public:
    struct Block {
        double ms = 0;     // on the clock
        double busyMs = 0; // of the processor, for a machine that others use too
        std::string what;  // the receiver and the event
        std::string where; // our own functions that were running, innermost first
    };

    // Keeps blocks from `limitMs` on.
    BlockWatch(int& argc, char** argv, double limitMs = 20);
    ~BlockWatch() override;

    bool notify(QObject* receiver, QEvent* event) override;
    // Called after each painting of a widget.
    std::function<void(QObject* widget)> onPainted;

    void clear() { blocks_.clear(); }
    // Those with the most work first.
    std::vector<Block> blocks() const;

private:
    void watch();
    std::string sampledStack();

    const double limitMs_;
    int depth_ = 0;
    std::atomic<std::int64_t> since_ = 0; // ns; 0 while the thread waits for events
    std::atomic<bool> ends_ = false;
    std::vector<Block> blocks_;
    std::thread watcher_;
};

// Nanoseconds of the monotonic clock, the same in all processes.
std::int64_t monotonicNs();
// Nanoseconds that this thread has been at work.
std::int64_t busyNs();

} // namespace kelvaro
