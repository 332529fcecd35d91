#include "app/App/UpdateProcess.h"

#include "app/Update/Work/WorkMessages.h"
#include "core/Lifeline.h"
#include "platform/linux/FolderExchange.h"

#include <QProcess>

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <system_error>
#include <type_traits>
#include <utility>

namespace tarnwick {

namespace {

/// What is longer is no message of ours: a feed has at most a mebibyte, and each of its bytes may need six.
constexpr qsizetype longestLine = qsizetype{8} << 20;

/// After its handle nothing of the process is left that could still write.
struct EndedProcess {
    void operator()(QProcess* process) const {
        process->disconnect();
        if (process->state() != QProcess::NotRunning) {
            process->kill();
            process->waitForFinished(5000);
        }
        process->deleteLater(); // one of its own signals may be what ends it
    }
};

class Run final : public RunLoop::Registration {
public:
    struct Receiver {
        std::function<void(const WorkMessage&)> take;
        /// It has ended, with no more messages. Why, where it was not started.
        std::function<void(const std::optional<std::string>& obstacle)> lost;
    };

    Run(const UpdateFolder& folder, const QString& what, const std::string& order, Receiver receiver)
        : receiver_(std::move(receiver)),
          program_(folder.bundle() / "bin" / "tarnwick-update"),
          process_(std::make_unique<QProcess>().release()) {
        process_->setProcessChannelMode(QProcess::ForwardedErrorChannel);
        QObject::connect(process_.get(), &QProcess::readyReadStandardOutput, [this] { read(); });
        // Queued: a program that can't be started is told of inside `start`. What is in the queue comes even
        // after the end of the connection.
        const auto lose = lifeline_.guarded([this](const auto&... /*how*/) { end(); });
        QObject::connect(process_.get(), &QProcess::finished, process_.get(), lose, Qt::QueuedConnection);
        QObject::connect(
            process_.get(), &QProcess::errorOccurred, process_.get(), lose, Qt::QueuedConnection);
        process_->start(QString::fromStdString(program_.string()), {what});
        process_->write((order + "\n").c_str());
    }

private:
    void read() {
        const auto watch = lifeline_.watch();
        while (!watch.hasEnded() && process_->canReadLine()) {
            const QByteArray line = process_->readLine(longestLine);
            const auto message = decodedMessage(line.trimmed().toStdString());
            const auto take = receiver_.take; // a copy: it may end this
            if (message) {
                take(*message);
            }
        }
    }

    void end() {
        const auto watch = lifeline_.watch();
        read();
        if (!watch.hasEnded() && process_->state() == QProcess::NotRunning && receiver_.lost) {
            const auto lost = std::exchange(receiver_.lost, nullptr); // once; it may end this
            lost(obstacle());
        }
    }

    [[nodiscard]] std::optional<std::string> obstacle() const {
        if (process_->error() != QProcess::FailedToStart) {
            return std::nullopt;
        }
        std::error_code error;
        return std::filesystem::exists(program_, error)
                   ? "The updater can't be started (" + process_->errorString().toStdString() + ")."
                   : sentence(ExchangeFailure(ExchangeObstacle::missing));
    }

    Receiver receiver_;
    std::filesystem::path program_;
    std::unique_ptr<QProcess, EndedProcess> process_;
    Lifeline lifeline_;
};

constexpr auto lostText = "The updater has ended unexpectedly.";

} // namespace

UpdateProcess::UpdateProcess(PreparedUpdate& prepared) : prepared_(prepared) {
}

RunLoop::Handle UpdateProcess::check(std::function<void(const CheckResult&)> ended) {
    const auto take = [this, ended](const WorkMessage& message) {
        if (const auto* const result = std::get_if<CheckResult>(&message)) {
            if (const auto* const feed = std::get_if<VerifiedFeed>(result)) {
                feed_ = feed->text;
            }
            const auto tell = ended; // it may end the process, and this with it
            tell(CheckResult(*result));
        }
    };
    return std::make_unique<Run>(
        prepared_.folder(), QStringLiteral("check"), "",
        Run::Receiver{.take = take, .lost = [ended](const Problem& obstacle) {
                          const auto tell = ended;
                          tell(CheckFailure{.text = obstacle.value_or(lostText), .hasAnswered = true});
                      }});
}

UpdateWork::Problem UpdateProcess::obstacle() {
    if (const auto failure = obstacleToExchange(prepared_.folder().bundle())) {
        return sentence(*failure);
    }
    // The version before lies where a download would.
    const auto record = prepared_.folder().record();
    return record && record->phase == UpdateRecord::Phase::begun
               ? Problem(
                     "Version " + record->to.text()
                     + " has been installed only just now. Please try again in a minute.")
               : std::nullopt;
}

RunLoop::Handle UpdateProcess::download(const FoundUpdate& update, std::function<void(const News&)> tell) {
    const auto last = std::make_shared<std::optional<Ended>>();
    const auto take = [tell, last](const WorkMessage& message) {
        if (const auto* const ended = std::get_if<Ended>(&message)) {
            *last = *ended;
            return;
        }
        const auto pass = tell; // it may end the process, and this with it
        std::visit(
            [&pass]<class Part>(const Part& part) {
                if constexpr (!std::is_same_v<Part, CheckResult>) {
                    pass(News(part));
                }
            },
            message);
    };
    // What it has made ready is in its hands until it has ended.
    const auto lost = [this, tell, last](const Problem& obstacle) {
        const auto pass = tell;
        if (!*last) {
            pass(Ended{.problem = obstacle.value_or(lostText)});
        } else {
            pass(Ended{.problem = (*last)->problem ? (*last)->problem : prepared_.hold()});
        }
    };
    return std::make_unique<Run>(
        prepared_.folder(), QStringLiteral("download"),
        encoded(DownloadOrder{.feed = feed_, .version = update.release.version}),
        Run::Receiver{.take = take, .lost = lost});
}

void UpdateProcess::discard() {
    prepared_.discard();
}

} // namespace tarnwick
