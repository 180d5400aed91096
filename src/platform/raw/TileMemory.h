// Memory of developed tiles that waits for the next tile. The streams of one photo share it: the
// one that is measured is over when the one that is written begins. Any thread.
#pragma once

#include "platform/Raster.h"

#include <mutex>
#include <utility>
#include <vector>

namespace kelvaro {

class TileMemory {
public:
    // At least so many floats. Throws std::bad_alloc.
    AlignedFloats take(std::size_t floats) {
        {
            const std::lock_guard guard(lock_);
            while (!free_.empty()) {
                AlignedFloats memory = std::move(free_.back());
                free_.pop_back();
                if (memory.size() >= floats) return memory;
            }
        }
        return AlignedFloats(floats);
    }
    void giveBack(AlignedFloats memory) {
        const std::lock_guard guard(lock_);
        free_.push_back(std::move(memory));
    }

private:
    std::mutex lock_;
    std::vector<AlignedFloats> free_;
};

} // namespace kelvaro
