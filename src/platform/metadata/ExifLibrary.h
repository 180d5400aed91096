// Exiv2 as this folder uses it: started once, silent, and with its exceptions ended where they
// arise.
#pragma once

#include <exception>

namespace kelvaro {

// Once per process; further calls do nothing. Thread-safe.
void startExifLibrary();

// Runs a part of the work that may fail alone; false when it threw. Parts that fail leave the rest
// standing.
template<class F>
bool guarded(F&& part) {
    try {
        part();
        return true;
    } catch (const std::exception&) {
    } catch (...) {
    }
    return false;
}

} // namespace kelvaro
