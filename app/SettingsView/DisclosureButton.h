// The heading of a section that can be closed.
#pragma once

#include "app/SettingsView/OpeningButton.h"

namespace tarnwick {

/// An arrow and a title. Each click opens or closes the section; it begins closed.
class DisclosureButton final : public OpeningButton {
public:
    /// `&` stands before the title's letter that clicks it together with Alt.
    DisclosureButton(const QString& title, QWidget* parent);

    using OpeningButton::setOpen;

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
};

} // namespace tarnwick
