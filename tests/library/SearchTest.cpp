// What a query finds: the words of a photo, how they are spelt, and the states that tokens name.
#include "library/LibrarySamples.h"

#include <gtest/gtest.h>

#include <random>

namespace kelvaro {
namespace {

using namespace test;

PhotoMeta fullMeta() {
    PhotoMeta meta;
    meta.make = "NORDLICHT CORPORATION";
    meta.camera = "NORDLICHT D70";
    meta.lens = "Sønderby 50mm f/1.8";
    meta.focalLength = 50;
    meta.iso = 400;
    meta.aperture = 1.8;
    meta.shutter = 1 / 250.0;
    meta.taken = utc(2024, 3, 9, 9, 30);
    meta.width = 6000;
    meta.height = 4000;
    return meta;
}

TEST(Search, WordsStandInTheirOrder) {
    Library library;
    library.setFolder("/pictures/Hochzeit", {photoAt("/pictures/Hochzeit/Müller 1.jpg")});
    library.setMeta("/pictures/Hochzeit/Müller 1.jpg", fullMeta());
    EXPECT_EQ(library.table.searchText("/pictures/Hochzeit/Müller 1.jpg"),
              "muller 1.jpg hochzeit bitmap image jpeg nordlicht d70 sønderby 50mm f/1.8 "
              "50mm 50 mm 400 iso 400 f/1.8  f1.8 ƒ/1.8 1/250 s 1/250s "
              "2024-03-09 march mar 2024 saturday 6000x4000");
}

TEST(Search, FindsPhotosByEverythingTheyRecord) {
    const struct {
        const char* query;
        bool english, german;
    } cases[] = {
        {"iso 400", true, true},        {"400 iso", true, true},   {"400", true, true},
        {"iso 40", true, true},         {"iso 800", false, false}, {"50mm", true, true},
        {"50 mm", true, true},          {"51mm", false, false},    {"f/1.8", true, true},
        {"f/1,8", false, true},         {"f1.8", true, true},      {"ƒ/1.8", true, true},
        {"1/250", true, true},          {"1/250s", true, true},    {"1/2500", false, false},
        {"2024", true, true},           {"March", true, false},    {"märz", false, true},
        {"MARZ", false, true},          {"2024-03", true, true},   {"saturday", true, false},
        {"Samstag", false, true},       {"6000x4000", true, true}, {"nordlicht", true, true},
        {"CORPORATION", false, false},  {"sønderby", true, true},  {"jpeg", true, true},
        {"bitmap", true, true},         {"raw", false, false},     {"hochzeit", true, true},
        {"Müller", true, true},         {"muller", true, true},    {"MÜLLER iso", true, true},
        {"muller nikon", false, false}, {"", true, true},          {"  \t ", true, true},
        {"muller  \t d70", true, true}, {"ISO\xFF", false, false},
    };
    for (const bool isGerman : {false, true}) {
        Library library(isGerman ? "de_DE" : "en");
        library.setFolder("/Hochzeit", {photoAt("/Hochzeit/muller.JPG")});
        library.setMeta("/Hochzeit/muller.JPG", fullMeta());
        for (const auto& c : cases)
            EXPECT_EQ(library.finds(c.query), isGerman ? c.german : c.english)
                << c.query << (isGerman ? " in German" : " in English");
    }
}

TEST(Search, TokensNameStatesFromThreeLettersOn) {
    const struct {
        const char* query;
        bool edited, favorite;
    } cases[] = {{"ed", false, false},       {"edi", true, false},      {"EDITED", true, false},
                 {"editeds", false, false},  {"fa", false, false},      {"fav", false, true},
                 {"favor", false, true},     {"favorite", false, true}, {"favou", false, true},
                 {"favourite", false, true}, {"favs", false, false},    {"he", false, false},
                 {"hea", false, true},       {"heart", false, true},    {"hearts", false, false},
                 {"edi fav", false, false},  {"dit", false, false}};
    for (const auto& c : cases) {
        Library edited, favorite, both;
        for (Library* library : {&edited, &favorite, &both})
            library->setNames({"x.png"});
        edited.table.setEdit("/p/x.png", true, {});
        favorite.table.setFavorite("/p/x.png", true);
        both.table.setEdit("/p/x.png", true, {});
        both.table.setFavorite("/p/x.png", true);
        EXPECT_EQ(edited.finds(c.query), c.edited) << c.query;
        EXPECT_EQ(favorite.finds(c.query), c.favorite) << c.query;
        EXPECT_EQ(both.finds(c.query), c.edited || c.favorite || std::string(c.query) == "edi fav")
            << c.query;
    }
}

TEST(Search, ShutterTimesAsPeopleWriteThem) {
    const struct {
        double seconds;
        const char* text;
    } cases[] = {{1 / 8000.0, "1/8000"}, {1 / 250.0, "1/250"}, {0.00625, "1/160"}, {0.25, "1/4"},
                 {0.3, "0.3"},           {1 / 3.0, "0.3"},     {0.5, "0.5"},       {1, "1"},
                 {2.5, "2.5"},           {30, "30"},           {1800, "1800"}};
    for (const auto& c : cases)
        EXPECT_EQ(shutterNotation(c.seconds), c.text);
    const auto english = makeIcuTextRules("en"), german = makeIcuTextRules("de");
    EXPECT_EQ(shutterWords(0.5, *english), "0.5 s 0.5s 1/2");
    EXPECT_EQ(shutterWords(2.5, *german), "2.5 s 2.5s 2,5 s 2,5s");
    EXPECT_EQ(shutterWords(30, *german), "30 s 30s");
}

// Held against the definition: each token is looked for in the one long text of the photo.
TEST(Search, AgreesWithLookingThroughWholeTexts) {
    Library library("en", "Asia/Tokyo");
    std::mt19937 random(20261121);
    const auto below = [&](int n) { return int(random() % unsigned(n)); };
    const char* stems[] = {"IMG_", "Épée ", "日本", "DSC", "\xFF\xFE bad", "Straße"};
    std::vector<Photo> photos;
    for (int i = 0; i < 300; ++i)
        photos.push_back(photoAt("/Ferien 2023/" + std::string(stems[below(6)]) +
                                 std::to_string(i) + (below(2) ? ".jpg" : ".CR3")));
    library.setFolder("/Ferien 2023", photos);
    for (const Photo& photo : photos) {
        PhotoMeta meta = fullMeta();
        meta.iso = 100 << below(6);
        meta.focalLength = 10 + below(50) / 2.0;
        meta.shutter = below(2) ? 1.0 / (1 + below(500)) : 1 + below(50) / 7.0;
        meta.taken = FileTime{(1'600'000'000 + below(90'000'000)) * kSecond};
        if (below(3)) library.setMeta(photo.url, meta);
        library.table.setEdit(photo.url, below(4) == 0, {});
        library.table.setFavorite(photo.url, below(4) == 0);
    }
    const char* queries[] = {"img_1",  "epee",       "strasse", "日",       "edit",   "fav 2",
                             "iso 20", "mm",         "1/",      "saturday", "202",    "ferien raw",
                             "\xFF",   "sunday edi", "heart",   "f1.8",     "x4000 5"};
    for (const char* text : queries) {
        const SearchQuery query(text, *library.rules);
        std::set<std::string> expected, found;
        for (const Photo& photo : photos) {
            const std::string words = library.table.searchText(photo.url);
            const auto matches = [&](const std::string& token) {
                return words.find(token) != std::string::npos ||
                       (library.table.isEdited(photo.url) && SearchQuery::namesEdited(token)) ||
                       (library.table.isFavorite(photo.url) && SearchQuery::namesFavorite(token));
            };
            if (std::all_of(query.tokens().begin(), query.tokens().end(), matches))
                expected.insert(photo.url);
        }
        LibraryQuery request;
        request.searchText = text;
        for (const Photo* photo : library.table.query(request).photos)
            found.insert(photo->url);
        EXPECT_EQ(found, expected) << text;
    }
}

} // namespace
} // namespace kelvaro
