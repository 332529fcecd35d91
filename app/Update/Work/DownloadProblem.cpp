#include "app/Update/Work/DownloadProblem.h"

namespace tarnwick {

namespace {

const char* meaning(Downloader::Problem problem) {
    switch (problem) {
    case Downloader::Problem::unreachable:
        return "The update server can't be reached";
    case Downloader::Problem::silent:
        return "The update server does not answer";
    case Downloader::Problem::untrusted:
        return "The update server can't prove who it is";
    case Downloader::Problem::notHttps:
        return "The update server leads to an address that is not secure";
    case Downloader::Problem::missing:
        return "The update server does not have the file";
    case Downloader::Problem::unavailable:
        return "The update server can't serve the file now";
    case Downloader::Problem::unusable:
        return "The update server's answer is not the file";
    case Downloader::Problem::tooLarge:
        return "The update server sends more than it should";
    case Downloader::Problem::brokenOff:
        break;
    }
    return "The connection to the update server has ended early";
}

} // namespace

std::string sentence(const Downloader::Failure& failure) {
    const std::string text = meaning(failure.problem);
    return failure.detail.empty() ? text + "." : text + " (" + failure.detail + ").";
}

bool hasAnswered(Downloader::Problem problem) {
    return problem != Downloader::Problem::unreachable && problem != Downloader::Problem::silent;
}

bool mayPass(Downloader::Problem problem) {
    return problem != Downloader::Problem::missing && problem != Downloader::Problem::unusable
           && problem != Downloader::Problem::tooLarge;
}

} // namespace tarnwick
