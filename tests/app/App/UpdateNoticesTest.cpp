// What the notices say of updates.
#include "app/App/UpdateNotices.h"

#include "tests/app/Update/UpdateWorld.h"
#include "tests/app/WatchedMonitor.h"

#include <gmock/gmock.h>

namespace tarnwick::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class UpdateNoticesTest : public UpdateWorld {
protected:
    [[nodiscard]] Notices notices() const {
        Notices all = watched_.monitor.reading().notices;
        std::erase_if(all, [](const Notice& notice) { return notice.kind == Notice::Kind::notRecorded; });
        return all;
    }

    WatchedMonitor watched_;
    UpdateNotices notices_{loop, watched_.monitor, engine()};
};

TEST_F(UpdateNoticesTest, NothingIsSaidAtFirst) {
    EXPECT_THAT(notices(), IsEmpty());
}

TEST_F(UpdateNoticesTest, AFeedThatIsNotTrustedIsToldOfUntilOneIs) {
    publish("1.1", 91);
    engine().start();
    loop.advance(day);
    EXPECT_THAT(
        notices(), ElementsAre(Notice{
                       .kind = Notice::Kind::distrustedUpdates,
                       .text = "The update information is more than 90 days old, so it is not trusted. This "
                               "machine's date may be wrong."}));

    publish("1.0");
    loop.advance(1.1 * day);

    EXPECT_THAT(notices(), IsEmpty());
}

TEST_F(UpdateNoticesTest, TheLatestReasonIsTold) {
    publish("1.1", 91);
    engine().start();
    loop.advance(day);

    publish("1.1", 0, MinisignKey(3));
    loop.advance(day);

    EXPECT_THAT(
        notices(), ElementsAre(distrustNotice("The update information is signed with an unknown key, so it "
                                              "is not trusted.")));
}

TEST_F(UpdateNoticesTest, AVersionThatIsReadyIsToldOf) {
    check();
    engine().install();
    loop.advance(10);

    EXPECT_THAT(notices(), ElementsAre(newVersionNotice()));
}

} // namespace
} // namespace tarnwick::test
