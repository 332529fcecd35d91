#include "app/App/AboutPanel.h"

#include "app/App/MainMenu.h"
#include "app/App/ProgramIcon.h"
#include "app/ViewStyle/ViewStyle.h"
#include "platform/qt/Foreground.h"

#include <QDialog>
#include <QDialogButtonBox>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include <utility>

namespace tarnwick {

namespace {

// Sizes of the design, in points.
constexpr double aboutIconSide = 96;
constexpr double panelMargin = 28;
constexpr double nameSize = 20.8;
constexpr double privacyWidth = 330;

const char* const credits = "Keeps an eye on your internet connection from the menu bar.";
const char* const whatIsSent =
    "To watch the connection, Tarnwick sends pings to the host that you choose, and looks its name up. After "
    "the start or a change of the network, while something is wrong and shortly after, it also asks the "
    "routers on the way to that host. While something is wrong it asks your name servers, too. The results "
    "are sent to nobody.";
const char* const whatIsKept =
    "Statistics and a history of latency, loss and outages stay on this computer. The history is one file "
    "that only you can read, %1, and forgets what is older than two years. The settings, under “Advanced”, "
    "clear it and switch it off.";
const char* const license = "© 2026 The Tarnwick authors. MIT License.";

// NOLINTBEGIN(cppcoreguidelines-owning-memory): the window owns its widgets

/// A centered paragraph.
QLabel* paragraph(const QString& text, const QFont& font) {
    auto* const label = new QLabel(text);
    label->setFont(font);
    label->setAlignment(Qt::AlignCenter);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    return label;
}

/// Several lines, broken where the width ends.
QLabel* wrappedParagraph(const QString& text, const ViewStyle& style) {
    QLabel* const label = paragraph(text, style.font(ViewStyle::smallText));
    label->setWordWrap(true);
    label->setFixedWidth(style.length(privacyWidth));
    return label;
}

QLabel* icon(const QWidget& window, int side) {
    auto* const label = new QLabel;
    label->setPixmap(programIcon().pixmap(QSize(side, side), window.devicePixelRatioF()));
    label->setAlignment(Qt::AlignCenter);
    return label;
}

QDialog* makeWindow(const QString& version, const QString& historyFile) {
    auto* const window = new QDialog;
    window->setAttribute(Qt::WA_DeleteOnClose);
    window->setWindowTitle(QStringLiteral("About Tarnwick"));
    window->setWindowIcon(programIcon());
    const ViewStyle style(*window);
    auto* const layout = new QVBoxLayout(window);
    const int side = style.length(panelMargin);
    layout->setContentsMargins(side, side, side, side / 2);
    layout->setSpacing(style.length(4));
    layout->addWidget(icon(*window, style.length(aboutIconSide)));
    layout->addSpacing(style.length(8));
    layout->addWidget(paragraph(QStringLiteral("Tarnwick"), style.font(nameSize, QFont::DemiBold)));
    layout->addWidget(paragraph("Version " + version, style.font(ViewStyle::usualText)));
    layout->addSpacing(style.length(12));
    layout->addWidget(paragraph(QLatin1String(credits), style.font(ViewStyle::smallText)));
    layout->addSpacing(style.length(8));
    layout->addWidget(wrappedParagraph(QLatin1String(whatIsSent), style), 0, Qt::AlignHCenter);
    layout->addSpacing(style.length(4));
    layout->addWidget(
        wrappedParagraph(QString::fromUtf8(whatIsKept).arg(historyFile), style), 0, Qt::AlignHCenter);
    layout->addSpacing(style.length(8));
    layout->addWidget(paragraph(QString::fromUtf8(license), style.font(ViewStyle::smallText)));
    layout->addSpacing(style.length(12));
    auto* const buttons = new QDialogButtonBox(QDialogButtonBox::Close);
    buttons->button(QDialogButtonBox::Close)->setIcon({});
    QObject::connect(buttons, &QDialogButtonBox::rejected, window, &QDialog::close);
    layout->addWidget(buttons);
    layout->setSizeConstraint(QLayout::SetFixedSize);
    return window;
}

// NOLINTEND(cppcoreguidelines-owning-memory)

} // namespace

AboutPanel::AboutPanel(std::string version, std::string historyFile, Menu& menu)
    : version_(std::move(version)), historyFile_(std::move(historyFile)), menu_(menu) {
}

AboutPanel::~AboutPanel() {
    delete window_;
}

void AboutPanel::show() {
    if (window_ == nullptr) {
        window_ = makeWindow(QString::fromStdString(version_), QString::fromStdString(historyFile_));
        MainMenu::install(*window_, menu_);
    }
    Foreground::show(*window_);
}

} // namespace tarnwick
