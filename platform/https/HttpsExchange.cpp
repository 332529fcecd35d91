#include "platform/https/HttpsExchange.h"

#include <QList>
#include <QNetworkProxyFactory>
#include <QNetworkProxyQuery>
#include <QNetworkRequest>
#include <QSsl>
#include <QSslConfiguration>
#include <QSslError>
#include <QSslSocket>
#include <QVariant>

#include <algorithm>
#include <netdb.h>
#include <utility>

namespace tarnwick {

namespace {

/// Bytes that the library holds for us until they are read; then it lets the server wait.
constexpr qint64 readBufferSize = qint64{256} * 1024;

/// The first that takes an encrypted connection.
QNetworkProxy suitable(const QList<QNetworkProxy>& proxies) {
    const auto found = std::ranges::find_if(proxies, &QNetworkProxy::isTransparentProxy);
    return found == proxies.end() ? QNetworkProxy(QNetworkProxy::NoProxy) : *found;
}

/// Empty when the name has an address.
QString problemOfName(const QString& name) {
    addrinfo* found = nullptr;
    const int status = ::getaddrinfo(name.toUtf8().constData(), nullptr, nullptr, &found);
    if (status != 0) {
        return name + ": " + QString::fromLocal8Bit(::gai_strerror(status));
    }
    ::freeaddrinfo(found);
    return {};
}

QSslConfiguration strictTls() {
    QSslConfiguration tls = QSslConfiguration::defaultConfiguration();
    tls.setProtocol(QSsl::TlsV1_2OrLater);
    tls.setPeerVerifyMode(QSslSocket::VerifyPeer);
    return tls;
}

QNetworkRequest bareRequest(const QUrl& address, const QByteArray& userAgent) {
    QNetworkRequest request(address);
    request.setSslConfiguration(strictTls());
    request.setRawHeader("User-Agent", userAgent);
    // The file as it is. Otherwise the library asks for all that it can unpack.
    request.setRawHeader("Accept-Encoding", "identity");
    // Any. Otherwise the library tells the user's.
    request.setRawHeader("Accept-Language", "*");
    // With HTTP/2 the library does not keep to the size of the read buffer.
    request.setAttribute(QNetworkRequest::Http2AllowedAttribute, false);
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::ManualRedirectPolicy);
    return request;
}

HttpsExchange::Way wayTo(const QUrl& address) {
    const QNetworkProxy proxy =
        suitable(QNetworkProxyFactory::systemProxyForQuery(QNetworkProxyQuery(address)));
    const bool isDirect = proxy.type() == QNetworkProxy::NoProxy;
    return {
        .proxy = proxy,
        .problem = problemOfName(isDirect ? address.host(QUrl::EncodeUnicode) : proxy.hostName()),
    };
}

Downloader::Problem problemOf(QNetworkReply::NetworkError error) {
    switch (error) {
    case QNetworkReply::RemoteHostClosedError:
    case QNetworkReply::ProtocolFailure:
        return Downloader::Problem::brokenOff;
    case QNetworkReply::TimeoutError:
    case QNetworkReply::ProxyTimeoutError:
        return Downloader::Problem::silent;
    default: // answers with an error have been judged by their status
        return Downloader::Problem::unreachable;
    }
}

/// Of a certificate. The library's own words are about a chain of issuers.
QString faultOf(const QSslError& error) {
    switch (error.error()) {
    case QSslError::CertificateExpired:
        return "its certificate has expired";
    case QSslError::CertificateNotYetValid:
        return "its certificate is not valid yet";
    case QSslError::HostNameMismatch:
        return "its certificate is that of another server";
    case QSslError::SelfSignedCertificate:
    case QSslError::SelfSignedCertificateInChain:
    case QSslError::UnableToGetIssuerCertificate:
    case QSslError::UnableToGetLocalIssuerCertificate:
    case QSslError::UnableToVerifyFirstCertificate:
    case QSslError::CertificateUntrusted:
        return "its certificate is signed by nobody whom this machine trusts";
    default:
        return error.errorString();
    }
}

} // namespace

HttpsExchange::HttpsExchange(RunLoop& loop, QUrl address, QByteArray userAgent, std::function<void()> onNews)
    : loop_(loop),
      address_(std::move(address)),
      userAgent_(std::move(userAgent)),
      onNews_(std::move(onNews)) {
    findWay();
}

HttpsExchange::~HttpsExchange() = default;

