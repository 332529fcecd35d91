// A group of settings: rows on a card, what they mean below it.
#pragma once

#include "app/StatusMenuView/ViewStyle.h"

#include <QLabel>
#include <QWidget>

#include <functional>
#include <initializer_list>
#include <vector>

class QHBoxLayout;
class QPushButton;

namespace tarnwick {

/// At the side where lines begin, or at the other one, in the layout's direction; labels by themselves go by
/// that of their text.
void alignText(QLabel& label, Qt::Alignment side);

void setTextColor(QLabel& label, const QColor& color);

/// One line of a card: a label, and what belongs to it at the other end. A click on the label presses the
/// control, if that is a button, and else gives it the keyboard.
class FormRow final : public QWidget {
public:
    /// The first of the controls is the one that the label names, also to assistive technology.
    FormRow(const QString& label, std::initializer_list<QWidget*> controls, QWidget* parent);

    /// A text below the line; hidden while empty. With what can be done about it, if it is so said here and a
    /// remedy was added.
    void setNote(const QString& text, bool offersRemedy = false);

    /// A button beside notes.
    void addRemedy(const QString& title, std::function<void()> act);

    void setStyle(const ViewStyle& style);

    /// The one that the label names.
    [[nodiscard]] QWidget* control() const { return label_->buddy(); }

private:
    std::vector<QWidget*> controls_; ///< children
    QHBoxLayout* line_;              ///< owned by the layout around it
    QLabel* label_;
    QLabel* note_;
    QHBoxLayout* noteLine_;         ///< owned by the layout around it
    QPushButton* remedy_ = nullptr; ///< a child
};

class FormSection final : public QWidget {
public:
    explicit FormSection(QWidget* parent);

    FormRow* addRow(const QString& label, std::initializer_list<QWidget*> controls);

    /// Also what assistive technology says about the controls of the rows so far.
    void setFooter(const QString& text);

    void setStyle(const ViewStyle& style);

private:
    class Card;

    Card* card_;
    QLabel* footer_;
};

} // namespace tarnwick
