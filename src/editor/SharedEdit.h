// A recipe as history and journal keep it: immutable, cheap to copy, and sharing every brush stroke
// with the version before it, so that hundreds of steps of a painted mask take little more memory
// than the last one. May be handed between threads.
#pragma once

#include "recipe/Adjustments.h"

#include <memory>
#include <vector>

namespace kelvaro {

class SharedEdit {
public:
    SharedEdit(); // the unedited recipe

    // Strokes that `similar` has at the same place of the same shape are shared with it. `edit` is
    // used as working space to save a copy of its strokes, and is as before afterwards.
    static SharedEdit of(Adjustments& edit, const SharedEdit& similar);
    static SharedEdit of(Adjustments&& edit) { return of(edit, SharedEdit()); }

    Adjustments value() const;
    // The recipe's values, and its masks without their strokes.
    const Adjustments& withoutStrokes() const { return *bare_; }
    std::size_t strokeCount() const { return strokes_.size(); }
    // How many of its strokes are the very ones of `other`.
    std::size_t sharedStrokes(const SharedEdit& other) const;

    // By value; quick where strokes are shared.
    bool operator==(const SharedEdit& other) const;

private:
    using Stroke = std::shared_ptr<const BrushStroke>;
    struct Shape {
        Uuid id;
        std::size_t first = 0, count = 0; // its strokes
        bool operator==(const Shape&) const = default;
    };
    const Shape* shape(const Uuid& id) const;

    std::shared_ptr<const Adjustments> bare_;
    std::vector<Shape> shapes_; // of all masks, in order
    std::vector<Stroke> strokes_;
};

} // namespace kelvaro
