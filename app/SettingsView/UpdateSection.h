// The settings form's section about updates.
#pragma once

#include "app/SettingsView/FormSection.h"
#include "app/SettingsView/Model/UpdateSettings.h"

#include <string>

class QCheckBox;
class QPushButton;

namespace tarnwick {

class UpdateSection final : public FormSection {
public:
    /// `updates` outlives the section.
    UpdateSection(UpdateSettings& updates, QWidget* parent);

    /// Shows the present values.
    void render();
    void setStyle(const ViewStyle& style) override;

protected:
    void changeEvent(QEvent* event) override;

private:
    UpdateSettings& updates_;
    std::string footer_; ///< as it is shown

    // Children.
    QCheckBox* checkAutomatically_;
    QCheckBox* installAutomatically_;
    QLabel* lastChecked_;
    QPushButton* checkNow_;
};

} // namespace tarnwick
