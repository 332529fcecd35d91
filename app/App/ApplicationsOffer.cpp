#include "app/App/ApplicationsOffer.h"

#include "core/Storage/FileStore.h"

#include <system_error>
#include <utility>

namespace tarnwick {

ApplicationsOffer::ApplicationsOffer(Needs needs)
    : needs_(std::move(needs)), login_(needs_.program, needs_.session) {
    needs_.settings.answerApplications = [this](bool addsIt) { answer(addsIt); };
    needs_.settings.uninstall = [this] { askToRemove(); };
}

void ApplicationsOffer::start() {
    const auto started = needs_.menu.startedProgram();
    std::error_code error;
    if (started && (*started == needs_.program || !std::filesystem::exists(*started, error))) {
        // What can't be written stays as it is.
        static_cast<void>(needs_.menu.add());
        static_cast<void>(login_.follow(*started));
    } else if (!needs_.menu.isInMenu() && !std::filesystem::exists(needs_.answered, error)) {
        needs_.monitor.setNotice(applicationsNotice());
    }
    show(std::nullopt);
}

void ApplicationsOffer::answer(bool addsIt) {
    const auto problem = addsIt ? add() : std::nullopt;
    if (problem) {
        needs_.monitor.setNotice(applicationsNotice(*problem));
    } else {
        needs_.monitor.clearNotice(Notice::Kind::offersApplications);
        remember();
    }
    show(problem);
}

void ApplicationsOffer::askToRemove() {
    const Question question{
        .title = "Uninstall Tarnwick",
        .text = "Are you sure you want to take Tarnwick out of your applications?",
        .note = "Its entry in the menu, its icon and its start at login are removed. Settings and statistics "
                "stay. The program itself is the folder “"
                + needs_.bundle.string() + "”, which you can delete once you have quit Tarnwick.",
        .confirm = "Uninstall",
        .cancel = "Cancel",
    };
    needs_.ask(question, [this](bool isSure) {
        if (isSure) {
            show(remove());
        }
    });
}

std::optional<std::string> ApplicationsOffer::add() {
    auto problem = needs_.menu.add();
    return problem ? problem : login_.enroll();
}

std::optional<std::string> ApplicationsOffer::remove() {
    needs_.forgetUpdates();
    auto problem = login_.withdraw();
    return problem ? problem : needs_.menu.remove();
}

void ApplicationsOffer::show(const std::optional<std::string>& problem) {
    needs_.settings.setApplications(
        {.haveIt = needs_.menu.startedProgram() == needs_.program, .problem = problem.value_or("")});
    needs_.settings.launchAtLogin().refresh();
}

void ApplicationsOffer::remember() const {
    // Where it can't be written the next start offers again.
    static_cast<void>(FileStore::replace(needs_.answered, "", FileStore::Durability::crash));
}

} // namespace tarnwick
