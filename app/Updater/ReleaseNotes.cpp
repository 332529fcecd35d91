#include "app/Updater/ReleaseNotes.h"

#include "app/ViewStyle/ViewStyle.h"

#include <QTextCursor>
#include <QTextDocument>
#include <QVariant>

namespace tarnwick {

namespace {

// Sizes of the design, in points.
constexpr double notesMargin = 10;
constexpr double notesIndent = 14; ///< of a list

} // namespace

ReleaseNotes::ReleaseNotes(QWidget* parent) : QTextBrowser(parent) {
    setOpenLinks(false);
    setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    setTabChangesFocus(true);
    setAccessibleName(QStringLiteral("What is new"));
    const ViewStyle style(*this);
    document()->setDocumentMargin(style.length(notesMargin));
    document()->setIndentWidth(style.length(notesIndent));
}

void ReleaseNotes::show(const QString& markdown) {
    document()->setMarkdown(
        markdown, QTextDocument::MarkdownFeatures(QTextDocument::MarkdownDialectCommonMark)
                      | QTextDocument::MarkdownNoHTML);
    moveCursor(QTextCursor::Start); // it stands behind what was put in, and would be scrolled to
}

QVariant ReleaseNotes::loadResource(int /*type*/, const QUrl& /*name*/) {
    return {};
}

} // namespace tarnwick
