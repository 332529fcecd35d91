// A status item without a panel: it records the calls.
#pragma once

#include "platform/ports/StatusItem.h"

#include <vector>

namespace tarnwick::simulation {

/// Every character of a text is ten points wide.
class RecordingStatusItem final : public StatusItem {
public:
    void setFace(const StatusFace& face) override { faces.push_back(face); }

    void setToolTip(const std::string& text) override { toolTips.push_back(text); }

    void setAccessibilityValue(const std::string& text) override { accessibilityValues.push_back(text); }

    void setForm(Form form) override { forms.push_back(form); }

    /// Measures titles as the item would draw them.
    [[nodiscard]] double textWidth(const std::string& text) {
        ++measured;
        const auto startsCharacter = [](char byte) {
            return (static_cast<unsigned char>(byte) & 0xC0) != 0x80;
        };
        double width = 0;
        for (const char byte : text) {
            width += startsCharacter(byte) ? 10 : 0;
        }
        return width;
    }

    /// The number of calls.
    [[nodiscard]] std::size_t touches() const {
        return faces.size() + toolTips.size() + accessibilityValues.size() + forms.size();
    }

    std::vector<StatusFace> faces;
    std::vector<std::string> toolTips;
    std::vector<std::string> accessibilityValues;
    std::vector<Form> forms;
    int measured = 0;
};

} // namespace tarnwick::simulation
