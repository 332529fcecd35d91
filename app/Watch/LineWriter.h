// Whole lines to a pipe, file or terminal, never waiting for a slow reader.
#pragma once

#include <string>
#include <string_view>
#include <system_error>

namespace tarnwick {

/// Main thread. The descriptor stays its owner's.
class LineWriter {
public:
    enum class Written {
        taken,   ///< written, or begun; the rest is kept and goes out before the next line
        leftOut, ///< the reader is behind; measuring does not wait for it
        closed,  ///< the reader has gone
        failed,  ///< `error` says why
    };

    explicit LineWriter(int descriptor) : descriptor_(descriptor) {}

    /// `line` with its line break.
    Written write(std::string_view line);

    /// Why a line failed to be written.
    [[nodiscard]] std::error_code error() const { return error_; }

private:
    /// Takes what is written off the text: all of it, or what there is room for.
    Written writeSome(std::string_view& text);

    int descriptor_;
    std::error_code error_;
    std::string rest_; ///< of a line that has begun
};

} // namespace tarnwick
