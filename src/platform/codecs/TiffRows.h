// Packed rows of one TIFF picture from the top down, however the file cuts it up: strips or tiles,
// samples together or in planes. Holds one row, one band of strips or one row of tiles.
#pragma once

#include "platform/codecs/TiffLayout.h"

#include <memory>

namespace kelvaro {

class TiffRows {
public:
    // Checks the sizes that the buffers need. Throws std::bad_alloc.
    static Result<TiffRows> begin(const DecodeJob& job, TIFF* tiff, const TiffLayout& layout);

    // Makes row `y` available; rows are asked for in order, each once.
    Result<void> load(int y);
    // The packed samples of the loaded row: of one plane, or of all samples together.
    const std::byte* row(int plane) const;

private:
    TiffRows(const DecodeJob& job, TIFF* tiff, const TiffLayout& layout);
    bool loadStrips(int y);
    bool loadTiles(int y);
    std::byte* bandRow(int plane, int row) const;

    const DecodeJob* job_;
    TIFF* tiff_;
    TiffLayout layout_;
    std::size_t rowBytes_ = 0; // of one plane
    int bandRows_ = 1;
    int firstRow_ = 0; // of the band
    int current_ = 0;
    std::unique_ptr<std::byte[]> band_, tile_;
};

} // namespace kelvaro
