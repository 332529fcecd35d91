// A status item without a panel: it records what it shows.
#pragma once

#include "platform/ports/StatusItem.h"

#include <vector>

namespace tarnwick::simulation {

/// Every character of a text is ten points wide.
class RecordingStatusItem final : public StatusItem {
public:
    void show(const ItemState& state) override {
        ++touches;
        add(faces, state.face);
        add(toolTips, state.toolTip);
        add(accessibilityValues, state.accessibilityValue);
        add(forms, state.form);
        add(inks, state.ink);
    }

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

    int touches = 0; ///< the number of calls
    // Each value that differs from the one before it.
    std::vector<StatusFace> faces;
    std::vector<std::string> toolTips;
    std::vector<std::string> accessibilityValues;
    std::vector<Form> forms;
    std::vector<InkChoice> inks;
    int measured = 0;

private:
    template<class T>
    static void add(std::vector<T>& values, const T& value) {
        if (values.empty() || values.back() != value) {
            values.push_back(value);
        }
    }
};

} // namespace tarnwick::simulation
