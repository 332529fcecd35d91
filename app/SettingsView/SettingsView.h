// The settings window's form.
#pragma once

#include "app/Observation/Observation.h"
#include "app/SettingsView/IntervalBox.h"
#include "app/SettingsView/Model/SettingsModel.h"

#include <QWidget>

#include <memory>
#include <vector>

class QCheckBox;
class QComboBox;
class QLabel;
class QPushButton;

namespace tarnwick {

class AdvancedSection;
class FormRow;
class FormSection;
class HostSection;
class NoticesView;
class ThresholdSlider;
class UpdateSection;

/// Host and interval are drafts until they are committed: by Enter, when another control gets the focus, or
/// when the form is hidden. All other controls set their value at once. While visible, the form shows every
/// change of the settings.
class SettingsView final : public QWidget {
public:
    /// Model and loop outlive the view.
    SettingsView(SettingsModel& model, RunLoop& loop, QWidget* parent);
    ~SettingsView() override;

    /// What is typed and not committed gives way to the settings.
    void dropDrafts();

    /// Its height at its own width.
    [[nodiscard]] QSize sizeHint() const override;

protected:
    bool event(QEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void changeEvent(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    FormSection& addSection();
    void makeIntervalSection();
    void makeThresholdSection();
    void makeBehaviorSection();
    void makeRestoreButtons();
    [[nodiscard]] IntervalBox::Setting intervalSetting();
    void applyStyle();
    /// Underlines the letters that choose a row together with Alt.
    void showMnemonics(bool shows);

    /// Shows the present values.
    void render();
    void showThreshold();
    void showLaunchAtLogin();
    void showAlerts();
    void showDisplay();
    void showNotices(const Notices& notices);
    /// Drops drafts.
    void showAllAgain();

    /// The wheel turns the control only while it has the focus; else it scrolls.
    void keepFromWheel(QWidget* control);

    SettingsModel& model_;
    RunLoop& loop_;

    // Children.
    HostSection* host_;
    IntervalBox* interval_;
    ThresholdSlider* threshold_;
    QLabel* thresholdText_;
    QComboBox* display_;
    QComboBox* lossText_;
    QCheckBox* alerts_;
    QPushButton* testAlert_;
    FormRow* displayRow_ = nullptr;
    FormRow* lossTextRow_ = nullptr;
    FormRow* alertsRow_ = nullptr;
    QCheckBox* launchAtLogin_;
    FormRow* launchRow_ = nullptr;
    UpdateSection* updates_ = nullptr; ///< null without an update framework
    AdvancedSection* advanced_ = nullptr;
    QPushButton* restore_ = nullptr;
    QPushButton* undo_ = nullptr;    ///< hidden unless defaults have just been restored
    NoticesView* notices_ = nullptr; ///< while there are notices
    Notices shownNotices_;
    std::vector<FormSection*> sections_; ///< from top to bottom

    std::unique_ptr<RenderLoop> rendering_; ///< only while it is shown
};

} // namespace tarnwick
