#include "render/ThumbnailLoader.h"

#include "fakes/FailingFileSystem.h"
#include "fakes/ForwardingFileSystem.h"
#include "render/RenderStage.h"

#include <future>
#include <map>

namespace kelvaro::test {
namespace {

constexpr double kPatience = 20; // seconds

// The thumbnails of one program.
struct Thumbnails {
    explicit Thumbnails(RenderStage& on, FileSystem* files = nullptr,
                        std::int64_t diskBytes = 1 << 28, std::size_t memoryBytes = 1 << 26)
        : stage(on),
          disk(files ? *files : on.files, *on.reader, *on.writer, on.folder / "caches/Thumbnails",
               diskBytes),
          maker(on.engine, on.parts(), on.sessions),
          loader(on.engine, maker, disk, files ? *files : on.files, {memoryBytes, 1}) {}

    // Keeps the ticket by the file's name.
    void request(const std::filesystem::path& photo, const Adjustments& edit = {},
                 ThumbnailPriority priority = ThumbnailPriority::visible) {
        const std::string name = photo.filename();
        tickets[name] = loader.request({photo, edit, 100}, priority,
                                       [this, name](const ThumbnailResult& result) {
                                           arrived.push_back(name);
                                           results.insert_or_assign(name, result);
                                       });
    }
    ThumbnailResult get(const std::filesystem::path& photo, const Adjustments& edit = {}) {
        results.clear();
        request(photo, edit);
        const bool came = stage.loop.runUntil([&] { return !results.empty(); }, kPatience);
        disk.waitForWrites();
        if (!came) return fail(FailureKind::internal, "Nothing came.");
        return results.begin()->second;
    }
    // Where the last one came from, as the log has it.
    std::string origin() const {
        const auto lines = stage.lines.copy();
        for (auto line = lines.rbegin(); line != lines.rend(); ++line)
            for (const char* origin : {"memory", "disk", "preview", "developed", "failed"})
                if (line->starts_with("[thumb]") &&
                    line->find(std::string(" ") + origin + " ") != std::string::npos)
                    return origin;
        return "";
    }

