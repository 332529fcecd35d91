// The program's place in the panel, as its controller sees it.
#pragma once

#include <functional>
#include <optional>
#include <string>

namespace tarnwick {

/// What the status item shows. How a certain panel can show it is for the adapter to decide.
struct StatusFace {
    enum class Icon { none, bars, failed };

    bool isDown = false; ///< the connection; then an icon is `failed`
    Icon icon = Icon::bars;
    int activeBars = 0; ///< of five; 0 unless the icon is the bars
    /// The text beside the icon. Absent: the icon alone.
    std::optional<std::string> title = std::nullopt;
    /// The latency alone ("42", "1.2s", "…"), for places too narrow for the title. Empty without a title, and
    /// while the connection is down.
    std::string figure{};
    /// The widest title to be expected at present, and its width: room for it keeps the neighbors in place.
    std::string widestTitle{};
    double textSlot = 0; ///< points; not less than the title's own width

    friend bool operator==(const StatusFace&, const StatusFace&) = default;
};

/// In pixels of the whole desktop, from its top left.
struct ScreenPoint {
    int x = 0;
    int y = 0;

    friend bool operator==(const ScreenPoint&, const ScreenPoint&) = default;
};

struct ItemState;

/// Shown from its creation to its destruction, as soon as there is a panel. Main thread.
class StatusItem {
public:
    /// In which form a panel is given the face.
    enum class Form {
        automatic, ///< as the panel at hand needs it
        label,     ///< the icon as image, the title as the panel's own label beside it
        wide,      ///< icon and title in one image
        square,    ///< an image no wider than high
    };

    /// The color of the image, as the user wants it.
    enum class InkChoice {
        automatic, ///< that stands out from the panel, as far as that is known
        light,
        dark,
    };

    StatusItem() = default;
    StatusItem(const StatusItem&) = delete;
    StatusItem& operator=(const StatusItem&) = delete;
    virtual ~StatusItem() = default;

    virtual void show(const ItemState& state) = 0;

    /// Called at a click, with its place if the panel tells it.
    std::function<void(std::optional<ScreenPoint>)> onActivate;
};

/// All that the item shows.
struct ItemState {
    StatusFace face{};
    StatusItem::Form form = StatusItem::Form::automatic;
    StatusItem::InkChoice ink = StatusItem::InkChoice::automatic;
    std::string toolTip{};            ///< may have several lines
    std::string accessibilityValue{}; ///< what assistive technology says of the item, after its name

    friend bool operator==(const ItemState&, const ItemState&) = default;
};

} // namespace tarnwick
