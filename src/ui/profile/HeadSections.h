// The upper part of the profile page: the greeting, the counts of the period, the tags, and the
// sentences.
#pragma once

#include "profile/Profile.h"
#include "ui/profile/Section.h"
#include "ui/profile/TagBadge.h"
#include "ui/theme/Appearance.h"

#include <QLabel>

#include <array>

namespace kelvaro {

class GreetingSection final : public Section {
public:
    GreetingSection(const Appearance& appearance, QWidget* parent);
    // Below the greeting the time that is told of.
    void show(const QString& greeting, const QString& time, IconName icon);
    int arrange(int widthPx) override;

private:
    class Portrait;
    Portrait* portrait_;
    QLabel *greeting_, *time_;
};

// Five numbers, each compared with the period before.
class CountsSection final : public Section {
public:
    explicit CountsSection(QWidget* parent);
    void show(const PeriodCounts& counts, const std::optional<PeriodCounts>& before,
              const std::string& titleBefore);
    int arrange(int widthPx) override;

private:
    struct Tile {
        QLabel *number, *title, *comparison;
    };
    std::array<Tile, 5> tiles_{};
};

// Badges, and below them the evidence of the one pointed at, at first that of the strongest.
class TagsSection final : public Section {
public:
    TagsSection(const Appearance& appearance, QWidget* parent);
    void show(const Profile& profile);
    int arrange(int widthPx) override;

private:
    void tell(const TagBadge* badge); // null: of the first

    const Appearance& appearance_;
    std::vector<StyleTag> tags_;
    std::vector<TagBadge*> badges_;
    QLabel* evidence_;
};

class WordsSection final : public Section {
public:
    explicit WordsSection(QWidget* parent) : Section(parent) {}
    void show(const Profile& profile);
    int arrange(int widthPx) override;

private:
    std::vector<std::string> sentences_;
    std::vector<QLabel*> lines_;
};

} // namespace kelvaro
