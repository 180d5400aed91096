#include "base/Published.h"

#include <algorithm>

namespace kelvaro {

Subscription Changes::observe(Observer observer) {
    auto entry = std::make_shared<Entry>(Entry{std::move(observer)});
    entries_->push_back(entry);
    return {entries_, std::move(entry)};
}

void Changes::notify() const {
    const auto now = *entries_; // a copy: observers may come and go meanwhile
    for (const auto& entry : now) {
        if (!entry->call) continue;
        const Observer call = entry->call; // stays alive when the observer leaves during its call
        call();
    }
}

void Subscription::end() {
    if (!entry_) return;
    entry_->call = nullptr;
    if (const auto list = list_.lock()) std::erase(*list, entry_);
    entry_.reset();
    list_.reset();
}

} // namespace kelvaro
