#include "app/Update/Work/ArchiveDownload.h"

#include "app/Update/Work/DownloadProblem.h"

#include <utility>

namespace tarnwick {

ArchiveDownload::ArchiveDownload(Needs needs, FoundUpdate update, Tell tell)
    : needs_(std::move(needs)), update_(std::move(update)), tell_(std::move(tell)) {
    fetchSignature();
}

void ArchiveDownload::fetchSignature() {
    transfer_ = needs_.downloader.fetch(
        {.address = update_.archive.address + signatureSuffix,
         .userAgent = needs_.userAgent,
         .sizeLimit = Minisign::largestSignature},
        {.received =
             [this](std::string_view part) {
                 signature_ += part;
                 return true;
             },
         .ended =
             [this](const std::optional<Downloader::Failure>& failure) {
                 if (failure) {
                     end({.problem = sentence(*failure), .mayPass = mayPass(failure->problem)});
                 } else {
                     fetchArchive();
                 }
             }});
}

void ArchiveDownload::fetchArchive() {
    if (const auto problem = needs_.place.begin()) {
        end({.problem = problem});
        return;
    }
    transfer_ = needs_.downloader.fetch(
        {.address = update_.archive.address,
         .userAgent = needs_.userAgent,
         .sizeLimit = update_.archive.size},
        {.received = [this](std::string_view part) { return keep(part); },
         .ended =
             [this](const std::optional<Downloader::Failure>& failure) {
                 if (failure) {
                     end({.problem = sentence(*failure), .mayPass = mayPass(failure->problem)});
                 } else {
                     prepare();
                 }
             }});
}

bool ArchiveDownload::keep(std::string_view part) {
    if (auto problem = needs_.place.add(part)) {
        end({.problem = problem});
        return false;
    }
    received_ += part.size();
    tell_(UpdateWork::Received{.bytes = received_});
    return true;
}

void ArchiveDownload::prepare() {
    tell_(UpdateWork::Complete{});
    needs_.place.prepare(
        {.archive = update_.archive,
         .version = update_.release.version,
         .signature = signature_,
         .keys = needs_.keys},
        lifeline_.guarded([this](const UpdatePlace::Problem& problem) { end({.problem = problem}); }));
}

void ArchiveDownload::end(const UpdateWork::Ended& ended) {
    const auto tell = std::exchange(tell_, nullptr);
    tell(ended); // it may destroy this
}

} // namespace tarnwick
