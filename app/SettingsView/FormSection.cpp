#include "app/SettingsView/FormSection.h"

#include "app/SettingsView/RowLabel.h"
#include "app/ViewStyle/FormStyle.h"
#include "app/ViewStyle/LabelLooks.h"

#include <QCheckBox>
#include <QPainter>
#include <QPushButton>
#include <QRegularExpression>
#include <QSignalBlocker>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

namespace tarnwick {

namespace {

constexpr double rowInset = 14;
constexpr double rowPadding = 3; ///< leaves room for a label and a note of one line
constexpr double rowHeight = 40;
constexpr double controlGap = 8;
constexpr double remedyInset = 12;
constexpr double remedyHeight = 28;
constexpr double footerGap = 7;

/// Computes the sizes of a widget and of all that contain it up to the window, at once. The window asks for
/// the form's size before the layouts would do so.
void activateLayouts(QWidget* from) {
    for (QWidget* each = from; each != nullptr && !each->isWindow(); each = each->parentWidget()) {
        if (each->layout() != nullptr) {
            each->layout()->activate();
        }
    }
}

/// Keeps a number on one line with its unit and with the sign before it.
QString withUnitsKept(QString text) {
    static const QRegularExpression space(
        QStringLiteral(R"((?<=[0-9]) (?=(ms|seconds)\b)|(?<=\+) (?=[0-9]))"));
    return text.replace(space, QString(QChar::Nbsp));
}

} // namespace

void showOn(QCheckBox& box, bool isOn) {
    const QSignalBlocker quiet(box);
    box.setChecked(isOn);
}

// NOLINTBEGIN(cppcoreguidelines-owning-memory): the parent owns its widgets and layouts

FormRow::FormRow(const QString& label, std::initializer_list<QWidget*> controls, QWidget* parent)
    : QWidget(parent),
      controls_(controls),
      line_(new QHBoxLayout),
      label_(new RowLabel(label, this)),
      note_(new QLabel(this)) {
    QWidget* const named = *controls.begin();
    const bool isSwitch = qobject_cast<QCheckBox*>(named) != nullptr;
    const auto takesTheRest = [](const QWidget* control) {
        return control->sizePolicy().horizontalPolicy() == QSizePolicy::Expanding;
    };
    if (isSwitch) {
        line_->addWidget(named);
    }
    auto* const texts = new QVBoxLayout;
    texts->setSpacing(0);
    texts->addStretch();
    texts->addWidget(label_, 0, Qt::AlignLeading);
    texts->addWidget(note_);
    texts->addStretch();
    line_->addLayout(texts, std::ranges::any_of(controls, takesTheRest) ? 0 : 1);
    for (QWidget* control : controls) {
        if (!isSwitch || control != named) {
            line_->addWidget(control, takesTheRest(control) ? 1 : 0);
        }
    }
    if (qobject_cast<QLabel*>(named) == nullptr) { // a label's name is its text
        named->setAccessibleName(label);
    }
    label_->setBuddy(named);
    note_->setWordWrap(true);
    note_->setTextFormat(Qt::PlainText);
    note_->hide();
    auto* const column = new QVBoxLayout(this);
    column->addLayout(line_);
}

QWidget* FormRow::control() const {
    return label_->buddy();
}

void FormRow::setMnemonic(char letter) {
    label_->setMnemonic(QChar::fromLatin1(letter));
}

void FormRow::setShowsMnemonic(bool shows) {
    label_->setShowsMnemonic(shows);
    for (QWidget* control : controls_) {
        if (auto* const button = qobject_cast<QPushButton*>(control)) {
            FormStyle::setShowsMnemonic(*button, shows);
        }
    }
}

void FormRow::addButton(QPushButton& button) {
    line_->addWidget(&button);
    controls_.push_back(&button);
}

void FormRow::setNote(const QString& text, bool offersRemedy) {
    if (remedy_ != nullptr) {
        remedy_->setVisible(offersRemedy);
    }
    showNote(text, false);
}

void FormRow::setHint(const QString& text) {
    showNote(text, true);
    controls_.front()->setAccessibleDescription(text);
}

void FormRow::showNote(const QString& text, bool isHint) {
    isHint_ = isHint;
    const ViewStyle style(*this);
    setTextColor(*note_, isHint ? style.colors().secondary() : style.colors().bad());
    note_->setText(text);
    note_->setVisible(!text.isEmpty());
    activateLayouts(this);
}

void FormRow::addRemedy(const QString& title, std::function<void()> act) {
    remedy_ = new QPushButton(title, this);
    remedy_->setAutoDefault(false);
    remedy_->hide();
    line_->addWidget(remedy_);
    connect(remedy_, &QPushButton::clicked, this, std::move(act));
}

void FormRow::setStyle(const ViewStyle& style) {
    const int side = style.length(rowInset);
    const int above = style.length(rowPadding);
    layout()->setContentsMargins(side, above, side, above);
    line_->setSpacing(style.length(controlGap));
    setMinimumHeight(style.length(rowHeight));
    note_->setFont(style.font(ViewStyle::smallText));
    setTextColor(*note_, isHint_ ? style.colors().secondary() : style.colors().bad());
    if (remedy_ != nullptr) {
        const int text = remedy_->fontMetrics().horizontalAdvance(remedy_->text());
        remedy_->setMinimumSize(text + 2 * style.length(remedyInset), style.length(remedyHeight));
        FormStyle::dress(*remedy_);
    }
    for (QWidget* control : controls_) {
        if (qobject_cast<QLabel*>(control) == nullptr) {
            FormStyle::dress(*control);
        }
    }
    alignText(*note_, Qt::AlignLeading);
}

/// Rows one below the other, with lines between them.
class FormSection::Card final : public QWidget {
public:
    explicit Card(QWidget* parent) : QWidget(parent) {
        auto* const rows = new QVBoxLayout(this);
        rows->setContentsMargins(0, 0, 0, 0);
        rows->setSpacing(0);
    }

