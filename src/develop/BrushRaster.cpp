#include "develop/BrushRaster.h"

#include <algorithm>

namespace kelvaro {

namespace {

// A painted canvas as grey pixels. The painter is never changed again once a source reads it.
class BrushSource final : public PixelSource {
public:
    explicit BrushSource(std::shared_ptr<const BrushPainter> painter)
        : painter_(std::move(painter)) {}

    PixelRect extent() const override {
        const PixelSize size = painter_->canvas().size();
        return {0, 0, size.width, size.height};
    }
    bool hasAlpha() const override { return false; }
    std::size_t bytes() const override { return painter_->canvas().bytes(); }

    void read(const TileView& tile) const override {
        for (int i = 0; i < tile.rect.height; ++i) {
            const std::uint8_t* from =
                painter_->canvas().row(tile.rect.top() - 1 - i) + tile.rect.x;
            float* red = tile.row(0, i);
            for (int x = 0; x < tile.rect.width; ++x)
                red[x] = float(from[x]) / 255.0f;
            std::copy_n(red, tile.rect.width, tile.row(1, i));
            std::copy_n(red, tile.rect.width, tile.row(2, i));
        }
    }

private:
    std::shared_ptr<const BrushPainter> painter_;
};

} // namespace

BrushRaster::BrushRaster(std::size_t capacity) : capacity_(std::max<std::size_t>(capacity, 1)) {}

Image BrushRaster::image(const MaskComponent& brush, PixelSize size) {
    Entry entry = find(brush, size);
    if (entry.painter && entry.painter->strokes() == brush.strokes) return entry.image;
    // Painted outside the lock, on a copy: renders in progress still read the old canvas.
    std::shared_ptr<BrushPainter> painter;
    if (entry.painter && entry.painter->canGoOnTo(brush.strokes))
        painter = std::make_shared<BrushPainter>(*entry.painter);
    else
        painter = std::make_shared<BrushPainter>(size);
    painter->goOnTo(brush.strokes);
    entry = {brush.id, painter, imageFrom(std::make_shared<const BrushSource>(painter)), 0};
    keep(entry);
    return entry.image;
}

void BrushRaster::clear() {
    state_.with([](State& state) { state.entries.clear(); });
}

BrushRaster::Entry BrushRaster::find(const MaskComponent& brush, PixelSize size) {
    return state_.with([&](State& state) {
        for (Entry& entry : state.entries) {
            if (entry.component != brush.id || entry.painter->canvas().size() != size) continue;
            entry.lastUse = ++state.clock;
            return entry;
        }
        return Entry{};
    });
}

void BrushRaster::keep(Entry entry) {
    state_.with([&](State& state) {
        const PixelSize size = entry.painter->canvas().size();
        std::erase_if(state.entries, [&](const Entry& old) {
            return old.component == entry.component && old.painter->canvas().size() == size;
        });
        if (state.entries.size() >= capacity_)
            state.entries.erase(std::min_element(
                state.entries.begin(), state.entries.end(),
                [](const Entry& a, const Entry& b) { return a.lastUse < b.lastUse; }));
        entry.lastUse = ++state.clock;
        state.entries.push_back(std::move(entry));
    });
}

} // namespace kelvaro
