#include "core/Update/UpdateDecision.h"

#include "core/Update/BundleInformation.h"

#include <algorithm>
#include <utility>

namespace tarnwick {

namespace {

using Reason = RefusedUpdate::Reason;

std::optional<Reason> distrustOf(const Feed& feed, const UpdateCircumstances& circumstances) {
    if (feed.signedAt > circumstances.now + clockTolerance) {
        return Reason::signedInFuture;
    }
    if (circumstances.lastSeen && feed.signedAt < *circumstances.lastSeen) {
        return Reason::replayed;
    }
    if (feed.signedAt < circumstances.now - longestFeedAge) {
        return Reason::stale;
    }
    return std::nullopt;
}

bool isWanted(const Release& release, const UpdateCircumstances& circumstances) {
    if (release.version <= circumstances.running
        || (release.channel != stableChannel && release.channel != circumstances.channel)) {
        return false;
    }
    const bool isSkipped = circumstances.skipped && release.version <= *circumstances.skipped;
    return circumstances.isAskedFor || (!isSkipped && release.version != circumstances.rolledBack);
}

std::variant<FoundUpdate, RefusedUpdate> fitted(
    const Release& release, const UpdateCircumstances& circumstances) {
    const auto archive = std::ranges::find(release.archives, circumstances.machine, &ReleaseArchive::machine);
    if (archive == release.archives.end()) {
        return RefusedUpdate{.reason = Reason::noArchive, .version = release.version};
    }
    if (circumstances.system < release.minimumSystem) {
        return RefusedUpdate{
            .reason = Reason::systemTooOld, .version = release.version, .needed = release.minimumSystem};
    }
    return FoundUpdate{.release = release, .archive = *archive};
}

} // namespace

UpdateDecision decideOnUpdate(const Feed& feed, const UpdateCircumstances& circumstances) {
    if (const auto reason = distrustOf(feed, circumstances)) {
        return RefusedUpdate{.reason = *reason};
    }
    std::optional<FoundUpdate> found;
    std::optional<RefusedUpdate> refused;
    for (const Release& release : feed.releases) {
        if (!isWanted(release, circumstances)) {
            continue;
        }
        const auto one = fitted(release, circumstances);
        if (const auto* const fits = std::get_if<FoundUpdate>(&one)) {
            if (!found || found->release.version < release.version) {
                found = *fits;
            }
        } else if (!refused || refused->version < release.version) {
            refused = std::get<RefusedUpdate>(one);
        }
    }
    if (found) {
        return *std::move(found);
    }
    return refused ? UpdateDecision(*refused) : UpdateDecision(UpToDate{});
}

bool isTrusted(const UpdateDecision& decision) {
    const auto* const refused = std::get_if<RefusedUpdate>(&decision);
    return refused == nullptr || refused->reason == Reason::noArchive
           || refused->reason == Reason::systemTooOld;
}

std::string sentence(const RefusedUpdate& refused) {
    switch (refused.reason) {
    case Reason::signedInFuture:
        break;
    case Reason::replayed:
        return "The update information is older than what was received before, so it is not trusted.";
    case Reason::stale:
        return "The update information is more than 90 days old, so it is not trusted. This machine's date "
               "may "
               "be wrong.";
    case Reason::noArchive:
        return "Tarnwick " + refused.version.text() + " is not made for this machine.";
    case Reason::systemTooOld:
        return "Tarnwick " + refused.version.text() + " needs Linux " + refused.needed.text() + " or newer.";
    }
    return "The update information is dated in the future. Check this machine's date and time.";
}

} // namespace tarnwick
