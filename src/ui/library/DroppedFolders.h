// The folders among what is dragged over a widget.
#pragma once

#include <QFileInfo>
#include <QMimeData>
#include <QUrl>

#include <filesystem>
#include <vector>

namespace kelvaro {

inline std::vector<std::filesystem::path> droppedFolders(const QMimeData* data) {
    std::vector<std::filesystem::path> folders;
    for (const QUrl& url : data->urls()) {
        if (url.isLocalFile() && QFileInfo(url.toLocalFile()).isDir())
            folders.emplace_back(QFile::encodeName(url.toLocalFile()).toStdString());
    }
    return folders;
}

} // namespace kelvaro
