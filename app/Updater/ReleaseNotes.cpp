#include "app/Updater/ReleaseNotes.h"

#include <QTextDocument>
#include <QVariant>

namespace tarnwick {

ReleaseNotes::ReleaseNotes(QWidget* parent) : QTextBrowser(parent) {
    setOpenLinks(false);
    setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    setTabChangesFocus(true);
    setAccessibleName(QStringLiteral("What is new"));
}

void ReleaseNotes::show(const QString& markdown) {
    document()->setMarkdown(
        markdown, QTextDocument::MarkdownFeatures(QTextDocument::MarkdownDialectCommonMark)
                      | QTextDocument::MarkdownNoHTML);
}

QVariant ReleaseNotes::loadResource(int /*type*/, const QUrl& /*name*/) {
    return {};
}

} // namespace tarnwick
