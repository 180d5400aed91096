// How parts of the program ask for a job after a while; tests keep the jobs and run them when they
// like.
#pragma once

#include <chrono>
#include <functional>

namespace kelvaro {

// Runs the job once, on another thread than the main thread.
using RunLater = std::function<void(std::chrono::milliseconds delay, std::function<void()> job)>;

} // namespace kelvaro
