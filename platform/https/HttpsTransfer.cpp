#include "platform/https/HttpsTransfer.h"

#include <array>
#include <cstddef>
#include <string_view>
#include <utility>

namespace tarnwick {

namespace {

constexpr std::size_t partSize = std::size_t{64} * 1024;
constexpr int statusOk = 200;

bool isHttps(const QUrl& address) {
    return address.isValid() && address.scheme() == u"https" && !address.host().isEmpty();
}

bool isRedirect(int status) {
    return status == 301 || status == 302 || status == 303 || status == 307 || status == 308;
}

/// Of an answer that is no redirect and not the file.
Downloader::Problem problemOfStatus(int status) {
    if (status == 404 || status == 410) {
        return Downloader::Problem::missing;
    }
    if (status >= 500 || status == 408 || status == 429) { // too slow, too often
        return Downloader::Problem::unavailable;
    }
    return Downloader::Problem::unusable;
}

} // namespace

HttpsTransfer::HttpsTransfer(
    RunLoop& loop, HttpsPatience patience, Downloader::Request request, Downloader::Receiver receiver)
    : loop_(loop),
      patience_(patience),
      request_(std::move(request)),
      receiver_(std::make_shared<const Downloader::Receiver>(std::move(receiver))) {
    loop_.post(lifeline_.guarded(
        [this] { visit(QUrl(QString::fromStdString(request_.address), QUrl::StrictMode)); }));
}

void HttpsTransfer::visit(const QUrl& address) {
    if (!isHttps(address)) {
        fail(Downloader::Problem::notHttps, address.toDisplayString());
        return;
    }
    exchange_ = std::make_unique<HttpsExchange>(
        loop_, address, QByteArray::fromStdString(request_.userAgent), [this] { advance(); });
    waitFor(patience_.answer);
}

void HttpsTransfer::advance() {
    if (isAccepted_) {
        passOn();
    } else if (const auto answer = exchange_->answer()) {
        judge(*answer);
    } else if (exchange_->isOver()) {
        end(exchange_->failure());
    }
}

/// As soon as the headers are there: what comes after those of another answer than the file may have no end.
void HttpsTransfer::judge(const HttpsExchange::Answer& answer) {
    if (isRedirect(answer.status) && !answer.target.isEmpty()) {
        follow(answer.target);
    } else if (answer.status != statusOk) {
        fail(problemOfStatus(answer.status), QString::number(answer.status) + ' ' + answer.reason);
    } else if (!answer.coding.isEmpty()) {
        // Nobody asked for it, and it is not unpacked: the file would not be the one that was published.
        fail(Downloader::Problem::unusable, "Content-Encoding: " + answer.coding);
    } else if (answer.size && *answer.size > request_.sizeLimit) {
        fail(Downloader::Problem::tooLarge, QString::number(*answer.size) + " bytes");
    } else {
        isAccepted_ = true;
        waitFor(patience_.silence);
        passOn();
    }
}

void HttpsTransfer::follow(const QUrl& target) {
    if (++redirects_ > mostRedirects) {
        fail(Downloader::Problem::unusable, "too many redirects");
    } else {
        visit(target);
    }
}

/// One part a turn, so that a fast server does not hold up the rest of the program.
void HttpsTransfer::passOn() {
    std::array<char, partSize> part{};
    const std::size_t count = exchange_->read(part);
    received_ += count;
    if (received_ > request_.sizeLimit) {
        fail(Downloader::Problem::tooLarge, {});
    } else if (count > 0) {
        if (received_ - awaitedSince_ >= HttpsPatience::leastProgress) {
            awaitedSince_ = received_;
            waitFor(patience_.silence);
        }
        const Lifeline::Watch watch = lifeline_.watch();
        const auto receiver = receiver_;
        const bool goesOn = receiver->received(std::string_view(part.data(), count));
        if (!watch.hasEnded() && !goesOn) {
            exchange_.reset();
            patienceEnds_.reset();
        }
    } else if (exchange_->isOver()) {
        end(exchange_->failure());
    }
}

void HttpsTransfer::waitFor(double seconds) {
    patienceEnds_ = loop_.after(seconds, [this] { fail(Downloader::Problem::silent, {}); });
}

void HttpsTransfer::fail(Downloader::Problem problem, const QString& detail) {
    end(Downloader::Failure{.problem = problem, .detail = oneLine(detail)});
}

/// The last step: the receiver may destroy this object.
void HttpsTransfer::end(const std::optional<Downloader::Failure>& failure) {
    exchange_.reset();
    patienceEnds_.reset();
    const auto receiver = receiver_;
    receiver->ended(failure);
}

} // namespace tarnwick
