// What is known of one photo, in rows, at the window's right edge. Follows the store's information
// request; closing it ends the request.
#pragma once

#include "library/LibraryStore.h"
#include "ui/theme/Appearance.h"

#include <QLabel>
#include <QTextEdit>
#include <QVBoxLayout>

#include <functional>

namespace kelvaro {

class InfoPanel final : public QWidget {
public:
    using Rows = std::function<std::vector<InfoRow>(const PhotoInfo&)>;

    InfoPanel(const Appearance& appearance, LibraryStore& lib, Rows rows,
              QWidget* parent = nullptr);

protected:
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    void refresh();
    void showRows(const std::vector<InfoRow>& rows);

    const Appearance& appearance_;
    LibraryStore& lib_;
    Rows rows_;
    QLabel *name_, *state_;
    QTextEdit* text_ = nullptr;
    std::vector<Subscription> subscriptions_;
};

} // namespace kelvaro
