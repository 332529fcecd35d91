// The settings form's section for settings that few people need.
#pragma once

#include "app/SettingsView/Draft.h"
#include "app/SettingsView/FormSection.h"
#include "app/SettingsView/Model/SettingsModel.h"

#include <QString>

#include <optional>

class QCheckBox;
class QComboBox;
class QLineEdit;
class QPushButton;

namespace tarnwick {

class DisclosureButton;

/// Closed at first. The time-out is a draft until it is committed; one that can't be meant is refused with
/// the reason.
class AdvancedSection final : public FormSection {
public:
    /// `model` outlives the section.
    AdvancedSection(SettingsModel& model, QWidget* parent);

    /// Shows the present values; a draft stays.
    void render();
    /// Commits a draft, and shows the time-out that is set.
    void finish();
    /// Shows the time-out that is set in place of a draft.
    void dropDraft();

    void setStyle(const ViewStyle& style) override;
    void setShowsMnemonics(bool shows) override;

private:
    void makeRows();
    void makeHistoryRow();
    void open(bool isOpen);
    /// While it is open.
    void scrollIntoView();
    /// Nothing for a text that is no number.
    [[nodiscard]] std::optional<double> typedTimeout() const;
    void showTimeout(double seconds);
    void showMistake();
    void commit();
    void showHistory();
    void showApplications();
    void changeApplications();

    SettingsModel& model_;

    // Children.
    DisclosureButton* heading_;
    QLineEdit* timeout_;
    Draft draft_;
    QComboBox* form_;
    QComboBox* ink_;
    QCheckBox* history_;
    QPushButton* clearHistory_;
    QPushButton* applications_;
    FormRow* timeoutRow_ = nullptr;
    FormRow* historyRow_ = nullptr;
    FormRow* applicationsRow_ = nullptr;
};

} // namespace tarnwick
