// The pinger on a simulated network: starting, moving between addresses, stopping. The cases of
// cases/pinger.txt.
#include "core/Pinger/Pinger.h"

#include "tests/core/CaseFile.h"
#include "tests/simulation/VirtualNetwork.h"
#include "tests/simulation/VirtualRunLoop.h"

#include <gtest/gtest.h>
#include <netinet/in.h>

#include <algorithm>
#include <array>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>

namespace tarnwick::simulation {

namespace {

using test::CaseStep;

constexpr std::uint16_t identifier = 0x1234;
constexpr double deadline = 4;

struct NamedAddress {
    std::string_view name;
    std::string_view address;
};

constexpr std::array namedAddresses{
    NamedAddress{"a4", "192.0.2.1"}, NamedAddress{"b4", "192.0.2.2"}, NamedAddress{"a6", "2001:db8::1"},
    NamedAddress{"b6", "2001:db8::2"}};

ResolvedAddress addressNamed(const std::string& name) {
    const auto* const found = std::ranges::find(namedAddresses, name, &NamedAddress::name);
    EXPECT_NE(found, namedAddresses.end()) << "no such address: " << name;
    return VirtualNetwork::address(std::string(found->address));
}

std::string nameOf(const std::string& address) {
    const auto* const found = std::ranges::find(namedAddresses, address, &NamedAddress::address);
    return found != namedAddresses.end() ? std::string(found->name) : address;
}

std::string text(const Pinger::Event& event) {
    if (const auto* started = std::get_if<Pinger::Started>(&event)) {
        return "started " + nameOf(started->address.display);
    }
    if (const auto* switched = std::get_if<Pinger::Switched>(&event)) {
        return "switched " + nameOf(switched->address.display);
    }
    if (const auto* failed = std::get_if<Pinger::Failed>(&event)) {
        return "failed: " + failed->error.message();
    }
    return "reply " + std::to_string(std::get<Pinger::Reply>(event).id);
}

/// Plays one case. The answer to a step is what a question asks for, or the events of a command.
class PingerCases : public testing::TestWithParam<test::Case> {
protected:
    PingerCases() {
        network.setBehavior([](const SentRequest&) { return Answer{.copies = 0}; });
        listen("hears", {});
    }

    std::string play(const CaseStep& step) {
        const auto question = questions.find(step.words.front());
        if (question != questions.end()) {
            return question->second();
        }
        const auto command = commands.find(step.words.front());
        if (command == commands.end()) {
            return "no such step";
        }
        told.clear();
        command->second(step);
        return told;
    }

private:
    void tell(const std::string& what) { told += (told.empty() ? "" : " ") + what; }

    void listen(const std::string& deed, const std::vector<ResolvedAddress>& addresses) {
        if (deed == "none") {
            pinger->onEvent = nullptr;
            return;
        }
        pinger->onEvent = [this, deed, addresses](const Pinger::Event& event) {
            tell(text(event));
            if (deed == "stops") {
                pinger->stop();
            } else if (deed == "destroys") {
                pinger.reset();
            } else if (deed == "restartsOn" && std::holds_alternative<Pinger::Failed>(event)) {
                network.setHost("host", addresses);
                pinger->start();
            }
        };
    }

    static std::vector<ResolvedAddress> addressesFrom(const CaseStep& step, std::size_t word) {
        std::vector<ResolvedAddress> list;
        for (; word < step.words.size(); ++word) {
            list.push_back(addressNamed(step.word(word)));
        }
        return list;
    }

    static std::uint64_t idIn(const CaseStep& step, std::size_t word = 1) {
        return static_cast<std::uint64_t>(step.number(word));
    }

    void lookUp(const Resolution& resolution, double delay = 0) {
        lookup = resolution;
        network.setHost("host", resolution, delay);
    }

    void begin(const CaseStep& step) {
        lookUp(addressesFrom(step, 1));
        pinger->start();
        loop.runPending();
        told.clear();
    }

