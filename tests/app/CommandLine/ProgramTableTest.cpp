// The table of a program's options: what comes from it.
#include "app/CommandLine/ProgramTable.h"

#include "app/CommandLine/SettingArgument.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tarnwick {

namespace {

constexpr std::array<ProgramOption, 2> sampleOptions{{
    {"long-name", "VALUE", "takes something", 300},
    {"quiet", nullptr, "takes nothing", 301, 'q'},
}};
constexpr std::array<const char*, 2> sampleSynopsis{"[--quiet] [FILE]", "--long-name VALUE"};

constexpr ProgramTable sampleTable{
    .name = "sample",
    .purpose = "shows a table",
    .synopsis = sampleSynopsis,
    .summary = "Shows what comes\nfrom a table.",
    .operand = {.name = "FILE", .meaning = "what to read"},
    .options = sampleOptions,
    .ending = "It ends.",
};

} // namespace

TEST(ProgramTable, TheParserGetsARowForEachOptionAndOneThatEndsThem) {
    const auto rows = parserOptions(sampleOptions);

    ASSERT_EQ(rows.size(), 3U);
    EXPECT_STREQ(rows[0].name, "long-name");
    EXPECT_EQ(rows[0].has_arg, required_argument);
    EXPECT_EQ(rows[0].val, 300);
    EXPECT_STREQ(rows[1].name, "quiet");
    EXPECT_EQ(rows[1].has_arg, no_argument);
    EXPECT_EQ(rows[2].name, nullptr);
}

TEST(ProgramTable, TheHelpHasTwoColumns) {
    EXPECT_EQ(
        usageOf(sampleTable), "usage: sample [--quiet] [FILE]\n"
                              "       sample --long-name VALUE\n"
                              "\n"
                              "Shows what comes\n"
                              "from a table.\n"
                              "\n"
                              "  FILE               what to read\n"
                              "  --long-name VALUE  takes something\n"
                              "  -q, --quiet        takes nothing\n"
                              "\n" + settingsUsage()
                                  + "\nIt ends.\n");
}

} // namespace tarnwick
