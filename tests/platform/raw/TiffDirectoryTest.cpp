#include "platform/raw/TiffDirectory.h"
#include "platform/raw/DngTags.h"
#include "platform/raw/SyntheticDng.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace kelvaro {
namespace {

ReadAt from(const std::vector<std::uint8_t>& data) {
    return [&data](std::uint64_t offset, std::span<std::byte> out) -> std::size_t {
        if (offset >= data.size()) return 0;
        const std::size_t count = std::min(out.size(), data.size() - std::size_t(offset));
        std::memcpy(out.data(), data.data() + offset, count);
        return count;
    };
}

TEST(TiffDirectory, ReadsWhatWasWritten) {
    test::TiffWriter writer;
    writer.shorts(258, {16, 15, 14});
    writer.rationals(50721, {0.5, -1.25});
    writer.text(271, "Maker");
    const auto data = writer.file({1, 2, 3});
    const TiffFile file(from(data));
    ASSERT_EQ(file.directories().size(), 1u);
    const TiffDirectory& d = file.directories()[0];
    EXPECT_EQ(d.numbers(258), (std::vector<double>{16, 15, 14}));
    EXPECT_EQ(d.numbers(50721), (std::vector<double>{0.5, -1.25}));
    EXPECT_EQ(d.text(271), "Maker");
    EXPECT_TRUE(d.numbers(999).empty());
    EXPECT_TRUE(d.bytes(271, 3).empty()); // longer than the limit
}

TEST(TiffDirectory, LoopsAndLiesEnd) {
    // Each file: header, then one directory at 8 whose SubIFDs tag (330) and next pointer are
    // given.
    const auto make = [](std::uint32_t sub, std::uint32_t next, std::uint16_t entries) {
        std::vector<std::uint8_t> d{
            'I',  'I', 42, 0, 8, 0, 0, 0, std::uint8_t(entries), std::uint8_t(entries >> 8),
            0x4a, 1,   4,  0, 1, 0, 0, 0};
        for (const std::uint32_t v : {sub, next}) {
            for (int i = 0; i < 4; ++i)
                d.push_back(std::uint8_t(v >> (8 * i)));
        }
        return d;
    };
    for (const auto& data : {make(8, 8, 1), make(0, 8, 1), make(0xffffffff, 0xfffffff0, 1),
                             make(8, 0, 65535), make(3, 9, 1)}) {
        EXPECT_LE(TiffFile(from(data)).directories().size(), 32u);
    }
    for (std::size_t cut = 0; cut < 26; ++cut) {
        auto data = make(8, 0, 1);
        data.resize(cut);
        EXPECT_LE(TiffFile(from(data)).directories().size(), 1u);
    }
}

TEST(DngTags, AnswersOnlyForThePictureAsked) {
    test::SyntheticDng dng;
    dng.scene = [](int, int, int) { return 0.5; };
    dng.active = {3, 5, 45, 61};
    dng.crop = {2, 1, 50, 40};
    dng.pattern = "GBRG";
    const auto data = dng.bytes();
    const TiffFile file(from(data));
    EXPECT_FALSE(readDngTags(file, 32, 32, data.size()));
    const auto tags = readDngTags(file, 64, 48, data.size());
    ASSERT_TRUE(tags);
    EXPECT_EQ(*tags->activeArea, (SensorRect{5, 3, 56, 42}));
    EXPECT_EQ(*tags->defaultCrop, (SensorRect{2, 1, 50, 40}));
    EXPECT_EQ(tags->filters->channels[1], 2);
    EXPECT_FALSE(tags->reachesPastEnd);
    EXPECT_TRUE(readDngTags(file, 64, 48, data.size() - 1)->reachesPastEnd);
}

} // namespace
} // namespace kelvaro
