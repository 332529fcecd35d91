#include "app/Update/Work/FeedCheck.h"

#include "app/Update/Work/DownloadProblem.h"
#include "core/Update/Minisign.h"

#include <utility>

namespace tarnwick {

namespace {

UpdateWork::Distrust distrustBy(Minisign::Fault fault) {
    const bool mayBeHalfOfTwo = fault == Minisign::Fault::wrongContent || fault == Minisign::Fault::malformed;
    return mayBeHalfOfTwo ? UpdateWork::Distrust::likely : UpdateWork::Distrust::certain;
}

} // namespace

FeedCheck::FeedCheck(
    Downloader& downloader, UpdateSource source, std::string userAgent,
    std::function<void(const Result&)> ended)
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
                     end(UpdateWork::CheckFailure{
                         .text = sentence(*failure), .hasAnswered = hasAnswered(failure->problem)});
                     return;
                 }
                 const auto step = next; // it may replace this transfer
                 step();
             }});
}

void FeedCheck::verify() {
    const auto verified = Minisign::verify(feed_, signature_, source_.publicKeys);
    if (const auto* const fault = std::get_if<Minisign::Fault>(&verified)) {
        end(UpdateWork::CheckFailure{
            .text = Minisign::sentence(*fault, "The update information"),
            .hasAnswered = true,
            .distrust = distrustBy(*fault)});
        return;
    }
    end(UpdateWork::VerifiedFeed{.text = feed_});
}

void FeedCheck::end(const Result& result) {
    const auto ended = std::exchange(ended_, nullptr);
    ended(result); // it may destroy this
}

} // namespace tarnwick
