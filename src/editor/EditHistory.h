// The steps of one photo's edit in this session: whole recipes, without limit. Main thread.
#pragma once

#include "editor/SharedEdit.h"

#include <string>
#include <vector>

namespace kelvaro {

class EditHistory {
public:
    explicit EditHistory(SharedEdit start) : steps_{{std::move(start), {}}} {}

    const SharedEdit& current() const { return steps_[at_].edit; }
    // Drops what was undone. `name` is what the step did: "Exposure".
    void push(SharedEdit edit, std::string name);

    bool canUndo() const { return at_ > 0; }
    bool canRedo() const { return at_ + 1 < steps_.size(); }
    // What undo and redo would take back or do again; empty where they can't.
    std::string undoName() const { return canUndo() ? steps_[at_].name : std::string(); }
    std::string redoName() const { return canRedo() ? steps_[at_ + 1].name : std::string(); }
    void undo(); // only where it can
    void redo();

    std::size_t count() const { return steps_.size(); }

private:
    struct Step {
        SharedEdit edit;
        std::string name;
    };
    std::vector<Step> steps_;
    std::size_t at_ = 0;
};

} // namespace kelvaro
