#include "app/SettingsView/UpdateSection.h"

#include "app/SettingsView/DateText.h"
#include "app/ViewStyle/ControlLooks.h"
#include "app/ViewStyle/LabelLooks.h"

#include <QCheckBox>
#include <QEvent>
#include <QPushButton>

#include <initializer_list>

namespace tarnwick {

// NOLINTBEGIN(cppcoreguidelines-owning-memory): the children are owned by this widget
UpdateSection::UpdateSection(UpdateSettings& updates, QWidget* parent)
    : FormSection(parent),
      updates_(updates),
      checkAutomatically_(new QCheckBox(this)),
      installAutomatically_(new QCheckBox(this)),
      lastChecked_(new QLabel(this)),
      checkNow_(new QPushButton(QStringLiteral("Check Now"), this)) {
    addRow(QStringLiteral("Check for Updates Automatically"), {checkAutomatically_});
    addRow(QStringLiteral("Install Updates Automatically"), {installAutomatically_});
    addRow(QStringLiteral("Last Checked"), {lastChecked_, checkNow_});
    checkNow_->setAutoDefault(false);
    connect(checkAutomatically_, &QCheckBox::toggled, this, [this](bool on) {
        updates_.setChecksAutomatically(on);
    });
    connect(installAutomatically_, &QCheckBox::toggled, this, [this](bool on) {
        updates_.setInstallsAutomatically(on);
    });
    connect(checkNow_, &QPushButton::clicked, this, [this] { updates_.checkNow(); });
    if (const std::string text = updates_.explanation(); text != footer_) {
        footer_ = text;
        setFooter(QString::fromStdString(text));
    }
}

// NOLINTEND(cppcoreguidelines-owning-memory)

void UpdateSection::render() {
    showOn(*checkAutomatically_, updates_.checksAutomatically());
    showOn(*installAutomatically_, updates_.installsAutomatically());
    const auto last = updates_.lastChecked();
    lastChecked_->setText(last ? dateText(*last, locale()) : QStringLiteral("Never"));
    checkNow_->setEnabled(updates_.canCheck());
    if (const std::string text = updates_.explanation(); text != footer_) {
        footer_ = text;
        setFooter(QString::fromStdString(text));
    }
}

void UpdateSection::setStyle(const ViewStyle& style) {
    FormSection::setStyle(style);
    setTextColor(*lastChecked_, style.colors().secondary());
    alignText(*lastChecked_, Qt::AlignTrailing);
    for (QWidget* control :
         std::initializer_list<QWidget*>{checkAutomatically_, installAutomatically_, checkNow_}) {
        ControlLooks::setHeight(*control, style);
    }
    ControlLooks::setWidth(*checkNow_, style);
}

void UpdateSection::changeEvent(QEvent* event) {
    FormSection::changeEvent(event);
    if (event->type() == QEvent::LocaleChange) {
        render();
    }
}

} // namespace tarnwick
