// From the rows of a file to a decoded picture: chooses how the stored samples become linear
// Rec. 709, expands grey, undoes premultiplied alpha, converts where tables cannot say it, and
// turns the picture upright. Every decoder feeds one, row by row from the top of the stored
// picture.
#pragma once

#include "platform/codecs/ColourProfile.h"
#include "platform/codecs/DecodeJob.h"
#include "platform/codecs/Orientation.h"

#include <optional>
#include <vector>

namespace kelvaro {

enum class ColourModel {
    grey, // 1 channel
    rgb,  // 3
    cmyk, // 4, ink amounts: the largest value is full ink
    lab,  // 3 floats, L* 0 … 100, a* and b* as they are (D50)
};
int channelsOf(ColourModel model);

enum class AlphaKind { none, straight, premultiplied };

// What the rows that a decoder delivers look like: colour channels interleaved, alpha last.
struct StoredPicture {
    PixelSize size;          // before orientation
    PixelSize fullSize = {}; // where the rows are reduced; else empty
    ColourModel model = ColourModel::rgb;
    AlphaKind alpha = AlphaKind::none;
    SampleType type = SampleType::u8; // f32 for lab
    int orientation = 1;
    int fileBitsPerSample = 8;
    // The embedded profile, if any; one that is broken or of another model is passed over. Valid
    // during begin().
    std::span<const std::byte> icc;
    StandardColour standard; // of u8 and u16 samples without a profile; floats are linear then
    // Rows × channels × sample size of the unpacked file, and how far its compression can go at
    // most (checkClaimedSize); 0 where nothing safe is known.
    double largestExpansion = 0;
};

class PictureBuilder {
public:
    // Checks the size before it takes memory. Throws std::bad_alloc.
    static Result<PictureBuilder> begin(const DecodeJob& job, const StoredPicture& stored);

    // Where to put the next stored row, and the word that it is there.
    std::byte* row();
    void rowDone();
    // Where all stored rows are to be put, one after the other, when that is how the picture keeps
    // them; else null. Asked for before the first row.
    std::byte* rows();
    // After the last row.
    DecodedBitmap finish();

private:
    PictureBuilder(const StoredPicture& stored, ColourDecoding colour, std::string name,
                   SampleType outputType, std::unique_ptr<RowTransform> transform,
                   int transformChannels);
    template<class Sample>
    void convertRow(const Sample* from, Sample* to) const;
    template<class Sample>
    void transformRow(const Sample* from, float* to);
    template<class Sample>
    void finishRow();

    int width_;
    PixelSize fullSize_; // upright
    ColourModel model_;
    AlphaKind alpha_;
    SampleType storedType_;
    int fileBitsPerSample_;
    int transformChannels_; // what the transform reads: grey pixels are spread over an RGB
                            // profile's
    std::unique_ptr<RowTransform> transform_;
    bool isDirect_; // stored rows are output rows
    std::vector<std::byte> row_;
    std::vector<float> before_, after_; // around the transform
    ColourDecoding colour_;
    std::string profileName_;
    UprightBitmap upright_;
};

} // namespace kelvaro
