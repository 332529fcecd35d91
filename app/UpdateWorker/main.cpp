// tarnwick-update: does an update's work for the desktop program of the same bundle. Not for people.
#include "app/Update/UserAgent.h"
#include "app/Update/Work/DirectUpdateWork.h"
#include "app/Update/Work/WorkMessages.h"
#include "core/FileDescriptor.h"
#include "core/Update/BundleInformation.h"
#include "platform/bundle/BundleStaging.h"
#include "platform/https/HttpsDownloader.h"
#include "platform/linux/OwnBundle.h"
#include "platform/linux/SystemName.h"
#include "platform/loop/EpollRunLoop.h"
#include "platform/qt/QtLoopHost.h"

#include <QCoreApplication>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string>
#include <string_view>
#include <unistd.h>
#include <utility>

namespace {

using namespace tarnwick;

/// How the updater calls itself to its server.
constexpr auto frameworkName = "TarnwickUpdate";
constexpr auto frameworkVersion = "1";

void say(const WorkMessage& message) {
    std::puts(encoded(message).c_str());
    std::fflush(stdout);
}

std::string ownUserAgent(const ReleaseVersion& version) {
    const SystemName system = systemName();
    return userAgent(
        {.applicationVersion = version.text(),
         .framework = frameworkName,
         .frameworkVersion = frameworkVersion,
         .system = system.name,
         .systemVersion = system.release});
}

/// The archive of that version for this machine.
std::optional<FoundUpdate> updateIn(const DownloadOrder& order) {
    const auto parsed = parseFeed(order.feed);
    const auto* const feed = std::get_if<Feed>(&parsed);
    if (feed == nullptr) {
        return std::nullopt;
    }
    const std::string machine = systemName().machine;
    for (const Release& release : feed->releases) {
        const auto archive = std::ranges::find(release.archives, machine, &ReleaseArchive::machine);
        if (release.version == order.version && archive != release.archives.end()) {
            return FoundUpdate{.release = release, .archive = *archive};
        }
    }
    return std::nullopt;
}

/// What the desktop program writes; when it ends, so does this.
class Orders {
public:
    Orders(RunLoop& loop, std::function<void(const std::string&)> take)
        : take_(std::move(take)), watch_(loop.watchReadable(STDIN_FILENO, [this] { read(); })) {}

private:
    void read() {
        std::array<char, 65536> buffer{};
        const ssize_t size = ::read(STDIN_FILENO, buffer.data(), buffer.size());
        if (size <= 0) {
            std::_Exit(EXIT_FAILURE);
        }
        text_.append(buffer.data(), static_cast<std::size_t>(size));
        if (const std::size_t end = text_.find('\n'); end != std::string::npos && take_) {
            std::exchange(take_, nullptr)(text_.substr(0, end));
        }
    }

    std::function<void(const std::string&)> take_;
    std::string text_;
    RunLoop::Handle watch_;
};

class Worker {
public:
    Worker(
        RunLoop& loop, const std::filesystem::path& bundle, const ReleaseVersion& running,
        const UpdateSource& source)
        : running_(running),
          downloader_(loop),
          staging_(loop, UpdateFolder(bundle), running),
          work_(downloader_, staging_, source, ownUserAgent(running)) {}

    void check() {
        underWay_ = work_.check([](const UpdateWork::CheckResult& result) {
            say(result);
            QCoreApplication::exit();
        });
    }

    void download(const std::string& line) {
        const auto order = decodedOrder(line);
        const auto update = order ? updateIn(*order) : std::nullopt;
        if (!update) {
            fail("The update information can't be read.");
            return;
        }
        // The bundle may have been replaced by hand since the program was started.
        if (order->version <= running_) {
            fail("Tarnwick's folder has version " + running_.text() + " by now. Restart Tarnwick to use it.");
            return;
        }
        underWay_ = work_.download(*update, [](const UpdateWork::News& news) {
            std::visit([](const auto& each) { say(each); }, news);
            if (std::holds_alternative<UpdateWork::Ended>(news)) {
                QCoreApplication::exit();
            }
        });
    }

private:
    static void fail(const std::string& problem) {
        say(UpdateWork::Ended{.problem = problem});
        QCoreApplication::exit(EXIT_FAILURE);
    }

    ReleaseVersion running_;
    HttpsDownloader downloader_;
    BundleStaging staging_;
    DirectUpdateWork work_;
    RunLoop::Handle underWay_;
};

int run(int argc, char** argv) {
    const std::string_view what = argc == 2 ? argv[1] : "";
    const auto bundle = ownBundle();
    const auto read = informationOf(bundle.value_or(""));
    const auto* const information = std::get_if<BundleInformation>(&read);
    if ((what != "check" && what != "download") || !bundle || information == nullptr
        || !information->source) {
        std::fputs("tarnwick-update: Tarnwick starts this program in its bundle, when it updates\n", stderr);
        return EXIT_FAILURE;
    }
    const QCoreApplication application(argc, argv);
    EpollRunLoop loop;
    const QtLoopHost host(loop);
    Worker worker(loop, *bundle, information->version, *information->source);
    const Orders orders(loop, [&worker, what](const std::string& line) {
        if (what == "download") {
            worker.download(line);
        }
    });
    if (what == "check") {
        worker.check();
    }
    return QCoreApplication::exec();
}

} // namespace

int main(int argc, char* argv[]) {
    try {
        return run(argc, argv);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "tarnwick-update: %s\n", error.what());
        return EXIT_FAILURE;
    }
}
