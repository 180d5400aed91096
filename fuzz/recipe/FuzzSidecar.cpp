// Any bytes as a sidecar: reading them never crashes, and what can be read survives being written,
// alone and over the document that it came from.
#include "base/Require.h"
#include "fakes/SeededRandom.h"
#include "recipe/RecipeCoding.h"

#include <cstdint>

using namespace kelvaro;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    SeededRandom random;
    const auto document = json::parse(text);
    if (!document) return 0;
    const std::string printed = json::print(*document);
    const auto reread = json::parse(printed);
    KELVARO_REQUIRE(reread.has_value() && json::print(*reread) == printed);

    const auto adjustments = decodeAdjustments(*document, random);
    if (!adjustments) return 0;
    const auto encoded = encodedText(*adjustments);
    KELVARO_REQUIRE(encoded.has_value());
    const auto again = decodeAdjustments(*encoded, random);
    KELVARO_REQUIRE(again.has_value() && *again == *adjustments);

    auto merged = encodeAdjustments(*adjustments).value();
    keepUnknownKeys(merged, *document->get<json::Object>());
    const auto fromMerged = decodeAdjustments(json::print({std::move(merged)}), random);
    KELVARO_REQUIRE(fromMerged.has_value() && *fromMerged == *adjustments);
    return 0;
}
