// Names of the tags that RAW files are read by.
#pragma once

#include <cstdint>

namespace kelvaro::tiff {

// Tag numbers of TIFF 6.0, TIFF/EP and DNG 1.6.
enum Tag : std::uint16_t {
    interoperabilityIndex = 1,
    panasonicJpeg = 46, // the whole JPEG as the value of one tag
    newSubfileType = 254,
    imageWidth = 256,
    imageLength = 257,
    bitsPerSample = 258,
    compression = 259,
    photometricInterpretation = 262,
    stripOffsets = 273,
    orientation = 274,
    samplesPerPixel = 277,
    rowsPerStrip = 278,
    stripByteCounts = 279,
    planarConfiguration = 284,
    predictor = 317,
    tileWidth = 322,
    tileLength = 323,
    tileOffsets = 324,
    tileByteCounts = 325,
    sampleFormat = 339,
    jpegInterchangeFormat = 513,
    jpegInterchangeFormatLength = 514,
    cfaRepeatPatternDim = 33421,
    cfaPattern = 33422,
    colorSpace = 40961,
    dngVersion = 50706,
    cfaPlaneColor = 50710,
    linearizationTable = 50712,
    blackLevelRepeatDim = 50713,
    blackLevel = 50714,
    blackLevelDeltaH = 50715,
    blackLevelDeltaV = 50716,
    whiteLevel = 50717,
    defaultScale = 50718,
    defaultCropOrigin = 50719,
    defaultCropSize = 50720,
    colorMatrix1 = 50721,
    colorMatrix2 = 50722,
    cameraCalibration1 = 50723,
    cameraCalibration2 = 50724,
    analogBalance = 50727,
    asShotNeutral = 50728,
    asShotWhiteXy = 50729,
    baselineExposure = 50730,
    calibrationIlluminant1 = 50778,
    calibrationIlluminant2 = 50779,
    activeArea = 50829,
    cameraCalibrationSignature = 50931,
    profileCalibrationSignature = 50932,
    forwardMatrix1 = 50964,
    forwardMatrix2 = 50965,
    previewColorSpace = 50970, // of a DNG
    opcodeList1 = 51008,
    opcodeList2 = 51009,
    opcodeList3 = 51022,
    baselineExposureOffset = 51109,
};

} // namespace kelvaro::tiff
