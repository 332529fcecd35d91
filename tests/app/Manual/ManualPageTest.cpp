// What a manual page gets from a program's table. The shells' completion is tried in the shells.
#include "app/Manual/ManualPage.h"

#include <array>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tarnwick {

namespace {

using testing::HasSubstr;

constexpr std::array<ProgramOption, 2> pageOptions{{
    {"file_name", "VALUE", "takes *something*", 300},
    {"quiet", nullptr, "takes nothing", 301, 'q'},
}};
constexpr std::array<const char*, 2> pageSynopsis{"[--quiet] [FILE]...", "--file_name VALUE"};

constexpr ProgramTable pageTable{
    .name = "sample",
    .purpose = "shows a table",
    .synopsis = pageSynopsis,
    .summary = "",
    .operand = {.name = "FILE", .meaning = "what to read"},
    .options = pageOptions,
    .ending = "",
};

} // namespace

TEST(ManualPage, KeepsWhatIsNoMark) {
    EXPECT_EQ(manualPage(pageTable, "# NAME\n\nx@y\n"), "# NAME\n\nx@y\n");
}

TEST(ManualPage, NamesThePurpose) {
    EXPECT_EQ(manualPage(pageTable, "sample - @PURPOSE@\n"), "sample - shows a table\n");
}

TEST(ManualPage, SetsOptionsInBoldAndWordsToReplaceUnderlined) {
    EXPECT_EQ(
        manualPage(pageTable, "@SYNOPSIS@\n"), "*sample* \\[*--quiet*] \\[_FILE_]...++\n"
                                               "*sample* *--file\\_name* _VALUE_\n");
}

TEST(ManualPage, DescribesTheOperandAndEachOption) {
    EXPECT_EQ(
        manualPage(pageTable, "@OPTIONS@\n"), "_FILE_\n\twhat to read\n"
                                              "\n"
                                              "*--file\\_name* _VALUE_\n\ttakes \\*something\\*\n"
                                              "\n"
                                              "*-q*, *--quiet*\n\ttakes nothing\n");
}

TEST(ManualPage, DescribesTheOptionsOfItsOtherCommandLine) {
    ProgramTable program = pageTable;
    program.operand = {};
    program.command = {.word = "other", .table = []() -> const ProgramTable& { return pageTable; }};

    EXPECT_EQ(manualPage(program, "@COMMAND@\n"), manualPage(pageTable, "@OPTIONS@\n"));
    EXPECT_EQ(manualPage(pageTable, "@COMMAND@\n"), "@COMMAND@\n");
}

TEST(ManualPage, ListsTheSettingsWithTheirDefaults) {
    const std::string page = manualPage(pageTable, "@SETTINGS@\n");

    EXPECT_THAT(
        page, HasSubstr("*PingInterval*=1\n\ttime between pings: a whole number of seconds, 1 to 60\n"));
    EXPECT_THAT(page, testing::Not(HasSubstr("ShowPacketLossText")));
}

} // namespace tarnwick
