#include "ui/shell/SheetPrompts.h"

#include "ui/Texts.h"
#include "ui/controls/Labels.h"
#include "ui/controls/Naming.h"
#include "ui/controls/Overlay.h"

#include <QFileDialog>
#include <QHBoxLayout>
#include <QPushButton>
#include <QVBoxLayout>

namespace kelvaro {

void SheetPrompts::ask(const Question& question, Chosen chosen) {
    auto* sheet = new Overlay(appearance_, Overlay::Kind::sheet, window_);
    sheet->setObjectName(QString::fromStdString(question.name + "Question"));
    sheet->setDeletesItself(true);
    sheet->setClosesOnClickOutside(false);
    auto* column = new QVBoxLayout(sheet->panel());
    column->setContentsMargins(24, 24, 24, 20);
    column->setSpacing(measure::unit);
    // A message without a title has its first line as one.
    QString title = words(question.title), text = words(question.text);
    if (title.isEmpty()) {
        title = text.section('\n', 0, 0);
        text = text.section('\n', 1);
    }
    sheet->setAccessibleName(title);
    column->addWidget(wrappedLabel(title, "heading", 372));
    if (!text.isEmpty()) column->addWidget(wrappedLabel(text, "secondary", 372));
    column->addSpacing(measure::unit);
    auto* row = new QHBoxLayout;
    row->addStretch(1);
    column->addLayout(row);
    // The harmless button answers Esc; it is what happens unless another one is pressed.
    auto answer = std::make_shared<std::size_t>(question.buttons.size() - 1);
    std::vector<QPushButton*> buttons;
    for (std::size_t at = 0; at < question.buttons.size(); ++at) {
        const QString verb = words(question.buttons[at]);
        auto* button =
            named(new QPushButton(verb), qPrintable(QString("answer%1").arg(at)), verb, verb);
        button->setAutoDefault(true);
        const bool harmless = at + 1 == question.buttons.size();
        button->setProperty("kind", harmless ? "primary" : "");
        QObject::connect(button, &QPushButton::clicked, sheet, [sheet, answer, at] {
            *answer = at;
            sheet->dismiss();
        });
        buttons.push_back(button);
    }
    for (QPushButton* button : buttons)
        row->addWidget(button);
    sheet->setFirstFocus(buttons.back());
    sheet->onClosed = [chosen = std::move(chosen), answer] { chosen(*answer); };
    sheet->open();
}

void SheetPrompts::chooseFolder(const std::string& message, const std::filesystem::path& start,
                                Folder chosen) {
    auto* dialog = new QFileDialog(window_, words(message), QString::fromStdString(start.string()));
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setFileMode(QFileDialog::Directory);
    dialog->setOption(QFileDialog::ShowDirsOnly);
    QObject::connect(dialog, &QFileDialog::finished, dialog, [dialog, chosen](int result) {
        const QStringList files = dialog->selectedFiles();
        if (result != QDialog::Accepted || files.isEmpty()) return chosen(std::nullopt);
        chosen(std::filesystem::path(QFile::encodeName(files.front()).toStdString()));
    });
    dialog->open();
}

} // namespace kelvaro
