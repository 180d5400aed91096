// The words of alerts, as people read them.
#include "library/LibraryTexts.h"
#include "library/ByteText.h"

#include <gtest/gtest.h>

namespace kelvaro {
namespace {

TEST(LibraryTextsTest, QuestionsBeforePhotosLeave) {
    const texts::Alert one = texts::trashQuestion({"/p/IMG_1.CR3"});
    EXPECT_EQ(one.title, "Move “IMG_1.CR3” to the Trash?");
    EXPECT_EQ(one.text,
              "You can put it back from the Trash. Its edits are kept and return with it.");
    EXPECT_EQ(one.confirm, "Move to Trash");
    const texts::Alert two = texts::trashQuestion({"/p/1.jpg", "/p/2.jpg"});
    EXPECT_EQ(two.title, "Move 2 photos to the Trash?");
    EXPECT_EQ(two.text,
              "You can put them back from the Trash. Their edits are kept and return with them.");
    EXPECT_EQ(texts::deleteQuestion({"/p/1.jpg"}).text,
              "“1.jpg” can't be moved to the Trash.\n\nDelete immediately instead? This can't be "
              "undone.");
    EXPECT_EQ(texts::deleteQuestion({"/p/1.jpg", "/p/2.jpg"}).text,
              "2 photos can't be moved to the Trash.\n\nDelete immediately instead? This can't be "
              "undone.");
    EXPECT_EQ(texts::couldNotDelete({"/p/1.jpg", "/p/2.jpg"}), "Couldn't delete:\n1.jpg\n2.jpg");
}

TEST(LibraryTextsTest, WhatWasNotReadOrSaved) {
    EXPECT_EQ(texts::readFailures({texts::cannotReadEdits("/x/Rome")}),
              "Couldn't read edits in Rome");
    EXPECT_EQ(texts::readFailures(
                  {texts::cannotReadEdits("/x/Rome"), texts::cannotReadFavorites("/x/Oslo")}),
              "Couldn't read some edits:\nCouldn't read edits in Rome\nCouldn't read favorites in "
              "Oslo");
    const std::string end = "\n\nKeep Kelvaro open to reconnect the drive or fix access, then try "
                            "quitting again.";
    EXPECT_EQ(texts::unsavedQuestion({"/x/Rome", "/x/Oslo"}, {"/x/Bonn"}).text,
              "Edits haven't been saved:\nRome\nOslo\n\nFavorites haven't been saved:\nBonn" + end);
    EXPECT_EQ(texts::unsavedQuestion({}, {"/x/Bonn"}).text,
              "Favorites haven't been saved:\nBonn" + end);
}

TEST(LibraryTextsTest, NamesThatAreNotUtf8AreShownAndKept) {
    EXPECT_EQ(texts::displayName("/p/a\xFF.jpg"), "a\uFFFD.jpg");
    for (const std::string name : {"plain.jpg", "Müller.jpg", "a\xFF\x80z\xC3.jpg", "\xC0\xAF"}) {
        const std::string text = textFromBytes(name);
        EXPECT_EQ(bytesFromText(text), name);
        EXPECT_EQ(texts::displayName(text), text) << "must be UTF-8 itself";
    }
}

} // namespace
} // namespace kelvaro
