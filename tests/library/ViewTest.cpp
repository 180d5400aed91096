// What the table shows: scopes, filters, orders with their ties, day groups, and that it keeps what
// it knows of photos while folders come, change and go.
#include "library/LibrarySamples.h"

#include <gtest/gtest.h>

#include <random>

namespace kelvaro {
namespace {

using namespace test;

LibraryQuery by(SortKey key, bool ascending = true) {
    LibraryQuery request;
    request.order = {key, ascending};
    return request;
}

std::vector<PhotoGroup> groupsOf(Library& library, const LibraryQuery& request) {
    return library.table.query(request).groups;
}

TEST(View, NamesStandAsInAFileBrowser) {
    Library library;
    const Names expected{"_x.jpg",      "img_1.jpg", "IMG_2.CR3",   "IMG_2.JPG",
                         "img_2.jpg",   "IMG_9.jpg", "IMG_010.jpg", "IMG_10a.jpg",
                         "IMG_100.jpg", "Zoë.jpg",   "Zürich.png"};
    Names shuffled = expected;
    std::mt19937 random(7);
    for (int round = 0; round < 20; ++round) {
        std::shuffle(shuffled.begin(), shuffled.end(), random);
        // In two steps, so that the second half is merged into the order of the first.
        Library grown;
        const auto half = Names(shuffled.begin(), shuffled.begin() + 5);
        grown.setNames(half);
        grown.names(by(SortKey::name));
        grown.setNames(shuffled);
        EXPECT_EQ(grown.names(by(SortKey::name)), expected);
        EXPECT_EQ(grown.names(by(SortKey::name, false)), Names(expected.rbegin(), expected.rend()));
    }
    library.setFolder("/b", {photoAt("/b/same.jpg")});
    library.setFolder("/a", {photoAt("/a/same.jpg")});
    EXPECT_EQ(library.table.query(by(SortKey::name)).photos[0]->url, "/a/same.jpg");
}

TEST(View, EqualValuesFallBackToNameOrderEitherWay) {
    Library library;
    library.setFolder(
        "/p", {photoAt("/p/b10.jpg", utc(2020, 1, 1), 5), photoAt("/p/b9.jpg", utc(2020, 1, 1), 5),
               photoAt("/p/a.jpg", utc(2020, 1, 2), 5), photoAt("/p/c.jpg", utc(2019, 1, 1), 7)});
    const struct {
        SortKey key;
        bool ascending;
        Names expected;
    } cases[] = {{SortKey::modified, true, {"c.jpg", "b9.jpg", "b10.jpg", "a.jpg"}},
                 {SortKey::modified, false, {"a.jpg", "b9.jpg", "b10.jpg", "c.jpg"}},
                 {SortKey::created, true, {"c.jpg", "b9.jpg", "b10.jpg", "a.jpg"}},
                 {SortKey::size, true, {"a.jpg", "b9.jpg", "b10.jpg", "c.jpg"}},
                 {SortKey::size, false, {"c.jpg", "a.jpg", "b9.jpg", "b10.jpg"}},
                 {SortKey::dateTaken, false, {"a.jpg", "b9.jpg", "b10.jpg", "c.jpg"}}};
    for (const auto& c : cases)
        EXPECT_EQ(library.names(by(c.key, c.ascending)), c.expected) << rawValue(c.key);
    // A capture date replaces the date of the file, for this order alone.
    PhotoMeta meta;
    meta.taken = utc(2018, 5, 5);
    library.setMeta("/p/a.jpg", meta);
    EXPECT_EQ(library.names(by(SortKey::dateTaken)),
              (Names{"a.jpg", "c.jpg", "b9.jpg", "b10.jpg"}));
    EXPECT_EQ(library.names(by(SortKey::modified)), (Names{"c.jpg", "b9.jpg", "b10.jpg", "a.jpg"}));
}

TEST(View, DaysAreThoseOfTheUsersPlace) {
    Library tokyo("en", "Asia/Tokyo"), utcLibrary, german("de_DE", "Europe/Berlin");
    for (Library* library : {&tokyo, &utcLibrary, &german}) {
        library->setFolder("/p", {photoAt("/p/a.jpg", utc(2024, 3, 8, 14, 59, 59)),
                                  photoAt("/p/b.jpg", utc(2024, 3, 8, 15)),
                                  photoAt("/p/c.jpg", utc(2024, 3, 9, 14, 59)),
                                  photoAt("/p/d.jpg", utc(1969, 7, 20, 20, 17))});
    }
    using Groups = std::vector<PhotoGroup>;
    const auto order = by(SortKey::dateTaken);
    EXPECT_EQ(groupsOf(tokyo, order), (Groups{{0, "Monday, 21 July 1969"},
                                              {1, "Friday, 8 March 2024"},
                                              {2, "Saturday, 9 March 2024"}}));
    EXPECT_EQ(groupsOf(utcLibrary, order), (Groups{{0, "Sunday, 20 July 1969"},
                                                   {1, "Friday, 8 March 2024"},
                                                   {3, "Saturday, 9 March 2024"}}));
    EXPECT_EQ(groupsOf(german, order)[1].title, "Freitag, 8. März 2024");
    LibraryQuery months = order;
    months.monthGroups = true;
    EXPECT_EQ(groupsOf(utcLibrary, months), (Groups{{0, "July 1969"}, {1, "March 2024"}}));
    LibraryQuery today = by(SortKey::dateTaken, false);
    today.now = utc(2024, 3, 9, 23);
    EXPECT_EQ(groupsOf(utcLibrary, today),
              (Groups{{0, "Today"}, {1, "Yesterday"}, {3, "Sunday, 20 July 1969"}}));
    today.now = utc(2024, 3, 9, 15); // already the 10th in Tokyo
    EXPECT_EQ(groupsOf(tokyo, today)[0].title, "Yesterday");
    EXPECT_TRUE(groupsOf(utcLibrary, by(SortKey::name)).empty());
    EXPECT_TRUE(groupsOf(utcLibrary, by(SortKey::size)).empty());
}

TEST(View, DaysWithAnHourMoreOrLessStayOneDay) {
    Library berlin("en", "Europe/Berlin");
    std::vector<Photo> photos;
    for (const int day : {30, 31}) // clocks are put forward in the night to the 31st
        for (int hour = 0; hour < 24; ++hour)
            photos.push_back(photoAt("/p/" + std::to_string(day * 100 + hour) + ".jpg",
                                     utc(2024, 3, day, hour)));
    berlin.setFolder("/p", photos);
    const auto groups = groupsOf(berlin, by(SortKey::modified));
    ASSERT_EQ(groups.size(), 3u);
    EXPECT_EQ(groups[1], (PhotoGroup{23, "Sunday, 31 March 2024"})); // from 23:00 UTC
    EXPECT_EQ(groups[2], (PhotoGroup{46, "Monday, 1 April 2024"}));  // from 22:00 UTC
}

TEST(View, EditedPhotosAreGroupedByTheirLatestEdit) {
    Library library;
    library.setFolder("/p",
                      {photoAt("/p/a.jpg", utc(2001, 1, 1)), photoAt("/p/b.jpg", utc(2003, 1, 1)),
                       photoAt("/p/c.jpg", utc(2002, 1, 1)), photoAt("/p/d.jpg", utc(2009, 1, 1)),
                       photoAt("/p/e.jpg", utc(2000, 1, 1))});
    library.table.setEdit("/p/a.jpg", true, utc(2024, 5, 2));
    library.table.setEdit("/p/b.jpg", true, utc(2024, 5, 1));
    library.table.setEdit("/p/c.jpg", true, utc(2024, 5, 1, 20));
    library.table.setEdit("/p/d.jpg", true, {});
    LibraryQuery request = by(SortKey::dateTaken, false);
    request.scope.kind = Scope::Kind::edited;
    EXPECT_EQ(library.names(request), (Names{"a.jpg", "b.jpg", "c.jpg", "d.jpg"}));
    using Groups = std::vector<PhotoGroup>;
    EXPECT_EQ(groupsOf(library, request), (Groups{{0, "Thursday, 2 May 2024"},
                                                  {1, "Wednesday, 1 May 2024"},
                                                  {3, "Edit date unknown"}}));
    request.order = {SortKey::name, true};
    EXPECT_EQ(library.names(request), (Names{"b.jpg", "c.jpg", "a.jpg", "d.jpg"}));
    library.table.setEdit("/p/a.jpg", false, {});
    EXPECT_EQ(library.names(request), (Names{"b.jpg", "c.jpg", "d.jpg"}));
}

TEST(View, FiltersJoinWithinAGroupAndAcross) {
    Library library;
    library.setNames({"a.jpg", "b.jpg", "c.dng", "d.dng", "e.png"});
    const auto set = [&](const char* name, const char* camera, const char* lens, double focal) {
        PhotoMeta meta;
        if (*camera) meta.camera = camera;
        if (*lens) meta.lens = lens;
        if (focal > 0) meta.focalLength = focal;
        library.setMeta(std::string("/p/") + name, meta);
    };
    set("a.jpg", "One", "Wide", 24);
    set("b.jpg", "Two", "Wide", 35);
    set("c.dng", "One", "Long", 200);
    set("d.dng", "", "", 0); // e.png has no metadata at all
    const struct {
        PhotoFilter filter;
        Names expected;
    } cases[] = {
        {{}, {"a.jpg", "b.jpg", "c.dng", "d.dng", "e.png"}},
        {{{"One"}, {}, {}, {}}, {"a.jpg", "c.dng"}},
        {{{"One", "Two"}, {}, {}, {}}, {"a.jpg", "b.jpg", "c.dng"}},
        {{{"One"}, {"Wide"}, {}, {}}, {"a.jpg"}},
        {{{}, {}, {24, 200}, {}}, {"a.jpg", "c.dng"}},
        {{{}, {}, {}, {PhotoKind::raw}}, {"c.dng", "d.dng"}},
        {{{}, {"Wide"}, {}, {PhotoKind::raw}}, {}},
        {{{""}, {}, {}, {}}, {}},
        {{{"Unheard of"}, {}, {}, {}}, {}},
        {{{}, {}, {}, {PhotoKind::raw, PhotoKind::image}},
         {"a.jpg", "b.jpg", "c.dng", "d.dng", "e.png"}},
    };
    for (std::size_t i = 0; i < std::size(cases); ++i) {
        LibraryQuery request = by(SortKey::name);
        request.filter = cases[i].filter;
        EXPECT_EQ(library.names(request), cases[i].expected) << "case " << i;
    }
    LibraryQuery favorites;
    favorites.scope.kind = Scope::Kind::favorites;
    library.table.setFavorite("/p/c.dng", true);
    EXPECT_EQ(
        library.table.filterOptions(LibraryQuery()),
        (FilterOptions{
            {"One", "Two"}, {"Long", "Wide"}, {24, 35, 200}, {PhotoKind::raw, PhotoKind::image}}));
    EXPECT_EQ(library.table.filterOptions(favorites),
              (FilterOptions{{"One"}, {"Long"}, {200}, {PhotoKind::raw}}));
}

TEST(View, ScopesAndFoldersThatAreAway) {
    Library library;
    library.setFolder("/a", {photoAt("/a/1.jpg")});
    library.setFolder("/a/b", {photoAt("/a/b/2.jpg")});
    library.setFolder("/", {photoAt("/0.jpg")});
    LibraryQuery request = by(SortKey::name);
    request.scope = {Scope::Kind::folder, "/a"};
    EXPECT_EQ(library.names(request), Names{"1.jpg"}); // not of the folder inside
    const LibraryView inside = library.table.query(request), all = library.table.query({});
    for (std::size_t at = 0; at < all.photos.size(); ++at)
        EXPECT_EQ(all.positionOf(all.photos[at]->url), at);
    for (const char* elsewhere : {"/a/b/2.jpg", "/0.jpg", "/a/3.jpg", "/c/1.jpg", ""})
        EXPECT_EQ(inside.positionOf(elsewhere), std::nullopt) << elsewhere;
    request.scope = {Scope::Kind::folder, "/"};
    EXPECT_EQ(library.names(request), Names{"0.jpg"});
    request.scope = {Scope::Kind::all, ""};
    request.unavailable = {"/a"};
    EXPECT_EQ(library.names(request), (Names{"0.jpg", "2.jpg"}));
    library.table.removeFolder("/a/b");
    library.table.removeFolder("/unheard-of");
    EXPECT_EQ(library.names(by(SortKey::name)), (Names{"0.jpg", "1.jpg"}));
    EXPECT_EQ(library.table.size(), 2u);
}

TEST(View, RescansKeepWhatIsKnown) {
    Library library;
    library.setNames({"changed.jpg", "gone.jpg", "same.jpg"});
    PhotoMeta meta;
    meta.iso = 100;
    for (const char* url : {"/p/changed.jpg", "/p/gone.jpg", "/p/same.jpg"}) {
        library.setMeta(url, meta);
        library.table.setFavorite(url, true);
        library.table.setEdit(url, true, utc(2024, 1, 1));
    }
    const LibraryView before = library.table.query(by(SortKey::name));
    library.setFolder("/p", {photoAt("/p/changed.jpg", utc(2022, 1, 1)), photoAt("/p/new.jpg"),
                             photoAt("/p/same.jpg")});
    EXPECT_EQ(library.names(by(SortKey::name)), (Names{"changed.jpg", "new.jpg", "same.jpg"}));
    EXPECT_TRUE(library.table.meta("/p/same.jpg"));
    EXPECT_FALSE(library.table.meta("/p/changed.jpg"));
    EXPECT_TRUE(library.table.isEdited("/p/changed.jpg"));
    EXPECT_TRUE(library.table.isFavorite("/p/changed.jpg"));
    EXPECT_FALSE(library.table.isFavorite("/p/new.jpg"));
    EXPECT_FALSE(library.table.photo("/p/gone.jpg"));
    EXPECT_EQ(before.photos[1]->url, "/p/gone.jpg"); // a view stays good
    EXPECT_EQ(before.positionOf("/p/gone.jpg"), 1u);
    EXPECT_EQ(before.positionOf("/p/new.jpg"), std::nullopt);
    // Metadata of the file as it was comes too late.
    library.table.setMeta("/p/changed.jpg", std::make_shared<const PhotoMeta>(meta));
    EXPECT_FALSE(library.table.meta("/p/changed.jpg"));
    const std::vector<PhotoUrl> trashed{"/p/new.jpg", "/p/never.jpg", "/q/x.jpg"};
    library.table.remove(trashed);
    EXPECT_EQ(library.names(by(SortKey::name)), (Names{"changed.jpg", "same.jpg"}));
    EXPECT_TRUE(library.table.meta("/p/same.jpg"));
}

// Any history of folders ends in the same view as a table that saw only the last state.
TEST(View, HistoryDoesNotMatter) {
    std::mt19937 random(42);
    const auto below = [&](int n) { return int(random() % unsigned(n)); };
    for (int round = 0; round < 30; ++round) {
        Library lived, fresh;
        std::map<std::string, std::vector<Photo>> last;
        for (int step = 0; step < 12; ++step) {
            const std::string folder = "/f" + std::to_string(below(3));
            std::vector<Photo> photos;
            for (int i = 0; i < 12; ++i) {
                if (below(3))
                    photos.push_back(photoAt(folder + "/n" + std::to_string(i) + ".jpg",
                                             utc(2020, 1, 1 + below(4)), below(3)));
            }
            if (below(5) == 0) {
                lived.table.removeFolder(folder);
                last.erase(folder);
            } else {
                lived.setFolder(folder, photos);
                last[folder] = photos;
            }
            lived.names(by(kSortKeys[std::size_t(below(5))], below(2)));
        }
        for (const auto& [folder, photos] : last)
            fresh.setFolder(folder, photos);
        for (const SortKey key : kSortKeys) {
            for (const bool ascending : {true, false}) {
                EXPECT_EQ(lived.names(by(key, ascending)), fresh.names(by(key, ascending)));
            }
        }
        EXPECT_EQ(groupsOf(lived, by(SortKey::modified)), groupsOf(fresh, by(SortKey::modified)));
    }
}

TEST(View, SortOrdersAreStored) {
    for (const SortKey key : kSortKeys) {
        for (const bool ascending : {true, false}) {
            EXPECT_EQ(sortOrderFrom(storedText({key, ascending})), (SortOrder{key, ascending}));
        }
    }
    EXPECT_EQ(storedText({SortKey::dateTaken, false}), R"({"ascending":false,"key":"dateTaken"})");
    for (const char* text : {"", "{", "[]", R"({"key":"colour","ascending":true})",
                             R"({"key":"name"})", R"({"key":3,"ascending":true})", "\xFF"})
        EXPECT_EQ(sortOrderFrom(text), SortOrder()) << text;
}

TEST(View, EmptyGridsSayWhy) {
    LibraryQuery folder, favorites, edited, searched, filtered;
    folder.scope = {Scope::Kind::folder, "/a"};
    favorites.scope.kind = Scope::Kind::favorites;
    edited.scope.kind = Scope::Kind::edited;
    searched.searchText = "Zürich";
    searched.filter.cameras = {"x"};
    filtered.filter.cameras = {"x"};
    const EmptyReasons none{}, some{true, false, false, false}, away{true, true, true, true},
        all{true, false, true, true};
    const struct {
        const LibraryQuery& request;
        const EmptyReasons& reasons;
        const char *text, *button;
    } cases[] = {
        {folder, none, "Add a folder of photos to get started", "Add a folder of photos"},
        {folder, away, "This folder isn't available. Is the drive connected?", ""},
        {favorites, some, "No favorites yet — press . or right-click › Favorite", ""},
        {edited, some, "No edited photos yet", ""},
        {searched, all, "No photos match “Zürich”", "Clear Search"},
        {filtered, all, "No photos match these filters", "Clear Filters"},
        {favorites, all, "No photos here", ""},
        {folder, some, "No photos here", ""},
    };
    for (const auto& c : cases)
        EXPECT_EQ(emptyState(c.request, c.reasons), (EmptyState{c.text, c.button}));
}

} // namespace
} // namespace kelvaro
