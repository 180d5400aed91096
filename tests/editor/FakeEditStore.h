// A disk for recipes whose writes wait until a test lets them end, well or badly.
#pragma once

#include "editor/EditStore.h"

#include <deque>
#include <gtest/gtest.h>

namespace kelvaro::test {

class FakeEditStore final : public EditStore {
public:
    void save(SaveRequest request, Saved done) override {
        waiting.push_back({std::move(request), std::move(done)});
    }
    void keep(const std::filesystem::path&, SharedEdit edit, Kept done) override {
        kept.push_back(edit.value());
        done(std::string("other-1"));
    }
    // Ends the oldest write.
    void end(Result<SaveOutcome> outcome = SaveOutcome{}) {
        ASSERT_FALSE(waiting.empty());
        auto [request, done] = std::move(waiting.front());
        waiting.pop_front();
        if (outcome) saved.push_back(request.edit.value());
        done(std::move(outcome));
    }
    void endAll() {
        while (!waiting.empty())
            end();
    }

    struct Waiting {
        SaveRequest request;
        Saved done;
    };
    std::deque<Waiting> waiting;
    std::vector<Adjustments> saved, kept;
};

} // namespace kelvaro::test
