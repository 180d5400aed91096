// The window: menu bar, the library and the open photo, notices and questions over them. Puts the
// views together and gives every command its operation. Main thread.
#pragma once

#include "app/ProfileServices.h"
#include "export/Exporter.h"
#include "library/LibraryStore.h"
#include "platform/Desktop.h"
#include "render/PhotoSessionCache.h"
#include "render/RenderEngine.h"
#include "render/ThumbnailLoader.h"
#include "ui/editor/EditorPage.h"
#include "ui/export/ExportSheet.h"
#include "ui/export/ExportStatus.h"
#include "ui/library/InfoPanel.h"
#include "ui/library/LibraryPage.h"
#include "ui/profile/ProfilePage.h"
#include "ui/profile/ProfilePrompt.h"
#include "ui/shell/CommandActions.h"
#include "ui/shell/Pill.h"
#include "ui/shell/Prompts.h"
#include "ui/shell/SettingsSheet.h"

#include <QColorSpace>
#include <QMainWindow>
#include <QStackedWidget>
#include <QTimer>

namespace kelvaro {

// What the window works with; everything outlives it.
struct WindowParts {
    Appearance& appearance;
    LibraryStore& library;
    RenderEngine& engine;
    PhotoSessionCache& sessions;
    ThumbnailLoader& thumbnails;
    EditingServices& editing;
    Exporter& exporter;
    ProfileServices& profile;
    SettingsStore& settings;
    const UserFolders& folders;
    Desktop& desktop;
    const TextRules& texts;
    const LocalCalendar& calendar;
    std::string version;
    std::unique_ptr<Prompts> prompts = nullptr; // sheets when null
};

class MainWindow final : public QMainWindow {
public:
    explicit MainWindow(WindowParts parts);
    ~MainWindow() override;

    // Pictures are drawn in the screen's colours; an invalid profile stands for sRGB.
    void setScreenProfile(const QColorSpace& profile);
    CommandActions& commands() const { return *commands_; }
    LibraryPage& libraryPage() const { return *library_; }
    // Made when they are first needed, or once the library stands.
    EditorPage& editor();
    ExportSheet& exportSheet();
    SettingsSheet& settingsSheet();
    ProfilePage& profilePage();
    const CellPictures& pictures() const { return pictures_; }
    QString noticeText() const { return notice_->text(); }

protected:
    void closeEvent(QCloseEvent* event) override;
    void showEvent(QShowEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void makeLibrary();
    void prepareRest();
    InfoPanel* makeInfoPanel(QWidget* page);
    void bindFileCommands();
    void bindEditCommands();
    void bindViewCommands();
    void bindHelpCommands();
    void observeStore();
    void followDesktop();
    void applyAppearance();
    bool wantsDark() const;
    void showRoot();
    void showCommands();
    void showIndexing();
    QPoint noticePlace(QSize pill) const;
    QPoint statusPlace(QSize pill) const;
    void addFolder();
    void addGivenFolder(const std::filesystem::path& folder);
    void moveToTrash();
    void offerDeletion(const std::vector<PhotoUrl>& refused);
    void revert();
    void beginExport();
    void startExport(const ExportSettings& settings);
    void toggleInfo();
    void introduce();
    void bindProfile();
    void showProfile(bool shows);
    void showProfileName();
    void shareProfile();
    void restoreGeometryKept();
    ProtectedPaths protectedPaths() const;
    // The edit as it stands now, saved or not.
    Adjustments editOf(const PhotoUrl& photo) const;
    double largestMegapixels(const std::vector<PhotoUrl>& photos) const;

    WindowParts parts_;
    CellPictures pictures_;
    CommandActions* commands_;
    QStackedWidget* pages_;
    LibraryPage* library_ = nullptr;
    EditorPage* editor_ = nullptr;
    ProfilePage* profile_ = nullptr;
    ProfilePrompt* profilePrompt_ = nullptr;
    SettingsSheet* settings_ = nullptr;
    ExportSheet* exportSheet_ = nullptr;
    ExportStatus* exportStatus_ = nullptr;
    Pill *notice_, *indexing_;
    ThumbnailLoader::Ticket previewTicket_;
    std::vector<PhotoUrl> exporting_;
    std::size_t mostIndexing_ = 0; // folders since the last pause
    QColorSpace screenProfile_;
    DesktopPreferences system_; // as last told; asking may take a while
    QTimer preparing_, indexingSoon_;
    bool quits_ = false, settling_ = false, introduced_ = false, showsProfile_ = false;
    std::string shownError_;
    std::vector<Subscription> subscriptions_;
};

} // namespace kelvaro
