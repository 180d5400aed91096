#include "editor/SharedEdit.h"

#include <algorithm>
#include <set>

namespace kelvaro {
namespace {

// Takes the strokes of every shape out of a recipe and puts them back at the end.
class StrokesAside {
public:
    explicit StrokesAside(Adjustments& edit) : edit_(edit) {
        forEach([this](MaskComponent& shape) { aside_.push_back(std::move(shape.strokes)); });
        forEach([](MaskComponent& shape) { shape.strokes.clear(); });
    }
    ~StrokesAside() {
        auto next = aside_.begin();
        forEach([&](MaskComponent& shape) { shape.strokes = std::move(*next++); });
    }
    StrokesAside(const StrokesAside&) = delete;
    StrokesAside& operator=(const StrokesAside&) = delete;

    const std::vector<BrushStroke>& of(std::size_t shape) const { return aside_[shape]; }

    template<class Use>
    void forEach(Use use) {
        for (LocalMask& mask : edit_.masks)
            for (MaskComponent& shape : mask.components)
                use(shape);
    }

private:
    Adjustments& edit_;
    std::vector<std::vector<BrushStroke>> aside_;
};

} // namespace

SharedEdit::SharedEdit() : bare_(std::make_shared<const Adjustments>()) {}

const SharedEdit::Shape* SharedEdit::shape(const Uuid& id) const {
    const auto found = std::ranges::find(shapes_, id, &Shape::id);
    return found == shapes_.end() ? nullptr : &*found;
}

SharedEdit SharedEdit::of(Adjustments& edit, const SharedEdit& similar) {
    SharedEdit result;
    StrokesAside strokes(edit);
    result.bare_ = std::make_shared<const Adjustments>(edit);
    std::size_t number = 0;
    strokes.forEach([&](MaskComponent& component) {
        const std::vector<BrushStroke>& own = strokes.of(number++);
        const Shape* before = similar.shape(component.id);
        result.shapes_.push_back({component.id, result.strokes_.size(), own.size()});
        for (std::size_t i = 0; i < own.size(); ++i) {
            const Stroke known =
                before && i < before->count ? similar.strokes_[before->first + i] : nullptr;
            result.strokes_.push_back(
                known && *known == own[i] ? known : std::make_shared<const BrushStroke>(own[i]));
        }
    });
    return result;
}

Adjustments SharedEdit::value() const {
    Adjustments edit = *bare_;
    auto shape = shapes_.begin();
    for (LocalMask& mask : edit.masks) {
        for (MaskComponent& component : mask.components) {
            component.strokes.reserve(shape->count);
            for (std::size_t i = 0; i < shape->count; ++i)
                component.strokes.push_back(*strokes_[shape->first + i]);
            ++shape;
        }
    }
    return edit;
}

std::size_t SharedEdit::sharedStrokes(const SharedEdit& other) const {
    const std::set<Stroke> theirs(other.strokes_.begin(), other.strokes_.end());
    return static_cast<std::size_t>(
        std::ranges::count_if(strokes_, [&](const Stroke& s) { return theirs.count(s) > 0; }));
}

bool SharedEdit::operator==(const SharedEdit& other) const {
    return (bare_ == other.bare_ || *bare_ == *other.bare_) && shapes_ == other.shapes_ &&
           std::ranges::equal(strokes_, other.strokes_,
                              [](const Stroke& a, const Stroke& b) { return a == b || *a == *b; });
}

} // namespace kelvaro