    void add(FormRow* row) {
        rows_.push_back(row);
        layout()->addWidget(row);
    }

    [[nodiscard]] const std::vector<FormRow*>& rows() const { return rows_; }

protected:
    void paintEvent(QPaintEvent* /*event*/) override {
        const ViewStyle style(*this);
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        FormStyle::drawCard(painter, *this);
        painter.setPen(FormStyle::cardEdge(palette()));
        const double inset = style.length(rowInset);
        bool isFirst = true;
        for (const FormRow* row : rows_) {
            if (!row->isVisibleTo(this)) {
                continue;
            }
            if (!isFirst) {
                const double y = row->y() + 0.5;
                painter.drawLine(QPointF(inset, y), QPointF(width() - inset, y));
            }
            isFirst = false;
        }
    }

private:
    std::vector<FormRow*> rows_; ///< children, from top to bottom
};

FormSection::FormSection(QWidget* parent)
    : QWidget(parent), card_(new Card(this)), footer_(new QLabel(this)) {
    footer_->setWordWrap(true);
    footer_->setTextFormat(Qt::PlainText);
    footer_->hide();
    auto* const column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->addWidget(card_);
    column->addWidget(footer_);
}

FormRow* FormSection::addRow(const QString& label, std::initializer_list<QWidget*> controls, char mnemonic) {
    auto* const row = new FormRow(label, controls, card_);
    if (mnemonic != 0) {
        row->setMnemonic(mnemonic);
    }
    card_->add(row);
    return row;
}

// NOLINTEND(cppcoreguidelines-owning-memory)

void FormSection::setFooter(const QString& text) {
    footer_->setText(withUnitsKept(text));
    footer_->setAccessibleName(text); // with plain spaces
    footer_->show();
    for (const FormRow* row : card_->rows()) {
        row->control()->setAccessibleDescription(text);
    }
}

void FormSection::setShowsRows(bool shows) {
    card_->setVisible(shows);
    footer_->setVisible(shows && !footer_->text().isEmpty());
    activateLayouts(this);
}

void FormSection::setShowsMnemonics(bool shows) {
    for (FormRow* row : card_->rows()) {
        row->setShowsMnemonic(shows);
    }
}

void FormSection::setStyle(const ViewStyle& style) {
    for (FormRow* row : card_->rows()) {
        row->setStyle(style);
    }
    const int side = style.length(rowInset);
    footer_->setContentsMargins(side, 0, side, 0);
    footer_->setFont(style.font(ViewStyle::smallText));
    setTextColor(*footer_, style.colors().secondary());
    alignText(*footer_, Qt::AlignLeading);
    layout()->setSpacing(style.length(footerGap));
}

} // namespace tarnwick
