// The program's place in the user's menu of applications, for a copy of the program that no package has
// installed.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace tarnwick {

/// An entry and an icon in the user's folder of data. Reads the files at each call. Main thread.
class MenuEntry {
public:
    struct Places {
        std::filesystem::path program;                    ///< the one to start
        std::filesystem::path share;                      ///< has the program's entry and icon
        std::filesystem::path userData;                   ///< the user's folder of data
        std::vector<std::filesystem::path> systemFolders; ///< of data
    };

    explicit MenuEntry(Places places) : places_(std::move(places)) {}

    /// Whether the menu has the program, by this entry, another one of the user, or a package's.
    [[nodiscard]] bool isInMenu() const;

    /// The program that the user's entry starts, wherever it is, if `add` has written the entry.
    [[nodiscard]] std::optional<std::filesystem::path> startedProgram() const;

    /// Writes entry and icon, or brings them up to date. Nothing on success, else the reason for the user.
    [[nodiscard]] std::optional<std::string> add() const;

    /// Removes both, if `add` has written the entry.
    [[nodiscard]] std::optional<std::string> remove() const;

private:
    [[nodiscard]] std::filesystem::path userEntry() const;
    [[nodiscard]] std::filesystem::path userIcon() const;
    /// Makes desktops that keep a list of the theme's icons look anew.
    void touchTheme() const;

    Places places_;
};

} // namespace tarnwick
