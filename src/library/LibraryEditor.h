// What the library asks of the editor above it: a model of the one open photo, made when a photo is
// opened, and render work that can be prepared ahead and let go. Main thread.
#pragma once

#include "library/Photo.h"
#include "recipe/Adjustments.h"

#include <memory>
#include <vector>

namespace kelvaro {

// The editor open on one photo. Saves through the store; the destructor writes what is unsaved.
class LibraryEditor {
public:
    virtual ~LibraryEditor() = default;
    virtual const Photo& photo() const = 0;
    // The store has another recipe for the open photo than the editor gave it: pasted, reverted, or
    // written by another program.
    virtual void adjustmentsChanged(const Adjustments& adjustments) = 0;
};

class EditorFactory {
public:
    virtual ~EditorFactory() = default;
    virtual std::unique_ptr<LibraryEditor> open(const Photo& photo,
                                                const Adjustments& adjustments) = 0;
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
