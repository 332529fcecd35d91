// A changed text in a field before it is committed.
#pragma once

#include <QObject>

#include <functional>

class QLineEdit;
class QWidget;

namespace tarnwick {

/// A draft begins when the user changes the text: by typing, pasting or with assistive technology. It is
/// committed when Enter is pressed or another control gets the focus, and at once in a field without the
/// focus, as when a text is dropped there. Another window or a menu that opens leaves the draft as it is.
class Draft final : public QObject {
public:
    /// `field` is the widget that has the focus while `text` is edited; both may be the same, and both
    /// outlive the draft.
    Draft(QWidget& field, QLineEdit& text, std::function<void()> commit);

    [[nodiscard]] bool exists() const { return exists_; }

    /// For a text that the program itself has set.
    void discard() { exists_ = false; }

    /// To be called while the draft is committed: its text was not taken, and remains a draft.
    void resume() { exists_ = true; }

    /// Commits the draft, if there is one.
    void finish();

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    std::function<void()> commit_;
    bool exists_ = false;
};

} // namespace tarnwick
