// README's table of settings is the table of the program.
#include "app/Preferences/SettingTable.h"

#include "tests/support/Files.h"

#include <gtest/gtest.h>

#include <sstream>

namespace tarnwick {

namespace {

constexpr auto heading = "| Setting | Default | Meaning |\n|---|---|---|\n";

/// As JSON has it.
std::string inSettingsFile(const SettingRow& row) {
    const bool isText = std::holds_alternative<std::string_view>(row.preset);
    return isText ? "\"" + defaultText(row) + "\"" : defaultText(row);
}

std::string tableOfTheProgram() {
    std::ostringstream rows;
    for (const SettingRow& row : settingTable) {
        if (isForUsers(row)) {
            rows << "| `" << row.key << "` | `" << inSettingsFile(row) << "` | " << description(row)
                 << " |\n";
        }
    }
    return rows.str();
}

} // namespace

TEST(Readme, ListsEverySettingWithItsDefaultAndMeaning) {
    const std::string readme = test::contentOf(TARNWICK_README);
    const std::size_t begin = readme.find(heading);
    ASSERT_NE(begin, std::string::npos);
    const std::size_t rows = begin + std::string(heading).size();

    EXPECT_EQ(readme.substr(rows, readme.find("\n\n", rows) + 1 - rows), tableOfTheProgram());
}

} // namespace tarnwick
