// Tells what a test says.
#pragma once

#include "core/RunLoop.h"
#include "platform/ports/LinkInspector.h"

#include <utility>

namespace tarnwick::simulation {

class FakeLinkInspector final : public LinkInspector {
public:
    explicit FakeLinkInspector(RunLoop& loop) : loop_(loop) {}

    void inspect(const std::optional<ResolvedAddress>& /*to*/, Answer answer) override {
        ++asked;
        loop_.post([answer = std::move(answer), told = state] { answer(told); });
    }

    std::optional<LinkState> state =
        LinkState{.link = {.interface = "eth0", .kind = LinkEvidence::Kind::wired}};
    int asked = 0;

private:
    RunLoop& loop_;
};

} // namespace tarnwick::simulation
