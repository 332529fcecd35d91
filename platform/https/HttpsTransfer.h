// One file on its way: redirects, limits and time-outs.
#pragma once

#include "core/Lifeline.h"
#include "core/RunLoop.h"
#include "platform/https/HttpsDownloader.h"
#include "platform/https/HttpsExchange.h"
#include "platform/ports/Downloader.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace tarnwick {

/// The handle of a fetch. It tells the receiver only in turns of the loop's, so that the library is never
/// destroyed inside a call of its own. Main thread.
class HttpsTransfer final : public RunLoop::Registration {
public:
    /// More redirects than that lead nowhere.
    static constexpr int mostRedirects = 5;

    HttpsTransfer(
        RunLoop& loop, HttpsPatience patience, Downloader::Request request, Downloader::Receiver receiver);

private:
    void visit(const QUrl& address);
    void advance();
    void judge(const HttpsExchange::Answer& answer);
    void follow(const QUrl& target);
    void passOn();
    void waitFor(double seconds);
    void fail(Downloader::Problem problem, const QString& detail);
    void end(const std::optional<Downloader::Failure>& failure);

    RunLoop& loop_;
    HttpsPatience patience_;
    Downloader::Request request_;
    /// Shared, because a call may destroy this object.
    std::shared_ptr<const Downloader::Receiver> receiver_;
    std::unique_ptr<HttpsExchange> exchange_; ///< the present one; null before the first and after the end
    bool isAccepted_ = false;                 ///< the file is coming
    std::uint64_t awaitedSince_ = 0;          ///< bytes that had come when the present patience began
    std::uint64_t received_ = 0;              ///< bytes
    int redirects_ = 0;
    RunLoop::Handle patienceEnds_;
    Lifeline lifeline_;
};

} // namespace tarnwick
