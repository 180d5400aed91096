// The options of an export: format, size, border, imprint, folder. Every change is kept at once.
// Shows how large the files will be and what the first one will look like.
#pragma once

#include "export/ExportSettings.h"
#include "ui/controls/Choice.h"
#include "ui/controls/Overlay.h"
#include "ui/controls/Switch.h"
#include "ui/export/ExportPreview.h"
#include "ui/shell/Prompts.h"

#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSlider>
#include <QSpinBox>

#include <functional>

namespace kelvaro {

class ExportSheet final : public Overlay {
public:
    ExportSheet(const Appearance& appearance, Prompts& prompts, QWidget* window);

    // `megapixels` of the photo that the size note speaks about; the largest of those exported.
    void begin(const ExportSettings& settings, int photoCount, double megapixels);
    ExportPreview& preview() const { return *preview_; }
    const ExportSettings& settings() const { return settings_; }

    std::function<void(const ExportSettings&)> onChanged;
    std::function<void(const ExportSettings&)> onExport;

private:
    void makeForm(const Appearance& appearance);
    QWidget* makeFormat(const Appearance& appearance);
    QWidget* makeQuality();
    QWidget* makeResize(const Appearance& appearance);
    QWidget* makeBorder(const Appearance& appearance);
    QWidget* makeDestination(Prompts& prompts);
    void addRow(const QString& title, QWidget* control, const QString& help = {});
    void change();       // a control has been changed
    void showSettings(); // in all controls

    ExportSettings settings_;
    double megapixels_ = 24;
    bool showing_ = false;
    ExportPreview* preview_;
    QFormLayout* form_;
    Choice *format_, *stamp_, *space_, *collision_;
    QLabel *note_, *qualityValue_, *count_;
    QSlider* quality_;
    Switch *resize_, *border_, *metadata_;
    QSpinBox* longEdge_;
    QDoubleSpinBox* borderPercent_;
    QLineEdit* destination_;
    QPushButton* export_;
};

} // namespace kelvaro
