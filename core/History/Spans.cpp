#include "core/History/Spans.h"

namespace tarnwick {

std::vector<Span> united(std::vector<Span> spans) {
    std::erase_if(spans, [](const Span& span) { return span.isEmpty(); });
    std::ranges::sort(spans, {}, &Span::from);
    std::vector<Span> merged;
    for (const Span& span : spans) {
        if (!merged.empty() && span.from <= merged.back().to) {
            merged.back().to = std::max(merged.back().to, span.to);
        } else {
            merged.push_back(span);
        }
    }
    return merged;
}

std::vector<Span> without(std::vector<Span> spans, std::vector<Span> others) {
    const std::vector<Span> holes = united(std::move(others));
    std::vector<Span> left;
    auto first = holes.begin(); // that may reach into the span
    for (Span span : united(std::move(spans))) {
        first = std::ranges::upper_bound(first, holes.end(), span.from, {}, &Span::to);
        for (auto hole = first; hole != holes.end() && hole->from < span.to; ++hole) {
            if (span.from < hole->from) {
                left.push_back({.from = span.from, .to = hole->from});
            }
            span.from = hole->to;
        }
        if (!span.isEmpty()) {
            left.push_back(span);
        }
    }
    return left;
}

std::vector<Span> within(const std::vector<Span>& spans, const Span& limits) {
    std::vector<Span> inside;
    for (const Span& span : spans) {
        if (span.overlaps(limits)) {
            inside.push_back(common(span, limits));
        }
    }
    return inside;
}

std::chrono::seconds lengthOf(const std::vector<Span>& spans) {
    std::chrono::seconds sum{};
    for (const Span& span : spans) {
        sum += span.length();
    }
    return sum;
}

} // namespace tarnwick
