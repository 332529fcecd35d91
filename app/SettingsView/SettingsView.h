// The form in which the settings are changed.
#pragma once

#include "app/Observation/Observation.h"
#include "app/SettingsView/SettingsModel.h"

#include <QWidget>

#include <array>
#include <memory>

class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;

namespace tarnwick {

class FormRow;
class FormSection;
class IntervalBox;
class ThresholdSlider;

/// Host and interval are drafts until they are committed: with Enter, or when their field is left. All else
/// holds at once. While it is shown it follows the settings, whoever changes them.
class SettingsView final : public QWidget {
public:
    /// Model and loop outlive the view.
    SettingsView(SettingsModel& model, RunLoop& loop, QWidget* parent);
    ~SettingsView() override;

    /// Its height at its own width.
    [[nodiscard]] QSize sizeHint() const override;

protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void changeEvent(QEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void makeHostSection();
    void makeIntervalSection();
    void makeThresholdSection();
    void makeBehaviorSection();
    void applyStyle();

    /// Everything that may change while the form is shown.
    void render();
    void showHost();
    void showThreshold();
    void showLaunchAtLogin();
    void commitHost();
    void restoreDefaults();

    /// The wheel turns what has the keyboard, and scrolls past everything else.
    void keepFromWheel(QWidget* control);

    SettingsModel& model_;
    RunLoop& loop_;
    QString shownHost_; ///< other text in the field is a draft

    // Children.
    QLineEdit* host_;
    QLabel* address_;
    FormRow* addressRow_ = nullptr;
    IntervalBox* interval_;
    ThresholdSlider* threshold_;
    QLabel* thresholdText_;
    QComboBox* display_;
    QComboBox* lossText_;
    QCheckBox* alerts_;
    QCheckBox* launchAtLogin_;
    FormRow* launchRow_ = nullptr;
    QPushButton* restore_ = nullptr;
    std::array<FormSection*, 4> sections_{};

    std::unique_ptr<RenderLoop> rendering_; ///< only while it is shown
};

} // namespace tarnwick
