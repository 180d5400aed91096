#include "ui/library/CellPictures.h"

#include <QPointer>

#include <algorithm>
#include <unordered_set>

namespace kelvaro {
namespace {

constexpr std::size_t fittedLimitBytes = std::size_t(96) << 20;
constexpr std::size_t seenLimit = 200'000;
constexpr int frameMs = 16;

// A view of the thumbnail's pixels that keeps it alive.
QImage wrapped(const Thumbnail& thumbnail) {
    auto* owner = new Thumbnail(thumbnail);
    const auto format = thumbnail->channels == 4 ? QImage::Format_RGBX8888 : QImage::Format_RGB888;
    return QImage(
        thumbnail->row<uchar>(0), thumbnail->size.width, thumbnail->size.height,
        static_cast<qsizetype>(thumbnail->rowBytes()), format,
        [](void* kept) { delete static_cast<Thumbnail*>(kept); }, owner);
}

int longerSide(const Thumbnail& thumbnail) {
    return std::max(thumbnail->size.width, thumbnail->size.height);
}

QImage brought(const Thumbnail& thumbnail, QSize size, const QColorSpace& profile) {
    QImage image = wrapped(thumbnail).scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    image.convertTo(QImage::Format_RGB32);
    if (profile.isValid()) {
        image.setColorSpace(QColorSpace::SRgb);
        image.convertToColorSpace(profile);
    }
    return image;
}

} // namespace

CellPictures::CellPictures(const Appearance& appearance, ThumbnailLoader& loader)
    : appearance_(appearance), loader_(loader) {
    threads_.setMaxThreadCount(2);
    clock_.start();
    redraw_.setInterval(frameMs);
    QObject::connect(&redraw_, &QTimer::timeout, this, [this] {
        if (clock_.elapsed() > movesUntil_) redraw_.stop();
        if (onChanged) onChanged();
    });
}

CellPictures::~CellPictures() {
    pending_.clear();
    threads_.clear();
    threads_.waitForDone();
}

void CellPictures::setScreenProfile(const QColorSpace& profile) {
    profile_ = profile;
    fitted_.clear();
    fittedBytes_ = 0;
    changed();
}

void CellPictures::want(std::vector<Wish> wishes, int sizePx) {
    std::unordered_set<std::string> wanted;
    for (const Wish& wish : wishes)
        wanted.insert(wish.source.key);
    std::erase_if(pending_, [&](const auto& entry) { return !wanted.contains(entry.first); });
    std::erase_if(held_, [&](const auto& entry) { return !wanted.contains(entry.first); });
    sizePx_ = sizePx;
    for (Wish& wish : wishes) {
        const std::string key = wish.source.key;
        if (const auto asked = pending_.find(key);
            asked != pending_.end() && (asked->second.sizePx == sizePx || asked->second.failed)) {
            asked->second.ticket.setPriority(wish.priority);
            asked->second.visible = wish.priority == ThumbnailPriority::visible;
            continue;
        }
        Pending& pending = pending_[key];
        pending.sizePx = sizePx;
        pending.visible = wish.priority == ThumbnailPriority::visible;
        pending.answered = false;
        pending.ticket = loader_.request(
            {std::move(wish.source.photo), std::move(wish.source.edit), sizePx}, wish.priority,
            [this, key](const ThumbnailResult& result) { arrived(key, result); });
    }
}

void CellPictures::arrived(const std::string& key, const ThumbnailResult& result) {
    const auto asked = pending_.find(key);
    if (asked == pending_.end()) return;
    asked->second.answered = true;
    if (!result) {
        asked->second.failed = true; // marked as such; opening the photo tells why
        return changed();
    }
    held_[key] = *result;
    changed();
}

bool CellPictures::isRefused(const std::string& key) const {
    const auto asked = pending_.find(key);
    return asked != pending_.end() && asked->second.failed;
}

bool CellPictures::areVisibleReady() const {
    return std::ranges::all_of(pending_, [&](const auto& entry) {
        const auto& [key, pending] = entry;
        if (!pending.visible || pending.failed) return true;
        const auto ready = fitted_.find(key);
        return pending.answered && ready != fitted_.end() && !fitting_.contains(key) &&
               !isCoarse(key, ready->second);
    });
}

bool CellPictures::isCoarse(const std::string& key, const Fitted& fit) const {
    const auto held = held_.find(key);
    return held != held_.end() && fit.sourcePx < longerSide(held->second);
}

QSize CellPictures::shape(const std::string& key) const {
    const auto found = seen_.find(key);
    return found == seen_.end() ? QSize() : found->second.shape;
}

CellPicture CellPictures::picture(const PictureSource& source, QSize size) {
    CellPicture found;
    if (const auto seen = seen_.find(source.key); seen != seen_.end())
        found.average = QColor(seen->second.average);
    const auto held = held_.find(source.key);
    const auto ready = fitted_.find(source.key);
    if (ready != fitted_.end()) {
        Fitted& fit = ready->second;
        fit.used = ++uses_;
        found.image = fit.image;
        const int motion = appearance_.motionMs();
        if (motion > 0)
            found.opacity = std::min(1.0, double(clock_.elapsed() - fit.since + frameMs) / motion);
    }
    const bool exact = ready != fitted_.end() && ready->second.image.size() == size &&
                       !isCoarse(source.key, ready->second);
    if (!exact && held != held_.end() && !size.isEmpty()) fit(source.key, held->second, size);
    return found;
}

void CellPictures::fit(const std::string& key, const Thumbnail& thumbnail, QSize size) {
    if (const auto going = fitting_.find(key); going != fitting_.end() && going->second == size)
        return;
    fitting_[key] = size;
    threads_.start([this, key, thumbnail, size, profile = profile_] {
        QImage image = brought(thumbnail, size, profile);
        const QRgb average =
            image.scaled(1, 1, Qt::IgnoreAspectRatio, Qt::SmoothTransformation).pixel(0, 0);
        QMetaObject::invokeMethod(
            this,
            [this, key, average, shape = QSize(thumbnail->size.width, thumbnail->size.height),
             ready = std::move(image)] {
                if (seen_.size() >= seenLimit) seen_.clear();
                seen_[key] = {shape, average};
                fitted(key, ready, std::max(shape.width(), shape.height()));
            },
            Qt::QueuedConnection);
    });
}

void CellPictures::fitted(const std::string& key, QImage image, int sourcePx) {
    if (const auto going = fitting_.find(key);
        going != fitting_.end() && going->second == image.size())
        fitting_.erase(going);
    Fitted& entry = fitted_[key];
    fittedBytes_ -= static_cast<std::size_t>(entry.image.sizeInBytes());
    fittedBytes_ += static_cast<std::size_t>(image.sizeInBytes());
    // Only what was not there before appears softly; a sharper one takes its place at once.
    if (entry.image.isNull()) {
        entry.since = clock_.elapsed();
        movesUntil_ = entry.since + appearance_.motionMs() + frameMs;
    }
    entry.image = std::move(image);
    entry.sourcePx = sourcePx;
    entry.used = ++uses_;
    trim();
    changed();
}

void CellPictures::trim() {
    if (fittedBytes_ <= fittedLimitBytes) return;
    std::vector<std::pair<std::uint64_t, const std::string*>> ages;
    ages.reserve(fitted_.size());
    for (const auto& [key, entry] : fitted_)
        ages.emplace_back(entry.used, &key);
    std::ranges::sort(ages);
    std::vector<std::string> leaving;
    std::size_t freed = 0;
    for (const auto& [used, key] : ages) {
        if (fittedBytes_ - freed <= fittedLimitBytes * 3 / 4) break;
        freed += static_cast<std::size_t>(fitted_.at(*key).image.sizeInBytes());
        leaving.push_back(*key);
    }
    for (const std::string& key : leaving)
        fitted_.erase(key);
    fittedBytes_ -= freed;
}

void CellPictures::changed() {
    movesUntil_ = std::max(movesUntil_, clock_.elapsed());
    if (!redraw_.isActive()) redraw_.start();
}

} // namespace kelvaro
