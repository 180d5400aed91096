#include "editor/EditHistory.h"

#include "base/Require.h"

namespace kelvaro {

void EditHistory::push(SharedEdit edit, std::string name) {
    steps_.erase(steps_.begin() + static_cast<std::ptrdiff_t>(at_) + 1, steps_.end());
    steps_.push_back({std::move(edit), std::move(name)});
    ++at_;
}

void EditHistory::undo() {
    KELVARO_REQUIRE(canUndo());
    --at_;
}

void EditHistory::redo() {
    KELVARO_REQUIRE(canRedo());
    ++at_;
}

} // namespace kelvaro
