// The pictures of the grid's cells: asks the thumbnail loader for what is on the screen and near
// it, brings each to exactly the size at which it is drawn on other threads, lets it appear softly,
// and remembers shape and average colour of what was seen, for the next placeholder. Main thread.
#pragma once

#include "render/ThumbnailLoader.h"
#include "ui/grid/GridContent.h"
#include "ui/theme/Appearance.h"

#include <QColorSpace>
#include <QElapsedTimer>
#include <QObject>
#include <QThreadPool>
#include <QTimer>

#include <functional>
#include <string>
#include <unordered_map>

namespace kelvaro {

// A photo in one state: its key changes with its file and its edit.
struct PictureSource {
    std::string key;
    std::filesystem::path photo;
    Adjustments edit;
};

class CellPictures final : public QObject {
public:
    CellPictures(const Appearance& appearance, ThumbnailLoader& loader);
    ~CellPictures() override;

    // Pictures are converted to it; invalid: they stay as they are.
    void setScreenProfile(const QColorSpace& profile);

    // What is wanted now, the most urgent first; what was wanted before and is no more is dropped.
    struct Wish {
        PictureSource source;
        ThumbnailPriority priority;
    };
    void want(std::vector<Wish> wishes, int sizePx);

    // The picture for a drawing of `size` device pixels, or what is at hand until it is there.
    CellPicture picture(const PictureSource& source, QSize size);
    // Of the picture when it was last seen; empty before.
    QSize shape(const std::string& key) const;

    // It is wanted, and cannot be had.
    bool isRefused(const std::string& key) const;
    // All that is on the screen is at hand in its size, or cannot be had.
    bool areVisibleReady() const;

    std::function<void()> onChanged; // something should be drawn again

private:
    struct Seen {
        QSize shape;
        QRgb average = 0;
    };
    struct Fitted {
        QImage image;
        qint64 since = 0; // ms of clock_, when it appeared
        std::uint64_t used = 0;
        int sourcePx = 0; // the longer side of the thumbnail it was made of
    };
    struct Pending {
        ThumbnailLoader::Ticket ticket;
        int sizePx = 0;
        bool visible = false;
        bool answered = false, failed = false;
    };

    void arrived(const std::string& key, const ThumbnailResult& result);
    void fit(const std::string& key, const Thumbnail& thumbnail, QSize size);
    void fitted(const std::string& key, QImage image, int sourcePx);
    // Made of a smaller thumbnail than what is at hand now.
    bool isCoarse(const std::string& key, const Fitted& fit) const;
    void trim();
    void changed();

    const Appearance& appearance_;
    ThumbnailLoader& loader_;
    QThreadPool threads_;
    QColorSpace profile_;
    int sizePx_ = 256;
    std::unordered_map<std::string, Pending> pending_;
    std::unordered_map<std::string, Thumbnail> held_; // of what is wanted, as it came
    std::unordered_map<std::string, Fitted> fitted_;
    std::unordered_map<std::string, QSize> fitting_;
    std::unordered_map<std::string, Seen> seen_;
    std::size_t fittedBytes_ = 0;
    std::uint64_t uses_ = 0;
    QElapsedTimer clock_;
    QTimer redraw_; // while something appears
    qint64 movesUntil_ = 0;
};

} // namespace kelvaro
