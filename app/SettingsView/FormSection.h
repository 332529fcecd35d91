// A group of settings: rows on a card, and an explanation below.
#pragma once

#include "app/ViewStyle/ViewStyle.h"

#include <QLabel>
#include <QWidget>

#include <functional>
#include <initializer_list>
#include <vector>

class QCheckBox;
class QHBoxLayout;
class QPushButton;

namespace tarnwick {

class RowLabel;

/// Checks or unchecks the box without a signal.
void showOn(QCheckBox& box, bool isOn);

/// One line of a card: a label at one end, its controls at the other. A switch stands beside its label. A
/// click on the label clicks the first control if that is a button, else focuses it. A note of one line does
/// not make the row higher: a row that moved would be missed by the click meant for it.
class FormRow final : public QWidget {
public:
    /// The label names the first control, also for assistive technology.
    FormRow(const QString& label, std::initializer_list<QWidget*> controls, QWidget* parent);

    /// A button at the end of the line.
    void addButton(QPushButton& button);

    /// A text below the label; hidden while empty. `offersRemedy` shows the remedy's button beside it.
    void setNote(const QString& text, bool offersRemedy = false);

    /// A note that tells of no problem.
    void setHint(const QString& text);

    /// Adds the button that is shown beside notes.
    void addRemedy(const QString& title, std::function<void()> act);

    void setStyle(const ViewStyle& style);

    /// The control that the label names.
    [[nodiscard]] QWidget* control() const;

    /// Alt with this letter of the label does what a click on the label does.
    void setMnemonic(char letter);
    void setShowsMnemonic(bool shows);

private:
    void showNote(const QString& text, bool isHint);

    std::vector<QWidget*> controls_; ///< children
    QHBoxLayout* line_;              ///< owned by the layout around it
    RowLabel* label_;
    QLabel* note_;
    bool isHint_ = false;           ///< the note
    QPushButton* remedy_ = nullptr; ///< a child
};

class FormSection : public QWidget {
public:
    explicit FormSection(QWidget* parent);

    FormRow* addRow(const QString& label, std::initializer_list<QWidget*> controls, char mnemonic = 0);

    /// Also the accessible description of the controls added so far.
    void setFooter(const QString& text);

    /// Underlines the letters of the rows.
    virtual void setShowsMnemonics(bool shows);

    virtual void setStyle(const ViewStyle& style);

protected:
    /// Shows or hides the card and the footer.
    void setShowsRows(bool shows);

    /// With plain spaces.
    [[nodiscard]] QString footer() const { return footer_->accessibleName(); }

private:
    class Card;

    Card* card_;
    QLabel* footer_;
};

} // namespace tarnwick
