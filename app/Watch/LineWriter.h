// Whole lines to a pipe or file, never waiting for a slow reader.
#pragma once

#include <string_view>

namespace tarnwick {

/// Main thread. The descriptor stays its owner's.
class LineWriter {
public:
    enum class Written {
        whole,
        leftOut, ///< the reader is behind; measuring does not wait for it
        closed,  ///< the reader has gone
        failed,  ///< errno says why
    };

    explicit LineWriter(int descriptor) : descriptor_(descriptor) {}

    /// `line` with its line break, written at once or not at all.
    Written write(std::string_view line);

private:
    int descriptor_;
};

} // namespace tarnwick
