#include "ui/profile/ProfilePicture.h"

#include <QSaveFile>

namespace kelvaro {

Result<std::filesystem::path> saveProfilePicture(const QImage& picture,
                                                 const std::filesystem::path& folder,
                                                 const std::string& day) {
    std::filesystem::path path;
    std::error_code error;
    int number = 1;
    do {
        std::string name = "Profile " + day;
        if (number > 1) name += ' ' + std::to_string(number);
        path = folder / (name + ".png");
        ++number;
    } while (std::filesystem::exists(path, error) && number < 10'000);
    QSaveFile file(QString::fromStdString(path.string()));
    const bool isWritten =
        file.open(QIODevice::WriteOnly) && picture.save(&file, "PNG") && file.commit();
    if (!isWritten) return fail(FailureKind::unwritable, "The picture couldn't be written.");
    return path;
}

} // namespace kelvaro