    void send(std::uint64_t id) {
        if (!pinger->send(id).isSent) {
            tell("not sent");
        }
    }

    void sendAll(const CaseStep& step, double pause) {
        for (std::uint64_t id = idIn(step); id <= idIn(step, 2); ++id) {
            send(id);
            loop.advance(pause);
        }
    }

    void answer(std::uint64_t id, std::int32_t family, std::size_t copies = 1) {
        network.deliverTogether(family, VirtualNetwork::echoReply(id, identifier, family), copies);
    }

    std::string sent() const {
        std::string list;
        for (const SentRequest& request : network.sent()) {
            list += (list.empty() ? "" : " ") + std::to_string(request.id) + " to " + nameOf(request.address);
        }
        return list;
    }

    std::string addresses() const {
        std::string list;
        for (const ResolvedAddress& address : pinger->addresses()) {
            list += (list.empty() ? "" : " ") + nameOf(address.display);
        }
        return list.empty() ? "none" : list;
    }

    VirtualRunLoop loop;
    VirtualNetwork network{loop};
    std::unique_ptr<Pinger> pinger = std::make_unique<Pinger>(loop, network, "host", identifier, deadline);
    Resolution lookup;
    std::string told;

    const std::map<std::string, std::function<void(const CaseStep&)>> commands{
        {"lookup", [this](const CaseStep& step) { lookUp(addressesFrom(step, 1)); }},
        {"lookupFails", [this](const CaseStep&) { lookUp(PingError::resolution("not known")); }},
        {"lookupTakes", [this](const CaseStep& step) { lookUp(lookup, step.number(1)); }},
        {"noSockets",
         [this](const CaseStep& step) {
             const std::string reason = step.word(2) + (step.word(3).empty() ? "" : " " + step.word(3));
             network.setSocketError(step.word(1) == "4" ? AF_INET : AF_INET6, reason);
         }},
        {"begin", [this](const CaseStep& step) { begin(step); }},
        {"start", [this](const CaseStep&) { pinger->start(); }},
        {"stop", [this](const CaseStep&) { pinger->stop(); }},
        {"destroy", [this](const CaseStep&) { pinger.reset(); }},
        {"pass", [this](const CaseStep& step) { loop.advance(step.number(1)); }},
        {"send", [this](const CaseStep& step) { send(idIn(step)); }},
        {"sendAll", [this](const CaseStep& step) { sendAll(step, 0); }},
        {"sendEverySecond", [this](const CaseStep& step) { sendAll(step, 1); }},
        {"failingSend",
         [this](const CaseStep& step) {
             network.setSendFails(true);
             send(idIn(step));
             network.setSendFails(false);
         }},
        {"answer", [this](const CaseStep& step) { answer(idIn(step), AF_INET); }},
        {"answer6", [this](const CaseStep& step) { answer(idIn(step), AF_INET6); }},
        {"answerThrice", [this](const CaseStep& step) { answer(idIn(step), AF_INET, 3); }},
        {"listener", [this](const CaseStep& step) { listen(step.word(1), addressesFrom(step, 2)); }},
    };
    const std::map<std::string, std::function<std::string()>> questions{
        {"running", [this] { return pinger->isRunning() ? "yes" : "no"; }},
        {"address",
         [this] { return pinger->address() != nullptr ? nameOf(pinger->address()->display) : "none"; }},
        {"addresses", [this] { return addresses(); }},
        {"sockets", [this] { return std::to_string(network.openSockets()); }},
        {"sent", [this] { return sent(); }},
        {"lookups", [this] { return std::to_string(network.lookups("host")); }},
    };
};

INSTANTIATE_TEST_SUITE_P(
    Pinger, PingerCases, testing::ValuesIn(test::readCases("pinger.txt")), test::caseName);

TEST_P(PingerCases, Hold) {
    for (const CaseStep& step : GetParam().steps) {
        EXPECT_EQ(play(step), step.expected) << test::place(GetParam(), step);
    }
}

} // namespace

} // namespace tarnwick::simulation
