#include "ui/profile/HeadSections.h"

#include "ui/Texts.h"
#include "ui/controls/Labels.h"

#include <QPainter>

#include <algorithm>

namespace kelvaro {
namespace {

constexpr int portraitPx = 48, tileGapPx = 16, narrowestTilePx = 112;

// The height of a label that breaks into lines of that width.
int heightOf(const QLabel* text, int widthPx) {
    return text->wordWrap() ? text->heightForWidth(widthPx) : text->sizeHint().height();
}

} // namespace

// --- Greeting ---

class GreetingSection::Portrait final : public QWidget {
public:
    Portrait(const Appearance& appearance, QWidget* parent)
        : QWidget(parent), appearance_(appearance) {
        resize(portraitPx, portraitPx);
    }
    void show(IconName icon) {
        icon_ = icon;
        update();
    }

protected:
    void paintEvent(QPaintEvent*) override {
        const Theme& theme = appearance_.theme();
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        painter.setBrush(theme.control);
        painter.drawEllipse(rect());
        constexpr int iconPx = 24, at = (portraitPx - iconPx) / 2;
        painter.drawPixmap(at, at, iconPixmap(icon_, iconPx, theme.text, devicePixelRatioF()));
    }

private:
    const Appearance& appearance_;
    IconName icon_ = IconName::person;
};

GreetingSection::GreetingSection(const Appearance& appearance, QWidget* parent)
    : Section(parent), portrait_(new Portrait(appearance, this)) {
    greeting_ = label({}, "greeting", this);
    greeting_->setObjectName("profileGreeting");
    greeting_->setWordWrap(true);
    time_ = label({}, "secondary", this);
    time_->setObjectName("profileTime");
}

void GreetingSection::show(const QString& greeting, const QString& time, IconName icon) {
    greeting_->setText(breakable(greeting));
    time_->setText(time);
    portrait_->show(icon);
}

int GreetingSection::arrange(int widthPx) {
    const int left = portraitPx + measure::margin, room = widthPx - left;
    const int line = heightOf(greeting_, room), below = heightOf(time_, room);
    const int tall = std::max(portraitPx, line + below);
    const int top = (tall - line - below) / 2;
    portrait_->move(0, (tall - portraitPx) / 2);
    greeting_->setGeometry(left, top, room, line);
    time_->setGeometry(left, top + line, room, below);
    return tall;
}

// --- Counts ---

CountsSection::CountsSection(QWidget* parent) : Section(parent) {
    for (Tile& tile : tiles_) {
        tile = {label({}, "greeting", this), label({}, "body", this), label({}, "caption", this)};
        tile.comparison->setWordWrap(true);
    }
}

void CountsSection::show(const PeriodCounts& counts, const std::optional<PeriodCounts>& before,
                         const std::string& titleBefore) {
    struct Count {
        std::int64_t PeriodCounts::*value;
        const char *one, *many;
    };
    constexpr std::array<Count, 5> all{{{&PeriodCounts::photos, "photo", "photos"},
                                        {&PeriodCounts::daysOut, "day out", "days out"},
                                        {&PeriodCounts::favorites, "favorite", "favorites"},
                                        {&PeriodCounts::edits, "edit", "edits"},
                                        {&PeriodCounts::exports, "export", "exports"}}};
    for (std::size_t at = 0; at < all.size(); ++at) {
        const std::int64_t value = counts.*all[at].value;
        tiles_[at].number->setText(number(value));
        tiles_[at].title->setText(words(value == 1 ? all[at].one : all[at].many));
        tiles_[at].comparison->setText(
            before ? words(comparison(value, (*before).*all[at].value, titleBefore)) : QString());
    }
}

int CountsSection::arrange(int widthPx) {
    const int fitting = (widthPx + tileGapPx) / (narrowestTilePx + tileGapPx);
    const int columns = std::clamp(fitting, 2, static_cast<int>(tiles_.size()));
    const int wide = (widthPx - (columns - 1) * tileGapPx) / columns;
    int top = 0, tallest = 0;
    for (int at = 0; at < static_cast<int>(tiles_.size()); ++at) {
        if (at > 0 && at % columns == 0) top += std::exchange(tallest, 0) + measure::margin;
        const Tile& tile = tiles_[std::size_t(at)];
        const int left = at % columns * (wide + tileGapPx);
        int below = top;
        for (QLabel* text : {tile.number, tile.title, tile.comparison}) {
            const bool isEmpty = text->text().isEmpty();
            const int tall = isEmpty ? 0 : heightOf(text, wide);
            text->setGeometry(left, below, wide, tall);
            text->setVisible(!isEmpty);
            below += tall + (text == tile.title ? 2 : 0);
        }
        tallest = std::max(tallest, below - top);
    }
    return top + tallest;
}

// --- Tags ---

TagsSection::TagsSection(const Appearance& appearance, QWidget* parent)
    : Section(parent), appearance_(appearance) {
    evidence_ = label({}, "secondary", this);
    evidence_->setObjectName("tagEvidence");
    evidence_->setWordWrap(true);
}

void TagsSection::tell(const TagBadge* badge) {
    const TagBadge* told = badge || badges_.empty() ? badge : badges_.front();
    for (TagBadge* each : badges_)
        each->setTold(each == told);
    evidence_->setText(told ? breakable(told->evidence()) : QString());
}

void TagsSection::show(const Profile& profile) {
    const bool isYoung = profile.counts.photos > 0 && profile.tags.empty();
    auto tags = strongest(profile.tags);
    if (tags == tags_ && !isYoung) return;
    tags_ = std::move(tags);
    for (TagBadge* badge : badges_)
        delete badge;
    badges_.clear();
    for (const StyleTag& tag : tags_) {
        auto* badge = new TagBadge(appearance_, words(tag.title), words(tag.reason), this);
        badge->onPointed = [this](const TagBadge* at) { tell(at); };
        badge->setVisible(true);
        badges_.push_back(badge);
    }
    tell(nullptr);
    if (isYoung)
        evidence_->setText(words(profile.counts.photos < 10
                                     ? "Style tags come with your first ten photos."
                                     : "No style stands out here: a bit of everything."));
}

int TagsSection::arrange(int widthPx) {
    int left = 0, top = 0, tall = 0;
    for (TagBadge* badge : badges_) {
        const QSize size = badge->sizeHint().boundedTo({widthPx, 1000});
        if (left > 0 && left + size.width() > widthPx) {
            left = 0;
            top += tall + measure::unit;
        }
        badge->setGeometry(QRect(QPoint(left, top), size));
        left += size.width() + measure::unit;
        tall = size.height();
    }
    if (evidence_->text().isEmpty()) return 0;
    if (!badges_.empty()) top += tall + 12;
    // Room for two lines of evidence where the window is narrow, so that nothing below jumps.
    int longest = heightOf(evidence_, widthPx);
    for (const TagBadge* badge : badges_) {
        const QRect room = evidence_->fontMetrics().boundingRect(
            QRect(0, 0, widthPx, 1000), Qt::TextWordWrap, breakable(badge->evidence()));
        longest = std::max(longest, room.height());
    }
    evidence_->setGeometry(0, top, widthPx, longest);
    evidence_->setAlignment(Qt::AlignTop);
    return top + longest;
}

// --- Sentences ---

void WordsSection::show(const Profile& profile) {
    auto sentences = sentencesOf(profile);
    if (sentences == sentences_) return;
    sentences_ = std::move(sentences);
    for (QLabel* line : lines_)
        delete line;
    lines_.clear();
    for (const std::string& sentence : sentences_) {
        lines_.push_back(label(breakable(words(sentence)), "body", this));
        lines_.back()->setWordWrap(true);
        lines_.back()->setVisible(true);
    }
}

int WordsSection::arrange(int widthPx) {
    int top = 0;
    for (QLabel* line : lines_) {
        if (top > 0) top += 6;
        const int tall = heightOf(line, widthPx);
        line->setGeometry(0, top, widthPx, tall);
        top += tall;
    }
    return top;
}

} // namespace kelvaro
