// What is being typed into a field, until it counts.
#pragma once

#include <QObject>

#include <functional>

class QLineEdit;
class QWidget;

namespace tarnwick {

/// Begins when somebody changes a field's text: by typing, by pasting, with assistive technology. It counts
/// once Enter is pressed or the keyboard goes to another control, and at once in a field that has not got the
/// keyboard, as when a text is dropped there. A look at another window or into a menu leaves it as it is.
class Draft final : public QObject {
public:
    /// `field` is what gets the keyboard for `text`; they may be the same, and both outlive the draft.
    /// `commit` is called at the end of a draft that counts.
    Draft(QWidget& field, QLineEdit& text, std::function<void()> commit);

    [[nodiscard]] bool exists() const { return exists_; }

    /// To be called where the program itself sets the text, which then tells nobody.
    void discard() { exists_ = false; }

    /// Lets it count, if there is any.
    void finish();

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    std::function<void()> commit_;
    bool exists_ = false;
};

} // namespace tarnwick