    RenderStage& stage;
    ThumbnailDiskCache disk;
    ThumbnailMaker maker;
    ThumbnailLoader loader;
    std::map<std::string, ThumbnailLoader::Ticket> tickets;
    std::vector<std::string> arrived;
    std::map<std::string, ThumbnailResult> results;
};

Adjustments edited() {
    Adjustments edit;
    edit.exposure = 0.5;
    return edit;
}

Adjustments halved() {
    Adjustments edit;
    edit.cropRight = 0.5;
    return edit;
}

TEST(Thumbnails, ComeFromTheNearestPlaceThatHasThem) {
    RenderStage stage;
    const auto jpeg = stage.jpeg("photo.jpg", picture({400, 300}, landscape));
    const auto raw = stage.dng("raw.dng", {256, 192}, {200, 150});
    const auto bare = stage.dng("bare.dng", {256, 192});
    const auto tiny = stage.dng("tiny.dng", {256, 192}, {40, 30});
    struct Case {
        const char* name;
        std::filesystem::path photo;
        Adjustments edit;
        const char* origin;
        PixelSize size;
    };
    const Case cases[] = {
        {"picture", jpeg, {}, "preview", {160, 120}},
        {"cropped picture", jpeg, halved(), "preview", {107, 160}},
        {"edited picture", jpeg, edited(), "developed", {160, 120}},
        {"embedded", raw, {}, "preview", {160, 120}},
        {"embedded, cropped", raw, halved(), "preview", {107, 160}},
        {"edited RAW", raw, edited(), "developed", {160, 120}},
        {"nothing embedded", bare, {}, "developed", {160, 120}},
        {"too little embedded", tiny, {}, "developed", {160, 120}},
    };
    Thumbnails first(stage);
    for (const Case& test : cases) {
        SCOPED_TRACE(test.name);
        const auto made = first.get(test.photo, test.edit);
        ASSERT_TRUE(made);
        EXPECT_EQ((*made)->size, test.size);
        EXPECT_EQ(first.origin(), test.origin);
        ASSERT_TRUE(first.get(test.photo, test.edit));
        EXPECT_EQ(first.origin(), "memory");
        Thumbnails second(stage);
        const auto read = second.get(test.photo, test.edit);
        ASSERT_TRUE(read);
        EXPECT_EQ(second.origin(), "disk");
        EXPECT_LT(worstDifference(**made, **read), 12); // JPEG's loss
    }
    EXPECT_EQ(first.loader.openRequests(), 0u);
}

TEST(Thumbnails, AreInSRGBWhateverTheFileIsIn) {
    RenderStage stage;
    // The green of sRGB, as Display P3 writes it.
    const auto photo = stage.jpeg("p3.jpg",
                                  picture({300, 200},
                                          [](double, double) {
                                              return Colour{0.4584, 0.9853, 0.2983};
                                          }),
                                  OutputSpace::displayP3);
    Thumbnails thumbnails(stage);
    const auto made = thumbnails.get(photo);
    ASSERT_TRUE(made);
    const auto* pixel = (*made)->row<std::uint8_t>(50) + 3 * 50;
    EXPECT_NEAR(pixel[0], 0, 12);
    EXPECT_NEAR(pixel[1], 255, 3);
    EXPECT_NEAR(pixel[2], 0, 12);
}

TEST(Thumbnails, BrokenCacheFilesAreMadeAgain) {
    RenderStage stage;
    const auto photo = stage.jpeg("photo.jpg", picture({400, 300}, landscape));
    const auto caches = stage.folder / "caches/Thumbnails";
    ASSERT_TRUE(Thumbnails(stage).get(photo));
    const auto names = namesIn(caches);
    ASSERT_EQ(names.size(), 1u);
    for (const std::string& content : {std::string(), std::string("no picture"),
                                       readFile(caches / *names.begin()).substr(0, 400)}) {
        writeFile(caches / *names.begin(), content);
        Thumbnails again(stage);
        ASSERT_TRUE(again.get(photo));
        EXPECT_EQ(again.origin(), "preview");
        ASSERT_TRUE(Thumbnails(stage).get(photo));
    }
}

TEST(Thumbnails, ComeWithoutADiskThatTakesThem) {
    RenderStage stage;
    const auto photo = stage.jpeg("photo.jpg", picture({400, 300}, landscape));
    writeFile(stage.folder / "caches", "a file where the folder should be");
    Thumbnails thumbnails(stage);
    EXPECT_TRUE(thumbnails.get(photo));
    for (int call = 1; call < 12; ++call) { // each access fails once; the picture comes or says why
        std::filesystem::remove_all(stage.folder / "caches");
        FailingFileSystem failing(stage.files, {call, FailureKind::unreadable});
        const auto result = Thumbnails(stage, &failing).get(photo);
        EXPECT_TRUE(result || call == 1);
        for (const std::string& name : namesIn(stage.folder / "caches/Thumbnails"))
            EXPECT_FALSE(name.starts_with('.')) << name;
    }
}

TEST(Thumbnails, SayWhyThereIsNone) {
    RenderStage stage;
    writeFile(stage.folder / "broken.jpg", "\xFF\xD8\xFF nothing");
    writeFile(stage.folder / "broken.dng", "II*");
    writeFile(stage.folder / "text.txt", "text");
    Thumbnails thumbnails(stage);
    for (const char* name : {"gone.jpg", "gone.dng", "broken.jpg", "broken.dng", "text.txt"}) {
        const auto result = thumbnails.get(stage.folder / name);
        ASSERT_FALSE(result) << name;
        EXPECT_NE(result.error().message.find(name), std::string::npos) << result.error().message;
        EXPECT_EQ(thumbnails.origin(), "failed");
    }
    // A photo that is repaired is looked at again.
    stage.jpeg("broken.jpg", picture({40, 30}, landscape));
    EXPECT_TRUE(thumbnails.get(stage.folder / "broken.jpg"));
    const auto vanishing = stage.jpeg("vanishing.jpg", picture({40, 30}, landscape));
    EXPECT_TRUE(thumbnails.get(vanishing));
    std::filesystem::remove(vanishing);
    EXPECT_FALSE(thumbnails.get(vanishing));
}

// Stops at the first look at a file called "plug", until it is let go.
class PluggedFileSystem final : public ForwardingFileSystem {
public:
    using ForwardingFileSystem::ForwardingFileSystem;
    Result<FileStatus> status(const std::filesystem::path& path) override {
        if (path.filename() == "plug.jpg") {
            reached.set_value();
            open.get_future().wait();
        }
        return ForwardingFileSystem::status(path);
    }

