// One photo's way into one file: decode, develop, resize, imprint, border, encode, verify, move
// into place. Blocking; any thread; several at once. Leaves either the whole file or nothing.
#pragma once

#include "base/Clock.h"
#include "develop/AnalysisCache.h"
#include "develop/BrushRaster.h"
#include "develop/PhaseTimes.h"
#include "export/ExportNames.h"
#include "export/ExportSettings.h"
#include "export/ExportTexts.h"
#include "platform/MetadataCopier.h"
#include "platform/PhotoProperties.h"
#include "platform/Random.h"
#include "platform/RawEngine.h"
#include "platform/Renderer.h"
#include "render/RenderWork.h"

namespace kelvaro {

// What exports work with; all must outlive them.
struct ExportParts {
    FileSystem& files;
    RandomSource& random;
    ImageReader& reader;
    ImageWriter& writer;
    RawEngine& raw;
    PropertyReader& properties;
    MetadataCopier& metadata;
    Renderer& renderer;
    BrushRaster& brushes;
    RenderWork& work;
    const Clock& clock;
    // What was measured of photos while they were on the screen, so that they come out alike; may
    // be null.
    AnalysisCache* analyses = nullptr;
    bool yields = false; // the processor to what the user does in the same program
};

struct ExportJob {
    std::filesystem::path photo;
    Adjustments edit;
};

struct ExportedFile {
    std::filesystem::path url;
    PixelSize size;
    std::int64_t bytes = 0;
    bool operator==(const ExportedFile&) const = default;
};

// Why there is no file. A cancelled photo has not failed.
struct PhotoFailure {
    bool isCancelled = false;
    ExportError error = ExportError::unreadable;
    std::string detail; // a sentence that says what went wrong, for logs; may be empty
};

struct PhotoExport {
    const ExportParts& parts;
    const ExportSettings& settings;
    bool verifies = true; // reads the file back before it is moved into place
    // Of decode, analysis, metadata, render (with encoding where that is done in strips), encode,
    // verify, move.
    PhaseTimes* times = nullptr;
    const Cancellation* cancellation = nullptr;

    // `properties` are the photo's.
    Result<ExportedFile, PhotoFailure> run(const ExportJob& job, const ExportNames::Target& target,
                                           const PhotoProperties& properties) const;

private:
    // What will be written, not drawn yet.
    struct Finished {
        Image picture;
        BitmapFormat format;
        bool isReadOnce = false; // from edge to edge, nothing of it being needed twice
        std::string identity;    // of the photo's file when it was decoded
    };
    Result<void, PhotoFailure> checkTarget(const ExportJob& job,
                                           const ExportNames::Target& target) const;
    Result<Finished, PhotoFailure> finished(const ExportJob& job,
                                            const PhotoProperties& properties) const;
    Result<Image, PhotoFailure> developed(const ExportJob& job) const;
    Result<void, PhotoFailure> checkUnchanged(const ExportJob& job,
                                              const std::string& identity) const;
    Result<EncodeSettings, PhotoFailure> encodeSettings(const ExportJob& job, PixelSize size) const;
    Result<ExportedFile, PhotoFailure> written(const ExportNames::Target& target,
                                               const Finished& finished,
                                               const EncodeSettings& encoding) const;
    Result<Bitmap, PhotoFailure> rendered(const Finished& finished) const;
    Result<void, PhotoFailure> encodedWhole(const Bitmap& pixels, const EncodeSettings& encoding,
                                            PendingFile& file,
                                            const std::filesystem::path& place) const;
    Result<void, PhotoFailure> encodedInStrips(const Finished& finished,
                                               const EncodeSettings& encoding, PendingFile& file,
                                               const std::filesystem::path& place) const;
    template<class Rendered>
    Result<void, PhotoFailure> verified(const std::filesystem::path& place,
                                        const Rendered& rendered,
                                        const EncodeSettings& encoding) const;
    Result<void, PhotoFailure> checkNotCancelled() const;
};

} // namespace kelvaro
