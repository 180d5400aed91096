// Writes analyses into the folder that it is given, over and over, until somebody ends it; a byte
// on standard output for each that it begins.
#include "develop/AnalysisCache.h"
#include "develop/CachedPhotos.h"
#include "platform/imaging/TiledRenderer.h"
#include "platform/system/PosixFileSystem.h"

#include <unistd.h>

int main(int, char** argv) {
    using namespace kelvaro;
    PosixFileSystem files;
    const auto renderer = makeTiledRenderer(1);
    for (int number = 0;; number = (number + 1) % test::kCachedPhotos) {
        AnalysisCache cache(files, argv[1], *renderer, {.memoryBytes = 0});
        const ImageSource photo = test::cachedPhoto(number);
        photo.analysis->adopt(test::cachedMeasurement(number));
        cache.remember(photo);
        if (::write(STDOUT_FILENO, "x", 1) != 1) return 0;
        cache.waitForWrites();
    }
}
