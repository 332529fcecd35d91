#include "app/SettingsView/HostSection.h"

#include "app/SettingsView/CopyableText.h"
#include "app/SettingsView/PresetButton.h"
#include "app/ViewStyle/ControlLooks.h"
#include "app/ViewStyle/FormStyle.h"
#include "app/ViewStyle/LabelLooks.h"
#include "core/HostText.h"

#include <QLineEdit>
#include <QSignalBlocker>

#include <optional>
#include <string_view>
#include <variant>

namespace tarnwick {

namespace {

constexpr double hostWidth = 232;

/// Nothing for a text that can be a host, and for an empty field: that one is about to be filled.
std::optional<QString> noHostText(const std::string& text) {
    const auto found = hostIn(text);
    const auto* const mistake = std::get_if<HostMistake>(&found);
    if (mistake == nullptr || *mistake == HostMistake::empty) {
        return std::nullopt;
    }
    const std::string_view why = reason(*mistake);
    QString sentence = QString::fromUtf8(why.data(), static_cast<qsizetype>(why.size()));
    sentence[0] = sentence[0].toUpper();
    return sentence;
}

} // namespace

// NOLINTBEGIN(cppcoreguidelines-owning-memory): the children are owned by this widget
HostSection::HostSection(SettingsModel& model, QWidget* parent)
    : FormSection(parent),
      model_(model),
      host_(new QLineEdit(this)),
      draft_(*host_, *host_, [this] { commit(); }),
      address_(new CopyableText(this)) {
    addRow(QStringLiteral("Host to Ping"), {host_}, 'H');
    FormStyle::dress(*new PresetButton(
        [this] { return model_.hostPresets(); }, [this](const QString& address) { choose(address); },
        *host_));
    address_->setWordWrap(true);
    address_->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    addRow(QStringLiteral("Address"), {address_});
    connect(host_, &QLineEdit::textChanged, this, [this] { showAddress(); });
    setFooter(
        QStringLiteral("Tarnwick constantly pings this host to measure the quality of your internet "
                       "connection. The bars show signal strength based on recent latency and packet loss."));
    footer_ = host_->accessibleDescription();
}

// NOLINTEND(cppcoreguidelines-owning-memory)

void HostSection::setStyle(const ViewStyle& style) {
    FormSection::setStyle(style);
    host_->setFixedWidth(style.length(hostWidth));
    ControlLooks::setHeight(*host_, style);
    setTextColor(*address_, style.colors().secondary());
    alignText(*address_, Qt::AlignTrailing);
}

void HostSection::render() {
    const std::string& host = model_.values().hostname(); // always read: a draft must not end the tracking
    if (!draft_.exists()) {
        showHost(host);
    }
    showAddress();
}

void HostSection::finish() {
    draft_.finish();
    dropDraft(); // a text that can be no host goes
}

void HostSection::dropDraft() {
    showHost(model_.values().hostname());
}

void HostSection::showHost(const std::string& host) {
    const QString text = QString::fromStdString(host);
    draft_.discard();
    if (host_->text() != text) { // an equal text keeps the cursor's place
        const QSignalBlocker quiet(host_);
        host_->setText(text);
    }
    showAddress();
}

void HostSection::showAddress() {
    const std::string& address = model_.addressLine(); // always read: a draft must not end the tracking
    const auto mistake = draft_.exists() ? noHostText(host_->text().toStdString()) : std::nullopt;
    const ViewStyle style(*this);
    address_->setText(mistake.value_or(QString::fromStdString(address)));
    setTextColor(*address_, mistake ? style.colors().bad() : style.colors().secondary());
    host_->setAccessibleDescription(mistake.value_or(footer_));
}

void HostSection::commit() {
    const std::string text = host_->text().toStdString();
    if (host_->hasFocus() && noHostText(text)) {
        draft_.resume(); // Enter leaves it in the field for mending
        return;
    }
    model_.commitHost(text);
    dropDraft();
}

void HostSection::choose(const QString& address) {
    host_->setText(address);
    draft_.finish();
}

} // namespace tarnwick
