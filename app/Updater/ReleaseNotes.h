// The notes of a release, drawn from Markdown.
#pragma once

#include <QTextBrowser>

namespace tarnwick {

/// Draws what CommonMark has, but no HTML and no pictures. Nothing is loaded, neither from the network nor
/// from files, and no link is followed: the text is the maker's, and still needs none of that.
class ReleaseNotes final : public QTextBrowser {
public:
    explicit ReleaseNotes(QWidget* parent);

    void show(const QString& markdown);

    [[nodiscard]] QVariant loadResource(int type, const QUrl& name) override;
};

} // namespace tarnwick
