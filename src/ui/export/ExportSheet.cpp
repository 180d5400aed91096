#include "ui/export/ExportSheet.h"

#include "export/ExportTexts.h"
#include "export/SizeNotes.h"
#include "ui/Texts.h"
#include "ui/controls/Labels.h"
#include "ui/controls/Naming.h"
#include "ui/controls/PathEdit.h"

#include <QHBoxLayout>
#include <QVBoxLayout>

#include <cmath>

namespace kelvaro {
namespace {

constexpr int fieldPx = 300;

QHBoxLayout* rowIn(QWidget* holder) {
    auto* row = new QHBoxLayout(holder);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(measure::unit);
    return row;
}

} // namespace

ExportSheet::ExportSheet(const Appearance& appearance, Prompts& prompts, QWidget* window)
    : Overlay(appearance, Kind::sheet, window) {
    setObjectName("exportSheet");
    preview_ = new ExportPreview(appearance, panel());
    count_ = label({}, "heading");
    form_ = new QFormLayout;
    form_->setHorizontalSpacing(measure::margin);
    form_->setVerticalSpacing(measure::unit);
    form_->setLabelAlignment(Qt::AlignRight | Qt::AlignTop);
    makeForm(appearance);
    addRow(words("Save in"), makeDestination(prompts));

    auto* cancel = named(new QPushButton(words("Cancel")), "cancelExport", words("Cancel"),
                         words("Close without exporting (Esc)"));
    export_ = named(new QPushButton, "startExport", words("Export"), words("Export the photos"));
    export_->setProperty("kind", "primary");
    QObject::connect(cancel, &QPushButton::clicked, this, [this] { dismiss(); });
    QObject::connect(export_, &QPushButton::clicked, this, [this] {
        const ExportSettings chosen = settings_;
        dismiss();
        onExport(chosen);
    });
    auto* buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(cancel);
    buttons->addWidget(export_);

    auto* right = new QVBoxLayout;
    right->setSpacing(measure::margin);
    right->addWidget(count_);
    right->addLayout(form_);
    right->addStretch(1);
    right->addLayout(buttons);
    auto* row = new QHBoxLayout(panel());
    row->setContentsMargins(24, 24, 24, 20);
    row->setSpacing(24);
    row->addWidget(preview_, 1);
    row->addLayout(right);
    setFirstFocus(export_);
}

void ExportSheet::addRow(const QString& title, QWidget* control, const QString& help) {
    auto* name = label(title, "secondary");
    if (!help.isEmpty()) name->setToolTip(help);
    name->setFixedHeight(measure::controlHeight);
    name->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    control->setMinimumHeight(measure::controlHeight);
    form_->addRow(name, control);
}

void ExportSheet::makeForm(const Appearance& appearance) {
    addRow(words("Format"), makeFormat(appearance));
    addRow(words("Quality"), makeQuality());
    addRow(words("Resize"), makeResize(appearance));
    addRow(words("Border"), makeBorder(appearance), words(exportText::borderHelp));

    stamp_ = named(new Choice(appearance), "dateStamp", words("Date imprint"),
                   words(exportText::dateStampHelp));
    stamp_->addItems({words("None"), words("Day, month, year"), words("Month, day, year")});
    addRow(words("Date imprint"), stamp_, words(exportText::dateStampHelp));
    space_ = named(new Choice(appearance), "colourSpace", words("Colours"),
                   words(exportText::colourSpaceHelp));
    space_->addItems({"sRGB", "Display P3"});
    addRow(words("Colours"), space_, words(exportText::colourSpaceHelp));
    metadata_ = named(new Switch(appearance), "includeMetadata", words(exportText::metadataLabel),
                      words(exportText::metadataLabel));
    auto* holder = new QWidget;
    auto* row = rowIn(holder);
    row->addWidget(metadata_);
    row->addWidget(label(words(exportText::metadataLabel)), 1);
    addRow(words("Metadata"), holder);
    collision_ = named(new Choice(appearance), "collision", words("Same name"),
                       words(exportText::replaceHelp));
    collision_->addItems({words("Keep both"), words("Replace the file")});
    addRow(words("Same name"), collision_, words(exportText::replaceHelp));
    for (Choice* choice : {stamp_, space_, collision_})
        QObject::connect(choice, &QComboBox::currentIndexChanged, this, [this] { change(); });
    QObject::connect(metadata_, &Switch::toggled, this, [this] { change(); });
}

QWidget* ExportSheet::makeFormat(const Appearance& appearance) {
    auto* holder = new QWidget;
    auto* column = new QVBoxLayout(holder);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(2);
    format_ = named(new Choice(appearance), "format", words("Format"),
                    words("The kind of file to write"));
    format_->addItems({"JPEG", "HEIC", "TIFF", "PNG"});
    format_->setFixedWidth(fieldPx);
    note_ = label({}, "caption");
    note_->setObjectName("sizeNote");
    column->addWidget(format_);
    column->addWidget(note_);
    QObject::connect(format_, &QComboBox::currentIndexChanged, this, [this] { change(); });
    return holder;
}

QWidget* ExportSheet::makeQuality() {
    auto* holder = new QWidget;
    auto* row = rowIn(holder);
    quality_ = named(new QSlider(Qt::Horizontal), "quality", words("Quality"),
                     words("For JPEG and HEIC: higher looks better and takes more room"));
    quality_->setRange(10, 100);
    quality_->setPageStep(5);
    qualityValue_ = label({});
    qualityValue_->setFixedWidth(28);
    qualityValue_->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    row->addWidget(quality_, 1);
    row->addWidget(qualityValue_);
    QObject::connect(quality_, &QSlider::valueChanged, this, [this] { change(); });
    return holder;
}

QWidget* ExportSheet::makeResize(const Appearance& appearance) {
    auto* holder = new QWidget;
    auto* row = rowIn(holder);
    resize_ = named(new Switch(appearance), "resize", words("Resize"),
                    words("Make larger photos smaller; none is enlarged"));
    longEdge_ = named(new QSpinBox, "longEdge", words("Long edge in pixels"),
                      words("The longer side, the border included, in pixels"));
    longEdge_->setRange(256, 20000);
    longEdge_->setSingleStep(100);
    longEdge_->setFixedWidth(72);
    row->addWidget(resize_);
    row->addWidget(longEdge_);
    row->addWidget(label(words("Pixels on the long edge"), "secondary"), 1);
    QObject::connect(resize_, &Switch::toggled, this, [this] { change(); });
    QObject::connect(longEdge_, &QSpinBox::valueChanged, this, [this] { change(); });
    return holder;
}

QWidget* ExportSheet::makeBorder(const Appearance& appearance) {
    auto* holder = new QWidget;
    auto* row = rowIn(holder);
    border_ =
        named(new Switch(appearance), "border", words("Border"), words(exportText::borderHelp));
    borderPercent_ = named(new QDoubleSpinBox, "borderPercent", words("Border in percent"),
                           words(exportText::borderUnit));
    borderPercent_->setRange(1, 20);
    borderPercent_->setDecimals(1);
    borderPercent_->setSingleStep(0.5);
    borderPercent_->setSuffix(" %");
    borderPercent_->setFixedWidth(72);
    row->addWidget(border_);
    row->addWidget(borderPercent_);
    row->addWidget(label(words(exportText::borderUnit), "secondary"), 1);
    QObject::connect(border_, &Switch::toggled, this, [this] { change(); });
    QObject::connect(borderPercent_, &QDoubleSpinBox::valueChanged, this, [this] { change(); });
    return holder;
}

QWidget* ExportSheet::makeDestination(Prompts& prompts) {
    auto* holder = new QWidget;
    auto* row = rowIn(holder);
    destination_ = named(new PathEdit, "destination", words("Save in"),
                         words("The folder for the exported files; it is made when it is missing"));
    auto* choose = named(new QPushButton(words("Choose…")), "chooseDestination", words("Choose…"),
                         words("Choose the folder for the exported files"));
    row->addWidget(destination_, 1);
    row->addWidget(choose);
    QObject::connect(destination_, &QLineEdit::editingFinished, this, [this] { change(); });
    QObject::connect(choose, &QPushButton::clicked, this, [this, &prompts] {
        prompts.chooseFolder("Choose a folder for the exported photos.", settings_.destination,
                             [this](std::optional<std::filesystem::path> folder) {
                                 if (!folder) return;
                                 destination_->setText(QString::fromStdString(folder->string()));
                                 change();
                             });
    });
    return holder;
}

void ExportSheet::begin(const ExportSettings& settings, int photoCount, double megapixels) {
    settings_ = settings;
    megapixels_ = megapixels;
    const QString title = counted(photoCount, "Export 1 photo", "Export %1 photos");
    count_->setText(title);
    export_->setText(words("Export"));
    export_->setAccessibleName(title);
    showSettings();
    open();
}

void ExportSheet::change() {
    if (showing_) return;
    settings_.format = kExportFormats[static_cast<size_t>(format_->currentIndex())];
    settings_.quality = quality_->value();
    settings_.resize = resize_->isChecked();
    settings_.longEdge = longEdge_->value();
    settings_.border = border_->isChecked();
    settings_.borderPercent = borderPercent_->value();
    settings_.dateStamp = DateStamp::styles[static_cast<size_t>(stamp_->currentIndex())];
    settings_.colorSpace = space_->currentIndex() == 1 ? Pipeline::OutputSpace::displayP3
                                                       : Pipeline::OutputSpace::sRGB;
    settings_.includeMetadata = metadata_->isChecked();
    settings_.replaceExisting = collision_->currentIndex() == 1;
    if (!destination_->text().trimmed().isEmpty())
        settings_.destination = destination_->text().toStdString();
    showSettings();
    if (onChanged) onChanged(settings_);
}

void ExportSheet::showSettings() {
    showing_ = true;
    const auto at = [](const auto& list, auto value) {
        return static_cast<int>(std::ranges::find(list, value) - list.begin());
    };
    format_->setCurrentIndex(at(kExportFormats, settings_.format));
    note_->setText(words(formatNote(settings_, megapixels_)));
    quality_->setValue(static_cast<int>(std::lround(settings_.quality)));
    quality_->setEnabled(isLossy(settings_.format));
    qualityValue_->setText(isLossy(settings_.format) ? number(quality_->value()) : QString("–"));
    resize_->setChecked(settings_.resize);
    longEdge_->setValue(settings_.clampedLongEdge());
    longEdge_->setEnabled(settings_.resize);
    border_->setChecked(settings_.border);
    borderPercent_->setValue(settings_.borderPercent);
    borderPercent_->setEnabled(settings_.border);
    stamp_->setCurrentIndex(at(DateStamp::styles, settings_.dateStamp));
    space_->setCurrentIndex(settings_.colorSpace == Pipeline::OutputSpace::displayP3 ? 1 : 0);
    metadata_->setChecked(settings_.includeMetadata);
    collision_->setCurrentIndex(settings_.replaceExisting ? 1 : 0);
    if (!destination_->hasFocus())
        destination_->setText(QString::fromStdString(settings_.destination));
    preview_->show(settings_);
    showing_ = false;
}

} // namespace kelvaro
