// A disk that fills up, or refuses, at any moment of a develop or a recipe command: a sentence, no
// partial picture, no temporary file, the old picture and the old recipe as they were.
#include "cli/CliRunner.h"
#include "cli/Commands.h"
#include "fakes/FailingFileSystem.h"
#include "platform/system/PosixFileSystem.h"

namespace kelvaro {
namespace {

using namespace test;

class FullDisk : public testing::Test {
protected:
    TemporaryFolder folder;
    Cancellation cancellation;
    PosixFileSystem real;
    Services services = makeServices(cancellation);

    // The sentences are the other tests' business.
    FullDisk() { testing::internal::CaptureStderr(); }
    ~FullDisk() override { testing::internal::GetCapturedStderr(); }

    FailingFileSystem& failWith(FailingFileSystem::Plan plan) {
        auto files = std::make_unique<FailingFileSystem>(real, plan);
        FailingFileSystem& failing = *files;
        services.files = std::move(files);
        return failing;
    }
};

TEST_F(FullDisk, DevelopLeavesTheOldPicture) {
    DevelopRequest request;
    request.photo = sample(".jpg");
    request.longEdge = 100;
    for (const char* name : {"out.jpg", "out.png", "out.tif", "out.heic"}) {
        request.output = folder.path() / name;
        writeFile(request.output, "the old picture");
        const auto before = snapshot(folder.path());
        for (const std::int64_t room : {0, 1, 100, 2000}) {
            failWith({0, FailureKind::unwritable, room});
            EXPECT_EQ(runDevelop(request, services), ExitCode::someFailed) << name << room;
            EXPECT_EQ(snapshot(folder.path()), before);
        }
        int call = 1;
        for (bool failed = true; failed; ++call) {
            FailingFileSystem& files = failWith({call});
            const ExitCode code = runDevelop(request, services);
            failed = files.hasFailed();
            EXPECT_EQ(code, failed ? ExitCode::someFailed : ExitCode::done) << name << call;
            if (failed) {
                EXPECT_EQ(snapshot(folder.path()), before);
            }
        }
        EXPECT_GT(call, 4);
        EXPECT_NE(contentOf(request.output), "the old picture");
    }
}

TEST_F(FullDisk, RecipeLeavesTheOldEdit) {
    RecipeRequest request;
    request.photo = copyOfSample(".jpg", folder.path());
    request.settings = {"exposure=1"};
    const fs::path sidecar =
        folder.path() / ".tarnwell" / (request.photo.filename().string() + ".json");
    const std::string old = R"({"contrast": 5})"; // an old format: a backup is due as well
    writeFile(sidecar, old);
    for (int call = 1;; ++call) {
        FailingFileSystem& files = failWith({call});
        const ExitCode code = runRecipe(request, services);
        if (!files.hasFailed()) {
            EXPECT_EQ(code, ExitCode::done);
            break;
        }
        EXPECT_EQ(code, ExitCode::someFailed) << call;
        EXPECT_EQ(contentOf(sidecar), old) << call;
    }
    EXPECT_EQ(contentOf(sidecar.string() + ".v1-backup"), old);
    EXPECT_NE(contentOf(sidecar), old);
}

} // namespace
} // namespace kelvaro
