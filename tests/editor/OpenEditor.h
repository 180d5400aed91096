// An editor with a photo open, of 1000 × 600 unless told otherwise, without a window or a disk.
#pragma once

#include "editor/EditorModel.h"
#include "editor/FakeEditStore.h"
#include "fakes/ManualClock.h"

namespace kelvaro::test {

struct OpenEditor {
    explicit OpenEditor(const Adjustments& stored = {}, PixelSize size = {1000, 600}) {
        photo.size = size;
        model.open(photo, stored);
    }

    EditedPhoto photo{"/photos/a.jpg", {1000, 600}, false, 5000, 0};
    FakeEditStore store;
    ManualClock clock;
    std::vector<std::string> notices;
    EditSaver saver{store,
                    nullptr,
                    clock,
                    {[] {}, [this](std::string text) { notices.push_back(std::move(text)); }}};
    int reloads = 0;
    EditorModel model{saver,
                      {[] {}, [this](std::string text) { notices.push_back(std::move(text)); },
                       [this] { ++reloads; }}};
};

inline void setExposure(EditorModel& model, double stops) {
    model.change("Exposure", [stops](Adjustments& edit) { edit.exposure = stops; });
}

} // namespace kelvaro::test
