// One request over HTTPS and its answer, by the toolkit's network library.
#pragma once

#include "core/Lifeline.h"
#include "core/RunLoop.h"
#include "platform/ports/Downloader.h"

#include <QByteArray>
#include <QNetworkAccessManager>
#include <QNetworkProxy>
#include <QNetworkReply>
#include <QString>
#include <QUrl>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>

namespace tarnwick {

/// The request holds the address, the user agent and nothing else of this machine or of earlier requests. A
/// redirect is an answer like any other. Main thread.
class HttpsExchange {
public:
    struct Answer {
        int status;
        QString reason;
        QUrl target;                       ///< of a redirect, complete; else empty
        QString coding;                    ///< how the body is compressed; empty when it is not
        std::optional<std::uint64_t> size; ///< of the body, in bytes, where the server tells it
    };

    /// How the server is reached.
    struct Way {
        QNetworkProxy proxy;
        QString problem; ///< empty where there is none
    };

    /// `onNews` runs in a turn of the loop's of its own, again and again while there is something to read. It
    /// may destroy this object.
    HttpsExchange(RunLoop& loop, QUrl address, QByteArray userAgent, std::function<void()> onNews);
    HttpsExchange(const HttpsExchange&) = delete;
    HttpsExchange& operator=(const HttpsExchange&) = delete;
    ~HttpsExchange();

    /// From the headers on.
    [[nodiscard]] std::optional<Answer> answer() const;

    /// How many bytes of the body it has put there; 0 when none have come.
    [[nodiscard]] std::size_t read(std::span<char> place);

    /// All has been read, and nothing more will come.
    [[nodiscard]] bool isOver() const;

    /// Why it is over, where that is not the end of the answer.
    [[nodiscard]] std::optional<Downloader::Failure> failure() const;

private:
    void findWay();
    void take(const Way& way);
    void giveUp(const QString& problem);
    void send(const QNetworkProxy& proxy);
    void tellSoon();
    void tell();

    RunLoop& loop_;
    QUrl address_;
    QByteArray userAgent_;
    std::function<void()> onNews_;
    std::unique_ptr<QNetworkAccessManager> manager_; ///< once the way is known
    QNetworkReply* reply_ = nullptr;                 ///< the manager's
    std::optional<Downloader::Failure> failure_;     ///< before anything is sent
    QString distrust_;                               ///< what is wrong with the certificate
    bool tellsSoon_ = false;
    Lifeline lifeline_;
};

/// Without line ends and control characters, and not longer than a window is wide: a server writes some of
/// it.
[[nodiscard]] std::string oneLine(const QString& text);

} // namespace tarnwick
