// What the list of masks does, as functions on a recipe: each changes it in place and does nothing
// for an identifier that is not there. Names are made to differ.
#pragma once

#include "base/Geometry.h"
#include "platform/Random.h"
#include "recipe/Adjustments.h"

#include <optional>
#include <string>

namespace kelvaro {

inline constexpr std::size_t mostMaskNameBytes = 200;

LocalMask* findMask(Adjustments& edit, const Uuid& mask);
const LocalMask* findMask(const Adjustments& edit, const Uuid& mask);
MaskComponent* findShape(LocalMask& mask, const Uuid& shape);

// "Brush", "Linear", "Radial"; then "Brush 2" and so on.
std::string newMaskName(const Adjustments& edit, MaskComponent::Kind kind);

// A mask with one shape at the end of the list: a gradient or an ellipse lies in the middle of the
// photo, a brush has no stroke yet. Returns the mask's identifier.
Uuid addMask(Adjustments& edit, MaskComponent::Kind kind, PixelSize photo, RandomSource& random);
// Another shape for a mask; the identifier of the shape, none where there is no such mask.
std::optional<Uuid> addShape(Adjustments& edit, const Uuid& mask, MaskComponent::Kind kind,
                             MaskComponent::Mode mode, PixelSize photo, RandomSource& random);
void removeShape(Adjustments& edit, const Uuid& mask, const Uuid& shape);

void removeMask(Adjustments& edit, const Uuid& mask);
// A copy with identifiers of its own right after it, "… copy"; its identifier.
std::optional<Uuid> duplicateMask(Adjustments& edit, const Uuid& mask, RandomSource& random);
// To a place counted before anything is moved, 0 … count.
void moveMask(Adjustments& edit, const Uuid& mask, std::size_t to);
// Without blanks around it, line breaks or more than fits a row; an empty name changes nothing.
void renameMask(Adjustments& edit, const Uuid& mask, std::string name);
void setMaskEnabled(Adjustments& edit, const Uuid& mask, bool enabled);
void invertMask(Adjustments& edit, const Uuid& mask);
void invertShape(Adjustments& edit, const Uuid& mask, const Uuid& shape);
void setMaskAmount(Adjustments& edit, const Uuid& mask, double percent); // 0 … 100
void resetMaskControls(Adjustments& edit, const Uuid& mask);

} // namespace kelvaro
