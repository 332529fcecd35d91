#include "app/Update/FeedCheck.h"

#include "app/Update/DownloadProblem.h"
#include "core/Update/Minisign.h"

#include <utility>

namespace tarnwick {

FeedCheck::FeedCheck(
    Downloader& downloader, UpdateSource source, std::string userAgent, std::function<void(Result)> ended)
    : downloader_(downloader),
      source_(std::move(source)),
      userAgent_(std::move(userAgent)),
      ended_(std::move(ended)) {
    fetch(source_.feedAddress, largestFeed, feed_, [this] {
        fetch(source_.feedAddress + signatureSuffix, Minisign::largestSignature, signature_, [this] {
            verify();
        });
    });
}

void FeedCheck::fetch(std::string address, std::size_t limit, std::string& into, std::function<void()> then) {
    transfer_ = downloader_.fetch(
        {.address = std::move(address), .userAgent = userAgent_, .sizeLimit = limit},
        {.received =
             [&into](std::string_view part) {
                 into += part;
                 return true;
             },
         .ended =
             [this, next = std::move(then)](const std::optional<Downloader::Failure>& failure) {
                 if (failure) {
                     end(Failure{.text = sentence(*failure), .hasAnswered = hasAnswered(failure->problem)});
                     return;
                 }
                 const auto step = next; // it may replace this transfer
                 step();
             }});
}

void FeedCheck::verify() {
    const auto verified = Minisign::verify(feed_, signature_, source_.publicKeys);
    if (const auto* const fault = std::get_if<Minisign::Fault>(&verified)) {
        end(Failure{.text = Minisign::sentence(*fault, "The update information"), .hasAnswered = true});
        return;
    }
    auto parsed = parseFeed(feed_);
    if (auto* const feed = std::get_if<Feed>(&parsed)) {
        end(std::move(*feed));
        return;
    }
    end(Failure{
        .text = "The update information can't be read: " + std::get<DocumentMistake>(parsed).text + ".",
        .hasAnswered = true});
}

void FeedCheck::end(Result result) {
    const auto ended = std::exchange(ended_, nullptr);
    ended(std::move(result)); // it may destroy this
}

} // namespace tarnwick
