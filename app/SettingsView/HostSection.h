// The settings form's section about the host.
#pragma once

#include "app/SettingsView/Draft.h"
#include "app/SettingsView/FormSection.h"
#include "app/SettingsView/Model/SettingsModel.h"

#include <string>

class QLineEdit;

namespace tarnwick {

class CopyableText;

/// The host is a draft until it is committed. Below it stands its address, or why the draft can be no host.
class HostSection final : public FormSection {
public:
    /// `model` outlives the section.
    HostSection(SettingsModel& model, QWidget* parent);

    /// Shows the present values; a draft stays.
    void render();
    /// Commits a draft, and shows the host that is set.
    void finish();
    /// Shows the host that is set in place of a draft.
    void dropDraft();

    void setStyle(const ViewStyle& style) override;

private:
    void showHost(const std::string& host);
    void showAddress();
    void commit();
    /// As if it had been typed and Enter pressed.
    void choose(const QString& address);

    SettingsModel& model_;

    // Children.
    QLineEdit* host_;
    Draft draft_;
    CopyableText* address_;
    QString footer_; ///< what assistive technology says of the field while its text can be a host
};

} // namespace tarnwick
