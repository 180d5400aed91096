// What the library asks of those above it that work on the open photo: edits that the editor could
// not give it yet, and render work that can be prepared ahead and let go. Main thread.
#pragma once

#include "library/Photo.h"
#include "recipe/Adjustments.h"

#include <vector>

namespace kelvaro {

// Edits that the editor holds because they can't be saved: quitting must tell of them like of the
// library's own.
class HeldEdits {
public:
    virtual ~HeldEdits() = default;
    virtual std::vector<PhotoUrl> unsaved() const = 0;
    // One of their folders has been read again: perhaps it takes them now.
    virtual void retry() = 0;
    // "Quit Without Saving".
    virtual void discard() = 0;
};

// The render sessions that the renderer keeps of photos.
class RenderSessions {
public:
    virtual ~RenderSessions() = default;
    // Prepares a photo for the editor, instead of the one prepared before.
    virtual void prewarm(const Photo& photo, const Adjustments& adjustments) = 0;
    virtual void cancelPrewarm() = 0;
    // These photos are gone or have other content.
    virtual void forget(const std::vector<PhotoUrl>& photos) = 0;
};

} // namespace kelvaro
