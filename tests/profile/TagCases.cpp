#include "TagCases.h"

#include "platform/LocalCalendar.h"
#include "profile/FocalBands.h"

#include <algorithm>
#include <array>

namespace kelvaro::test {
namespace {

TagPhotos all(const std::string& told, std::size_t count, const Fill& fill) {
    return {told, records(count, fill), 0};
}

// A share of a hundred photos. `step` is -1 where the rule asks for at most so many.
TagCase share(int rule, const std::string& title, const std::string& threshold, int limit,
              const Fill& hit, const Fill& other, const std::string& reason, int step = 1) {
    const auto of = [&](int hits) {
        return TagPhotos{std::to_string(hits) + " of 100",
                         mixed(static_cast<std::size_t>(hits), 100, hit, other), 0};
    };
    return {rule, title, threshold, of(limit - step), of(limit), of(limit + step), reason};
}

// The band's share beside two others that share the rest.
TagCase band(std::size_t index) {
    constexpr std::array<double, FocalBands::count> inside{14, 28, 50, 85, 400};
    const FocalBand& it = FocalBands::all()[index];
    const auto of = [&](std::size_t hits) {
        auto list = records(hits, focal(inside[index]));
        for (std::size_t i = hits; i < 100; ++i)
            list.push_back(
                records(1, focal(inside[(index + 1 + i % 2) % FocalBands::count])).front());
        return TagPhotos{std::to_string(hits) + " of 100", list, 0};
    };
    return {1,
            std::string(it.title),
            "band >= 45 %",
            of(44),
            of(45),
            of(46),
            "45% of your photos " + std::string(it.phrase) + "."};
}

TagCase typical(int rule, const std::string& title, const std::string& threshold,
                const std::array<std::pair<const char*, Fill>, 3>& values,
                const std::string& reason) {
    const auto of = [](const auto& value) { return all(value.first, 10, value.second); };
    return {rule, title, threshold, of(values[0]), of(values[1]), of(values[2]), reason};
}

TagPhotos cameras(std::size_t third) {
    auto list = mixed(50, 100 - third, camera("a"), camera("b"));
    const auto rest = records(third, camera("c"));
    list.insert(list.end(), rest.begin(), rest.end());
    return {"50, " + std::to_string(50 - third) + ", " + std::to_string(third) + " of 100", list,
            0};
}

// Twenty frames a minute apart, but `close` of them two seconds behind the one before; not in the
// order of their times.
TagPhotos bursts(int close) {
    std::vector<ShotRecord> frames;
    for (int i = 0; i < 20 - close; ++i)
        frames.push_back(records(1, taken(11, 10, i)).front());
    for (int i = 0; i < close; ++i)
        frames.push_back(records(1, taken(11, 10, i, 2)).front());
    return {std::to_string(close) + " of 20 frames", frames, 0};
}

TagPhotos onFiveDays(int count) {
    std::vector<ShotRecord> list;
    for (int i = 0; i < count; ++i)
        list.push_back(records(1, taken(1 + i % 5, 10, i)).front());
    return {std::to_string(count) + " on 5 days", list, 0};
}

TagPhotos edited(std::int64_t edits) {
    return {std::to_string(edits) + " edits of 100", records(100), edits};
}

} // namespace

std::vector<TagCase> tagCases() {
    std::vector<TagCase> cases;
    for (std::size_t index = 0; index < FocalBands::count; ++index)
        cases.push_back(band(index));
    const auto add = [&](TagCase each) { cases.push_back(std::move(each)); };
    add(share(2, "Wildlife reach", "300 mm >= 15 %", 15, focal(300), focal(299),
              "15% of your photos at 300 mm or longer."));
    add(share(3, "Prime lover", "primes >= 60 %", 60, lens("50mm F1.8"), lens("70-200mm"),
              "60% of your photos with fixed-focal-length lenses."));
    add(share(4, "Zoom wanderer", "zooms >= 70 %", 70, lens("18 - 55"), lens("50mm"),
              "70% of your photos with zoom lenses."));
    add(share(5, "One-lens wonder", "lens >= 85 %", 85, lens("50mm"), lens("85mm"),
              "85% of your photos with your 50mm"));
    const std::string phones = " of your photos from a phone, the rest from a camera.";
    add(share(6, "Phone in the pocket too", "phones >= 10 %", 10, camera("iPhone 15"),
              camera("X-T5"), "10%" + phones));
    add(share(6, "Phone in the pocket too", "phones <= 60 %", 60, camera("Google PIXEL 8"),
              camera("X-T5"), "60%" + phones, -1));
    add({7, "Multi-camera shooter", "3 x >= 10 %", cameras(9), cameras(10), cameras(11),
         "3 cameras each took at least 10% of your photos."});
    add(typical(8, "Wide-open dreamer", "typical <= f/1.8",
                {{{"f/1.9", aperture(1.9)}, {"f/1.8", aperture(1.8)}, {"f/1.7", aperture(1.7)}}},
                "Usually at ƒ/1.8 or wider: soft backgrounds, thin focus."));
    add(typical(9, "Bokeh fan", "typical <= f/2.8",
                {{{"f/2.9", aperture(2.9)}, {"f/2.8", aperture(2.8)}, {"f/2.7", aperture(2.7)}}},
                "A typical aperture of ƒ/2.8: subjects lifted off soft backgrounds."));
    add(typical(10, "Everything in focus", "typical >= f/8",
                {{{"f/7.9", aperture(7.9)}, {"f/8", aperture(8)}, {"f/8.1", aperture(8.1)}}},
                "A typical aperture of ƒ/8: sharp from front to back."));
    add(share(11, "Motion freezer", "1/1000 s >= 40 %", 40, shutter(1.0 / 1000), shutter(1.0 / 999),
              "40% of your photos at 1/1000 s or faster."));
    add(share(12, "Long-exposure artist", "1 s >= 5 %", 5, shutter(1), shutter(0.99),
              "5 photos exposed for a second or longer."));
    add(typical(13, "Low-light hero", "typical >= 1600",
                {{{"ISO 1599", iso(1599)}, {"ISO 1600", iso(1600)}, {"ISO 1601", iso(1601)}}},
                "A typical ISO of 1600: you keep shooting when the light goes."));
    add(typical(14, "Daylight shooter", "typical <= 200",
                {{{"ISO 201", iso(201)}, {"ISO 200", iso(200)}, {"ISO 199", iso(199)}}},
                "A typical ISO of 200: good light, clean files."));
    add(share(15, "ISO-fearless", "6400 >= 10 %", 10, iso(6400), iso(6399),
              "10% of your photos at ISO 6400 or higher."));
    add(share(16, "Early bird", "5:00-9:00 >= 30 %", 30, taken(11, 8, 59), taken(11, 9),
              "30% of your photos between 5:00 and 9:00, in the morning's soft light."));
    add(share(17, "Lunch-break shooter", "12:00-14:00 >= 30 %", 30, taken(11, 12),
              taken(11, 11, 59), "30% of your photos between 12:00 and 14:00."));
    add(share(18, "Golden-hour chaser", "17:00-21:00 >= 35 %", 35, taken(11, 20, 59), taken(11, 21),
              "35% of your photos between 17:00 and 21:00, when the light turns warm."));
    const std::string night = "25% of your photos after 21:00 or before 5:00.";
    add(share(19, "Night owl", "21:00-24:00 >= 25 %", 25, taken(11, 21), taken(11, 20, 59), night));
    add(share(19, "Night owl", "0:00-5:00 >= 25 %", 25, taken(11, 4, 59), taken(11, 5), night));
    add(share(20, "Weekend shooter", "Sat, Sun >= 60 %", 60, taken(10, 15), taken(11, 15),
              "60% of your photos on Saturdays and Sundays."));
    add({21, "Burst shooter", "<= 2 s >= 30 %", bursts(5), bursts(6), bursts(7),
         "30% of your frames came within two seconds of the one before."});
    add({22, "Deliberate shooter", "<= 6 a day", onFiveDays(31), onFiveDays(30), onFiveDays(29),
         "About 6 carefully chosen frames per day out shooting."});
    add({23, "Big-day shooter", ">= 200 in a day", all("199", 199, taken(11, 10)),
         all("200", 200, taken(11, 10)), all("201", 201, taken(11, 10)),
         "200 photos in a single day."});
    add(share(24, "Generous with hearts", "hearts >= 30 %", 30, heart(true), heart(false),
              "You've favourited 30% of these photos."));
    add(share(25, "Tough curator", "hearts <= 5 %", 5, heart(true), heart(false),
              "Only 5% of these photos made your favourites.", -1));
    add({25,
         "Tough curator",
         ">= 100 photos",
         {"4 of 99", mixed(4, 99, heart(true), heart(false)), 0},
         {"4 of 100", mixed(4, 100, heart(true), heart(false)), 0},
         {"4 of 101", mixed(4, 101, heart(true), heart(false)), 0},
         "Only 4% of these photos made your favourites."});
    add({26, "Thoughtful editor", "edits >= 50 %", edited(49), edited(50), edited(51),
         "50 edits for 100 photos taken."});
    add(share(27, "RAW purist", "RAW >= 90 %", 90, raw(true), raw(false),
              "90% of your photos are RAW files."));
    add(share(28, "Straight-out-of-camera", "RAW <= 10 %", 10, raw(true), raw(false),
              "90% of your photos are JPEG or HEIC.", -1));
    return cases;
}

std::optional<StyleTag> earned(const TagPhotos& photos, const std::string& title) {
    const auto tags = styleTags(summarized(photos.records), photos.edits);
    const auto found = std::find_if(tags.begin(), tags.end(),
                                    [&](const StyleTag& each) { return each.title == title; });
    return found == tags.end() ? std::nullopt : std::optional(*found);
}

std::vector<ShotRecord> records(std::size_t count, const Fill& fill) {
    std::vector<ShotRecord> list(count);
    if (fill) std::for_each(list.begin(), list.end(), fill);
    return list;
}

std::vector<ShotRecord> mixed(std::size_t hits, std::size_t all, const Fill& hit,
                              const Fill& other) {
    auto list = records(hits, hit);
    const auto rest = records(all - hits, other);
    list.insert(list.end(), rest.begin(), rest.end());
    return list;
}

Fill focal(double mm) {
    return [mm](ShotRecord& record) { record.focal = mm; };
}
Fill lens(const std::string& name) {
    return [name](ShotRecord& record) { record.lens = name; };
}
Fill camera(const std::string& name) {
    return [name](ShotRecord& record) { record.camera = name; };
}
Fill aperture(double fNumber) {
    return [fNumber](ShotRecord& record) { record.aperture = fNumber; };
}
Fill shutter(double seconds) {
    return [seconds](ShotRecord& record) { record.shutter = seconds; };
}
Fill iso(int value) {
    return [value](ShotRecord& record) { record.iso = value; };
}
Fill taken(int day, int hour, int minute, int second) {
    return [=](ShotRecord& record) {
        record.taken = secondsAsUtc({2024, 3, day, hour, minute, second});
    };
}
Fill heart(bool favorite) {
    return [=](ShotRecord& record) { record.favorite = favorite; };
}
Fill raw(bool isRaw) {
    return [=](ShotRecord& record) { record.isRaw = isRaw; };
}

} // namespace kelvaro::test
