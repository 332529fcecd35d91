// The colors that tell good latencies from bad ones, on light ground and on dark.
#pragma once

#include "app/Reading/Reading.h"

#include <QColor>

class QPalette;

namespace tarnwick {

class LatencyPalette {
public:
    /// For views with these colors.
    explicit LatencyPalette(const QPalette& palette);

    [[nodiscard]] static bool isDark(const QPalette& palette);

    [[nodiscard]] QColor good() const;
    [[nodiscard]] QColor warn() const;
    [[nodiscard]] QColor bad() const;

    /// For small text in the color of `warn`.
    [[nodiscard]] QColor warnText() const;

    /// Ordinary text; quieter text; the quietest lines.
    [[nodiscard]] QColor primary() const { return text_; }

    [[nodiscard]] QColor secondary() const;
    [[nodiscard]] QColor tertiary() const;

    [[nodiscard]] QColor of(QualityTone tone) const;
    /// Transparent for a slot without a bar.
    [[nodiscard]] QColor of(LatencyChart::BarTone tone) const;

private:
    QColor text_;
    bool isDark_;
    bool wantsContrast_; ///< the colors are black and white
};

} // namespace tarnwick
