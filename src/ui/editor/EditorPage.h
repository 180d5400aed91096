// The editor: canvas, inspector, bar and photo row around the model of the open photo. Shows the
// photo that the library has open; turns what widgets report into changes of the model, and the
// model's changes into what they show. Main thread.
#pragma once

#include "app/EditingServices.h"
#include "editor/EditorModel.h"
#include "library/LibraryStore.h"
#include "platform/SettingsStore.h"
#include "render/ThumbnailLoader.h"
#include "ui/controls/DimLayer.h"
#include "ui/editor/CropCanvas.h"
#include "ui/editor/EditorBar.h"
#include "ui/editor/EditorCanvas.h"
#include "ui/editor/InspectorView.h"
#include "ui/editor/KelvinPopover.h"
#include "ui/editor/MaskCanvas.h"
#include "ui/editor/PhotoBar.h"
#include "ui/editor/PickCanvas.h"
#include "ui/editor/PresetPopover.h"

#include <QMenu>
#include <QWidget>

namespace kelvaro {

// What the editor works with; everything outlives it.
struct EditorParts {
    LibraryStore& library;
    RenderEngine& engine;
    PhotoSessionCache& sessions;
    ThumbnailLoader& thumbnails;
    EditingServices& editing;
    SettingsStore& settings;
    CommandActions& commands;
};

class EditorPage final : public QWidget {
public:
    using Mode = InspectorView::Mode;

    EditorPage(const Appearance& appearance, const EditorParts& parts, QWidget* parent);
    ~EditorPage() override;

    void setScreenProfile(const QColorSpace& profile);
    // Opens what the library has open; by itself when that changes.
    void showOpenPhoto();
    void setSidePanel(QWidget* panel) { middle_->addWidget(panel); }
    // Of `circumstance`: what the open photo adds to the window's.
    unsigned circumstances() const;
    EditorModel& model() { return model_; }
    EditorCanvas& canvas() const { return *canvas_; }
    InspectorView& inspector() const { return *inspector_; }
    PhotoBar& photoBar() const { return *photoBar_; }
    PresetPopover& presetPopover() const { return *presets_; }
    KelvinPopover& kelvinPopover() const { return *kelvin_; }
    MaskCanvas& maskCanvas() { return mask_; }
    CropCanvas* cropCanvas() const { return crop_.get(); }
    Mode mode() const { return inspector_->mode(); }
    bool isPicking() const { return picking_; }

    // --- What commands do while a photo is open ---
    void copy();
    void paste();
    void escape();
    void setMode(Mode mode);
    // The photo grows out of a cell of the grid.
    void growFrom(const QRect& global);
    // Calls back once everything is saved or can't be.
    void settle(std::function<void()> done);

    std::function<void()> onCircumstances;

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void keyReleaseEvent(QKeyEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    // --- EditorPage.cpp ---
    void makeLayout();
    void bindCommands();
    void bindCanvas();
    void refresh();
    void showEdit();
    void showBar();
    void showDisplay();
    void notice(std::string_view text) { parts_.library.showNotice(std::string(text)); }
    QMenu* makeMenu();

    // --- EditorPageOpening.cpp ---
    void observeStore();
    void learn(const Result<PhotoFacts>& facts);
    void checkSidecar(const PhotoUrl& photo);
    void storeChanged();
    void prepareNeighbours();
    template<class Job, class Then>
    void later(Job job, Then then);

    // --- EditorPageTools.cpp ---
    void bindInspector();
    void bindCrop();
    void bindMasks();
    void bindPresets();
    void openKelvin(SliderRow* row);
    void setPicking(bool picking);
    void pick(Point viewPoint);
    void picked(const Result<SampledArea>& area);
    void enterCrop();
    void leaveCrop(bool keeps);
    void showTools();
    void addMask(MaskComponent::Kind kind);
    void changeMask(const std::string& name,
                    const std::function<void(Adjustments&, const Uuid&)>& change);
    void setMaskValue(MaskControls::Slider slider, std::size_t control, double value);

    const Appearance& appearance_;
    EditorParts parts_;
    EditorModel model_;
    EditorBar* bar_;
    EditorCanvas* canvas_;
    InspectorView* inspector_;
    PhotoBar* photoBar_;
    QBoxLayout* middle_ = nullptr;
    KelvinPopover* kelvin_;
    PresetPopover* presets_;
    std::array<DimLayer*, 2> veils_; // over what surrounds the photo
    QMenu* menu_;
    PickCanvas pick_;
    MaskCanvas mask_;
    std::unique_ptr<CropCanvas> crop_; // while cropping
    Adjustments beforeCrop_, beforeCropDrag_;

    std::optional<Photo> opened_; // as it was when it was opened
    Adjustments storeKnows_;      // the library's recipe of it when last looked at
    bool isOpening_ = false, picking_ = false, clipping_ = false, assessment_ = false;
    SplitView split_;
    unsigned told_ = 0; // circumstances
    std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);
    std::vector<Subscription> subscriptions_;
};

// `job` runs behind the writes of the library; `then` gets its result on the main thread.
template<class Job, class Then>
void EditorPage::later(Job job, Then then) {
    parts_.library.afterWrites([&main = parts_.engine.mainThread(), alive = std::weak_ptr(alive_),
                                job = std::move(job), then = std::move(then)] {
        auto result = std::make_shared<decltype(job())>(job());
        main.post([alive, then, result] {
            if (!alive.expired()) then(*result);
        });
    });
}

} // namespace kelvaro