/// Both may wait for other machines: the proxy for a server that has the table of proxies, the name for a
/// name server. The library would wait for the name at the end of the program, too.
void HttpsExchange::findWay() {
    const auto answer = lifeline_.guarded([this](const Way& way) { take(way); });
    const bool isAsked = loop_.detach([answer, address = address_]() -> RunLoop::Task {
        return [answer, way = wayTo(address)] { answer(way); };
    });
    if (!isAsked) {
        giveUp("no thread for the lookup");
    }
}

void HttpsExchange::take(const Way& way) {
    if (way.problem.isEmpty()) {
        send(way.proxy);
    } else {
        giveUp(way.problem);
    }
}

void HttpsExchange::giveUp(const QString& problem) {
    failure_ = {.problem = Downloader::Problem::unreachable, .detail = oneLine(problem)};
    tellSoon();
}

void HttpsExchange::send(const QNetworkProxy& proxy) {
    // Its own: no cookies, passwords or TLS sessions of earlier requests.
    manager_ = std::make_unique<QNetworkAccessManager>();
    manager_->setProxy(proxy);
    reply_ = manager_->get(bareRequest(address_, userAgent_));
    reply_->setReadBufferSize(readBufferSize);
    const auto soon = [this] { tellSoon(); };
    QObject::connect(reply_, &QNetworkReply::metaDataChanged, reply_, soon);
    QObject::connect(reply_, &QNetworkReply::readyRead, reply_, soon);
    QObject::connect(reply_, &QNetworkReply::finished, reply_, soon);
    QObject::connect(reply_, &QNetworkReply::sslErrors, reply_, [this](const QList<QSslError>& errors) {
        distrust_ = faultOf(errors.value(0));
    });
}

void HttpsExchange::tellSoon() {
    if (!std::exchange(tellsSoon_, true)) {
        loop_.post(lifeline_.guarded([this] { tell(); }));
    }
}

void HttpsExchange::tell() {
    tellsSoon_ = false;
    const Lifeline::Watch watch = lifeline_.watch();
    const auto onNews = onNews_; // this object may be gone before the call returns
    onNews();
    if (!watch.hasEnded() && reply_ != nullptr && (reply_->bytesAvailable() > 0 || reply_->isFinished())) {
        tellSoon();
    }
}

std::optional<HttpsExchange::Answer> HttpsExchange::answer() const {
    const auto attribute = [this](QNetworkRequest::Attribute which) {
        return reply_ == nullptr ? QVariant() : reply_->attribute(which);
    };
    const int status = attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    if (status == 0) {
        return std::nullopt;
    }
    const QUrl target = attribute(QNetworkRequest::RedirectionTargetAttribute).toUrl();
    const QByteArray coding = reply_->rawHeader("Content-Encoding").trimmed().toLower();
    const QVariant size = reply_->header(QNetworkRequest::ContentLengthHeader);
    return Answer{
        .status = status,
        .reason = attribute(QNetworkRequest::HttpReasonPhraseAttribute).toString(),
        .target = target.isEmpty() ? QUrl() : address_.resolved(target),
        .coding = coding == "identity" ? QString() : QString::fromLatin1(coding),
        .size = size.isValid() ? std::optional(size.toULongLong()) : std::nullopt,
    };
}

std::size_t HttpsExchange::read(std::span<char> place) {
    const qint64 count = reply_->read(place.data(), static_cast<qint64>(place.size()));
    return static_cast<std::size_t>(std::max<qint64>(count, 0));
}

bool HttpsExchange::isOver() const {
    return failure_ || (reply_ != nullptr && reply_->isFinished() && reply_->bytesAvailable() == 0);
}

std::optional<Downloader::Failure> HttpsExchange::failure() const {
    if (failure_ || reply_->error() == QNetworkReply::NoError) {
        return failure_;
    }
    if (!distrust_.isEmpty()) {
        return Downloader::Failure{.problem = Downloader::Problem::untrusted, .detail = oneLine(distrust_)};
    }
    return Downloader::Failure{
        .problem = problemOf(reply_->error()), .detail = oneLine(reply_->errorString())};
}

std::string oneLine(const QString& text) {
    constexpr qsizetype longest = 200;
    QString line = text.simplified();
    line.removeIf([](QChar letter) { return !letter.isPrint(); });
    return line.left(longest).toStdString();
}

} // namespace tarnwick
