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
    bool verifies = true;        // reads the file back before it is moved into place
    PhaseTimes* times = nullptr; // of decode, analysis, render, encode, verify, move
    const Cancellation* cancellation = nullptr;

    // `properties` are the photo's.
    Result<ExportedFile, PhotoFailure> run(const ExportJob& job, const ExportNames::Target& target,
                                           const PhotoProperties& properties) const;

private:
    struct Rendered {
        Bitmap pixels;
        std::string identity; // of the photo's file when it was decoded
    };
    Result<void, PhotoFailure> checkTarget(const ExportJob& job,
                                           const ExportNames::Target& target) const;
    Result<Rendered, PhotoFailure> rendered(const ExportJob& job,
                                            const PhotoProperties& properties) const;
    Result<Image, PhotoFailure> developed(const ExportJob& job) const;
    Result<void, PhotoFailure> checkUnchanged(const ExportJob& job,
                                              const std::string& identity) const;
    Result<EncodeSettings, PhotoFailure> encodeSettings(const ExportJob& job,
                                                        const Bitmap& pixels) const;
    Result<ExportedFile, PhotoFailure> written(const ExportNames::Target& target,
                                               const Bitmap& pixels,
                                               const EncodeSettings& encoding) const;
    Result<void, PhotoFailure> verified(const std::filesystem::path& file, const Bitmap& pixels,
                                        const EncodeSettings& encoding) const;
    Result<void, PhotoFailure> checkNotCancelled() const;
};

} // namespace kelvaro