    std::promise<void> reached, open;
};

TEST(Thumbnails, OnScreenFirstThenNewestAndDroppedOnesNever) {
    RenderStage stage;
    PluggedFileSystem files(stage.files);
    Thumbnails thumbnails(stage, &files);
    const auto photo = [&](const char* name) {
        return stage.jpeg(name, picture({40, 30}, landscape));
    };
    using P = ThumbnailPriority;
    thumbnails.request(stage.folder / "plug.jpg");
    files.reached.get_future().wait(); // the only worker is busy
    thumbnails.request(photo("near1.jpg"), {}, P::nearby);
    thumbnails.request(photo("seen1.jpg"), {}, P::visible);
    thumbnails.request(photo("seen2.jpg"), {}, P::visible);
    thumbnails.request(photo("dropped.jpg"), {}, P::visible);
    thumbnails.request(photo("near2.jpg"), {}, P::nearby);
    thumbnails.request(photo("left.jpg"), {}, P::visible);
    thumbnails.request(photo("came.jpg"), {}, P::nearby);
    thumbnails.request(photo("near2.jpg"), {}, P::nearby); // again: the newest of them now
    thumbnails.tickets.erase("dropped.jpg");
    thumbnails.tickets["left.jpg"].setPriority(P::nearby);
    thumbnails.tickets["came.jpg"].setPriority(P::visible);
    EXPECT_EQ(thumbnails.loader.openRequests(), 7u);
    files.open.set_value();
    ASSERT_TRUE(stage.loop.runUntil([&] { return thumbnails.arrived.size() == 7; }, kPatience));
    EXPECT_EQ(thumbnails.arrived,
              (std::vector<std::string>{"plug.jpg", "came.jpg", "seen2.jpg", "seen1.jpg",
                                        "near2.jpg", "left.jpg", "near1.jpg"}));
    EXPECT_EQ(thumbnails.loader.openRequests(), 0u);
}

TEST(Thumbnails, OnePictureForAllWhoWishForIt) {
    RenderStage stage;
    const auto photo = stage.jpeg("photo.jpg", picture({400, 300}, landscape));
    Thumbnails thumbnails(stage);
    int came = 0;
    std::vector<ThumbnailLoader::Ticket> tickets;
    for (int i = 0; i < 5; ++i)
        tickets.push_back(thumbnails.loader.request(
            {photo, {}, 100 + i}, ThumbnailPriority::visible, [&](const ThumbnailResult&) {
                ++came;
                tickets.pop_back(); // ends another one from inside
            }));
    ASSERT_TRUE(stage.loop.runUntil([&] { return tickets.size() <= 2; }, kPatience));
    EXPECT_EQ(came, 3); // the first ended the fifth, the second the fourth
    EXPECT_EQ(stage.lines.copy().size(), 1u);
}

TEST(Thumbnails, MemoryIsBoundedAndShed) {
    RenderStage stage;
    Thumbnails thumbnails(stage, nullptr, 1 << 28, 200'000); // three of 160 × 120
    std::filesystem::path last;
    for (int i = 0; i < 6; ++i)
        ASSERT_TRUE(thumbnails.get(
            last = stage.jpeg(std::to_string(i) + ".jpg", picture({400, 300}, landscape))));
    EXPECT_GT(thumbnails.loader.memoryBytes(), 160u * 120 * 3 * 2);
    EXPECT_LE(thumbnails.loader.memoryBytes(), 200'000u);
    EXPECT_TRUE(thumbnails.loader.inMemory({last, {}, 100}));
    EXPECT_FALSE(thumbnails.loader.inMemory({stage.folder / "0.jpg", {}, 100}));
    stage.memory.report(MemoryPressure::warning);
    stage.loop.runPosted();
    EXPECT_EQ(thumbnails.loader.memoryBytes(), 0u);
}

TEST(Thumbnails, TheDiskIsBounded) {
    RenderStage stage;
    Thumbnails thumbnails(stage, nullptr, 20'000);
    for (int i = 0; i < 30; ++i)
        ASSERT_TRUE(
            thumbnails.get(stage.jpeg(std::to_string(i) + ".jpg", picture({400, 300}, landscape))));
    std::uintmax_t bytes = 0;
    for (const auto& entry :
         std::filesystem::directory_iterator(stage.folder / "caches/Thumbnails"))
        bytes += entry.file_size();
    EXPECT_GT(bytes, 5'000u);
    EXPECT_LE(bytes, 20'000u + 20'000 / 16 + 4'000); // what was written since the last look
}

TEST(Thumbnails, DevelopingWaitsForTheUserUnlessPromoted) {
    RenderStage stage;
    const auto photo = stage.dng("bare.dng", {256, 192});
    Thumbnails thumbnails(stage);
    stage.engine.work().setEditing(true);
    stage.engine.work().noteInput(); // and the clock stands still
    thumbnails.request(photo, edited());
    EXPECT_FALSE(stage.loop.runUntil([&] { return !thumbnails.arrived.empty(); }, 0.15));
    thumbnails.tickets["bare.dng"].promote();
    EXPECT_TRUE(stage.loop.runUntil([&] { return !thumbnails.arrived.empty(); }, kPatience));
    EXPECT_EQ(stage.engine.work().state().urgent, 0);
    thumbnails.request(photo, halved()); // ends while it waits
}

} // namespace
} // namespace kelvaro::test
