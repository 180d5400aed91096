// The words that people read about adjustments, copying and pasting. Key symbols and names of the
// system stand here as they are kept; what is shown goes through the text service of the platform.
#pragma once

#include <string_view>

namespace kelvaro::texts {

inline constexpr std::string_view copyAdjustments = "Copy Adjustments";
inline constexpr std::string_view copyAdjustmentsTip = "Copy Adjustments (⇧⌘C)";
inline constexpr std::string_view pasteAdjustments = "Paste Adjustments";
inline constexpr std::string_view pasteAdjustmentsTip = "Paste Adjustments (⇧⌘V)";
inline constexpr std::string_view pasteAdjustmentsTo = "Paste Adjustments to";
inline constexpr std::string_view revertToOriginal = "Revert to Original";
inline constexpr std::string_view revertToOriginalTip =
    "Clears every adjustment, including the crop; masks stay (⌘Z undoes)";
inline constexpr std::string_view removeAllMasks = "Remove All Masks";

inline constexpr std::string_view sliderTip =
    "Drag anywhere on a slider's row. It catches at zero; double-click to reset, hold ⌥ for fine "
    "control.";
inline constexpr std::string_view blackAndWhiteTip =
    "Black & White: keeps each colour's brightness. Temperature and Tint still shape the tones.";
inline constexpr std::string_view straightenTip = "Straighten (double-click the value to reset)";
inline constexpr std::string_view kelvinEntryTip = "Click to enter a temperature in Kelvin";
inline constexpr std::string_view kelvinEntryTitle = "Temperature in Kelvin";
inline constexpr std::string_view kelvinEntryPrompt = "Enter temperature in Kelvin";

// Shown in the Basic panel while `brightness` is not 0, and in the Detail panel for other than RAW.
inline constexpr std::string_view brightnessNote =
    "Earlier Brightness adjustment retained. Reset Basic to clear it.";
inline constexpr std::string_view detailNote =
    "Detail uses Apple's RAW engine and has no effect on JPEG or HEIC files.";

inline constexpr std::string_view adjustmentsCopied = "Adjustments copied";

inline constexpr std::string_view newerVersion = "This edit needs a newer Kelvaro.";
inline constexpr std::string_view notFinite = "Adjustment must be finite.";

} // namespace kelvaro::texts
