#include "editor/KelvinField.h"

#include "editor/TypedNumber.h"
#include "recipe/Kelvin.h"
#include "recipe/RecipeTexts.h"

#include <cmath>

namespace kelvaro {
namespace {

// A comma with three digits behind it separates thousands here: nobody types kelvins so exactly.
std::string withoutThousands(std::string_view text) {
    std::string plain(text);
    const auto isDigit = [&](std::size_t i) {
        return i < plain.size() && plain[i] >= '0' && plain[i] <= '9';
    };
    for (std::size_t at = plain.find(','); at != std::string::npos; at = plain.find(',', at + 1)) {
        if (isDigit(at + 1) && isDigit(at + 2) && isDigit(at + 3) && !isDigit(at + 4)) {
            plain.erase(at, 1);
        }
    }
    return plain;
}

} // namespace

KelvinField kelvinField(double temperature, double asShotKelvin) {
    KelvinField field;
    field.title = texts::kelvinEntryTitle;
    field.prompt = texts::kelvinEntryPrompt;
    field.value = std::to_string(std::lround(kelvinFromShift(asShotKelvin, temperature)));
    field.rangeText = kelvinRangeText(asShotKelvin);
    return field;
}

std::optional<double> temperatureFromKelvinText(std::string_view text, double asShotKelvin) {
    const auto kelvin = typedNumber(withoutThousands(text), "K");
    if (!kelvin || !(*kelvin > 0)) return std::nullopt;
    return shiftFromKelvin(asShotKelvin, *kelvin);
}

} // namespace kelvaro
