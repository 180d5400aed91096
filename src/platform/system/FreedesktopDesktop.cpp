#include "platform/system/FreedesktopDesktop.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusInterface>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>
#include <QDesktopServices>
#include <QFile>
#include <QObject>
#include <QUrl>

#include <fstream>
#include <sstream>

namespace kelvaro {
namespace {

constexpr int portalTimeoutMs = 250; // a portal that is not there must not hold up the start

QString fileUrl(const std::filesystem::path& path) {
    // Bytes, not text: a name need not be valid UTF-8.
    const std::string& bytes = path.native();
    QByteArray encoded =
        QByteArray(bytes.data(), static_cast<qsizetype>(bytes.size())).toPercentEncoding("/");
    return "file://" + QString::fromLatin1(encoded);
}

std::string contentOf(const char* path) {
    std::ifstream file(path);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

class FreedesktopDesktop final : public QObject, public Desktop {
    Q_OBJECT
public:
    void showFiles(const std::vector<std::filesystem::path>& files) override {
        if (files.empty()) return;
        QStringList urls;
        for (const auto& file : files)
            urls << fileUrl(file);
        QDBusMessage call = QDBusMessage::createMethodCall(
            "org.freedesktop.FileManager1", "/org/freedesktop/FileManager1",
            "org.freedesktop.FileManager1", "ShowItems");
        call << urls << QString();
        const auto folder = files.front().parent_path();
        auto* watcher =
            new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(call), this);
        QObject::connect(watcher, &QDBusPendingCallWatcher::finished, this,
                         [this, folder](QDBusPendingCallWatcher* ended) {
                             if (ended->isError()) openFolder(folder);
                             ended->deleteLater();
                         });
    }
    void openFolder(const std::filesystem::path& folder) override {
        QDesktopServices::openUrl(QUrl(fileUrl(folder)));
    }
    void openWeb(const std::string& address) override {
        QDesktopServices::openUrl(QUrl(QString::fromStdString(address)));
    }
    void composeMail(const std::string& to, const std::string& subject,
                     const std::string& body) override {
        QDesktopServices::openUrl(
            QUrl(QString::fromStdString(mailAddress(to, subject, body)), QUrl::StrictMode));
    }

    DesktopPreferences preferences() override {
        DesktopPreferences found;
        // 0: no preference, 1: dark, 2: light.
        found.prefersDark =
            portalSetting("org.freedesktop.appearance", "color-scheme").toUInt() != 2;
        const QVariant animations =
            portalSetting("org.gnome.desktop.interface", "enable-animations");
        found.reducesMotion = animations.isValid() && !animations.toBool();
        return found;
    }
    void onPreferencesChanged(std::function<void()> changed) override {
        changed_ = std::move(changed);
        QDBusConnection::sessionBus().connect("", "/org/freedesktop/portal/desktop",
                                              "org.freedesktop.portal.Settings", "SettingChanged",
                                              this, SLOT(tellChanged()));
    }
    Q_SLOT void tellChanged() {
        if (changed_) changed_();
    }

    std::string systemName() const override { return prettyName(contentOf("/etc/os-release")); }
    std::string processorName() const override { return modelName(contentOf("/proc/cpuinfo")); }

private:
    static QVariant portalSetting(const char* space, const char* key) {
        QDBusMessage call = QDBusMessage::createMethodCall(
            "org.freedesktop.portal.Desktop", "/org/freedesktop/portal/desktop",
            "org.freedesktop.portal.Settings", "Read");
        call << QString(space) << QString(key);
        const QDBusConnection bus = QDBusConnection::sessionBus();
        if (!bus.isConnected()) return {};
        const QDBusMessage reply = bus.call(call, QDBus::Block, portalTimeoutMs);
        if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty()) return {};
        QVariant value = reply.arguments().first();
        while (value.canConvert<QDBusVariant>())
            value = value.value<QDBusVariant>().variant();
        return value;
    }

    std::function<void()> changed_;
};

} // namespace

std::unique_ptr<Desktop> makeDesktop() {
    return std::make_unique<FreedesktopDesktop>();
}

std::string prettyName(const std::string& osRelease) {
    std::istringstream lines(osRelease);
    const std::string key = "PRETTY_NAME=";
    for (std::string line; std::getline(lines, line);) {
        if (!line.starts_with(key)) continue;
        std::string name = line.substr(key.size());
        if (name.size() >= 2 && (name.front() == '"' || name.front() == '\'') &&
            name.back() == name.front())
            name = name.substr(1, name.size() - 2);
        return name;
    }
    return {};
}

std::string modelName(const std::string& cpuInfo) {
    std::istringstream lines(cpuInfo);
    for (std::string line; std::getline(lines, line);) {
        const auto colon = line.find(':');
        if (!line.starts_with("model name") || colon == std::string::npos) continue;
        const auto begin = line.find_first_not_of(" \t", colon + 1);
        return begin == std::string::npos ? std::string() : line.substr(begin);
    }
    return {};
}

std::string mailAddress(const std::string& to, const std::string& subject,
                        const std::string& body) {
    const auto encoded = [](const std::string& text) {
        return QUrl::toPercentEncoding(QString::fromStdString(text)).toStdString();
    };
    return "mailto:" + QUrl::toPercentEncoding(QString::fromStdString(to), "@").toStdString() +
           "?subject=" + encoded(subject) + "&body=" + encoded(body);
}

} // namespace kelvaro

#include "FreedesktopDesktop.moc"
