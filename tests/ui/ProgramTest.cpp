// The program itself, started in homes and on machines that are not as one would wish.
#include "fakes/TemporaryFolder.h"

#include <QImage>
#include <QMap>
#include <QProcess>

#include <gtest/gtest.h>

namespace kelvaro {
namespace {

using Variables = QMap<QString, QString>;

class Program : public testing::Test {
protected:
    TemporaryFolder root;
    QProcess process;

    void start(const Variables& variables, const QStringList& arguments = {}) {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM", "KELVARO_SANDBOX",
                                 "XDG_CONFIG_HOME", "XDG_CACHE_HOME", "XDG_DATA_HOME"})
            environment.remove(name);
        environment.insert("HOME", path("home"));
        environment.insert("XDG_RUNTIME_DIR", path("run"));
        for (auto each = variables.begin(); each != variables.end(); ++each)
            environment.insert(each.key(), each.value());
        process.setProcessEnvironment(environment);
        process.start(KELVARO_PROGRAM, arguments);
    }
    QString path(const char* name) const {
        return QString::fromStdString((root.path() / name).string());
    }
    void ends() { ASSERT_TRUE(process.waitForFinished(60'000)); }
    QString photos() {
        std::filesystem::create_directories(root / "photos");
        QImage image(60, 40, QImage::Format_RGB32);
        image.fill(Qt::darkGreen);
        EXPECT_TRUE(image.save(path("photos/one.png")));
        return path("photos");
    }
    // Until the window has asked for a thumbnail, which it logs.
    void showsPhotos(Variables variables) {
        variables.insert("QT_QPA_PLATFORM", "offscreen");
        variables.insert("KELVARO_THUMBS", "1");
        start(variables, {photos()});
        QByteArray told;
        process.setReadChannel(QProcess::StandardError);
        while (!told.contains("[thumb]") && process.waitForReadyRead(60'000))
            told += process.readAllStandardError();
        EXPECT_TRUE(told.contains("[thumb]")) << told.toStdString();
        EXPECT_EQ(process.state(), QProcess::Running) << "it has ended by itself";
        process.kill();
        ends();
    }
};

TEST_F(Program, EndsWithASentenceWithoutADisplay) {
    for (const Variables& variables : {Variables{}, Variables{{"DISPLAY", ":4711"}}}) {
        start(variables);
        ends();
        EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
        EXPECT_EQ(process.exitCode(), 1);
        EXPECT_TRUE(process.readAllStandardError().contains("There is no display"));
    }
}

TEST_F(Program, RefusesScriptsBeforeAnyWindow) {
    start({{"KELVARO_SCRIPT", ""}});
    ends();
    EXPECT_EQ(process.exitCode(), 2);
    EXPECT_EQ(process.readAllStandardOutput(),
              "[script] FAIL: this build has no script mode; use ./build.sh --scripting "
              "(build/Kelvaro-scripted)\n");
}

TEST_F(Program, ShowsPhotosWhereNothingCanBeWritten) {
    // Folders below a file can be made by nobody, not even by root.
    showsPhotos({{"HOME", "/dev/null/home"}});
}

TEST_F(Program, ShowsPhotosAfterGarbageInTheSettings) {
    const auto settings = root / "home/.config/Kelvaro";
    std::filesystem::create_directories(settings);
    writeFile(settings / "settings.json", std::string("\x00\xff{{{]garbage", 13));
    showsPhotos({});
}

TEST_F(Program, ShowsPhotosWithoutAnyFont) {
    writeFile(root / "fonts.conf", "<?xml version=\"1.0\"?><fontconfig></fontconfig>\n");
    showsPhotos({{"FONTCONFIG_FILE", path("fonts.conf")}});
}

} // namespace
} // namespace kelvaro
