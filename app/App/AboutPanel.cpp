#include "app/App/AboutPanel.h"

#include "app/App/MainMenu.h"
#include "app/App/ProgramIcon.h"
#include "platform/qt/DesktopOpener.h"
#include "platform/qt/Foreground.h"

#include <QDialog>
#include <QDialogButtonBox>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include <utility>

namespace tarnwick {

namespace {

constexpr int aboutIconSide = 96;
constexpr int panelMargin = 28;

const char* const credits = "Keeps an eye on your internet connection from the menu bar.";
const char* const productPage = "https://tarnwick.example/";
const char* const license = "© 2026 The Tarnwick authors. MIT License.";

// NOLINTBEGIN(cppcoreguidelines-owning-memory): the window owns its widgets

/// A centered paragraph. `size` is relative to the usual font.
QLabel* paragraph(const QString& text, double size, QFont::Weight weight = QFont::Normal) {
    auto* const label = new QLabel(text);
    QFont font = label->font();
    font.setPointSizeF(font.pointSizeF() * size);
    font.setWeight(weight);
    label->setFont(font);
    label->setAlignment(Qt::AlignCenter);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::LinksAccessibleByMouse);
    QObject::connect(label, &QLabel::linkActivated, [](const QString& page) { openWithDesktop(page); });
    return label;
}

QLabel* icon(const QWidget& window) {
    auto* const label = new QLabel;
    label->setPixmap(programIcon().pixmap(QSize(aboutIconSide, aboutIconSide), window.devicePixelRatioF()));
    label->setAlignment(Qt::AlignCenter);
    return label;
}

QDialog* makeWindow(const QString& version) {
    auto* const window = new QDialog;
    window->setAttribute(Qt::WA_DeleteOnClose);
    window->setWindowTitle(QStringLiteral("About Tarnwick"));
    window->setWindowIcon(programIcon());
    auto* const layout = new QVBoxLayout(window);
    layout->setContentsMargins(panelMargin, panelMargin, panelMargin, panelMargin / 2);
    layout->setSpacing(4);
    layout->addWidget(icon(*window));
    layout->addSpacing(8);
    layout->addWidget(paragraph(QStringLiteral("Tarnwick"), 1.6, QFont::DemiBold));
    layout->addWidget(paragraph("Version " + version, 1));
    layout->addSpacing(12);
    const QString link = QStringLiteral("<a href=\"%1\">%1</a>").arg(QLatin1String(productPage));
    layout->addWidget(paragraph(QLatin1String(credits) + "<br>" + link, 11.0 / 13));
    layout->addWidget(paragraph(QString::fromUtf8(license), 11.0 / 13));
    layout->addSpacing(12);
    auto* const buttons = new QDialogButtonBox(QDialogButtonBox::Close);
    buttons->button(QDialogButtonBox::Close)->setIcon({});
    QObject::connect(buttons, &QDialogButtonBox::rejected, window, &QDialog::close);
    layout->addWidget(buttons);
    layout->setSizeConstraint(QLayout::SetFixedSize);
    return window;
}

// NOLINTEND(cppcoreguidelines-owning-memory)

} // namespace

AboutPanel::AboutPanel(std::string version, const Menu& menu) : version_(std::move(version)), menu_(menu) {
}

AboutPanel::~AboutPanel() {
    delete window_;
}

void AboutPanel::show() {
    if (window_ == nullptr) {
        window_ = makeWindow(QString::fromStdString(version_));
        MainMenu::install(*window_, menu_);
    }
    Foreground::show(*window_);
}

} // namespace tarnwick
