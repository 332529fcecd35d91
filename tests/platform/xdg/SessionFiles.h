// The folders and files that a session reads when it starts programs, made by the test.
#pragma once

#include "platform/xdg/AutostartEntry.h"
#include "tests/support/Command.h"
#include "tests/support/Files.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/Unprivileged.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace tarnwick::test {

class SessionFiles {
public:
    SessionFiles() {
        install("tarnwick");
        std::filesystem::create_directories(userFolder());
    }

    SessionFiles(const SessionFiles&) = delete;
    SessionFiles& operator=(const SessionFiles&) = delete;

    ~SessionFiles() {
        ordinary_.reset();
        setPermissions(std::filesystem::perms::owner_all);
    }

    /// A program with this name, which leaves its arguments in the file "started".
    void install(const std::string& name) {
        program_ = folder_.path() / "my programs" / name;
        makeProgram(program_, "#!/bin/sh\necho \"$@\" > " + shellQuoted(started()) + "\n");
    }

    static void makeProgram(const std::filesystem::path& file, const std::string& text = "#!/bin/sh\n") {
        writeFile(file, text);
        std::filesystem::permissions(file, std::filesystem::perms::owner_all);
    }

    [[nodiscard]] const std::filesystem::path& program() const { return program_; }

    /// Of the same name, but elsewhere.
    [[nodiscard]] std::filesystem::path anotherCopy() const {
        const auto copy = folder_.path() / "other" / program_.filename();
        makeProgram(copy);
        return copy;
    }

    [[nodiscard]] std::filesystem::path started() const { return folder_.path() / "started"; }

    [[nodiscard]] std::filesystem::path userFolder() const { return folder_.path() / "config"; }

    [[nodiscard]] std::filesystem::path userFile() const {
        return userFolder() / "autostart" / "org.tarnwick.tarnwick.desktop";
    }

    /// The system's folders are "xdg" and "later".
    [[nodiscard]] std::filesystem::path folder(const std::string& name) const {
        return folder_.path() / name;
    }

    [[nodiscard]] std::filesystem::path systemFile(const std::string& name = "xdg") const {
        return folder(name) / "autostart" / "org.tarnwick.tarnwick.desktop";
    }

    /// Of the user's entry.
    [[nodiscard]] std::string text() const { return contentOf(userFile()); }

    /// From now on nothing can be written.
    void protect() {
        setPermissions(std::filesystem::perms::owner_read | std::filesystem::perms::owner_exec);
        ordinary_ = std::make_unique<Unprivileged>();
        ASSERT_TRUE(ordinary_->isOrdinary());
    }

    [[nodiscard]] AutostartEntry::Session session(std::vector<std::string> desktops = {}) const {
        return {
            .userFolder = userFolder(),
            .systemFolders = {folder("xdg"), folder("later")},
            .desktops = std::move(desktops)};
    }

    [[nodiscard]] AutostartEntry entry(std::vector<std::string> desktops = {}) const {
        return {program_, session(std::move(desktops))};
    }

    /// Writes a text in which PROGRAM and COPY stand for the paths of the program and of another copy.
    void store(const std::filesystem::path& file, const std::string& text) const {
        writeFile(file, withPaths(text));
    }

    [[nodiscard]] std::string withPaths(std::string text) const {
        for (const auto& [word, path] : {std::pair("PROGRAM", program_), std::pair("COPY", anotherCopy())}) {
            const std::string_view name = word;
            for (std::size_t at = 0; (at = text.find(name, at)) != std::string::npos;) {
                text.replace(at, name.size(), path);
                at += path.native().size();
            }
        }
        return text;
    }

private:
    void setPermissions(std::filesystem::perms permissions) const {
        for (const auto& folder : {userFile().parent_path(), userFolder()}) {
            std::error_code ignored;
            std::filesystem::permissions(folder, permissions, ignored);
        }
    }

    TemporaryFolder folder_;
    std::filesystem::path program_;
    std::unique_ptr<Unprivileged> ordinary_;
};

// Texts of entries, in which PROGRAM stands for the path of the program.

template<class... Lines>
std::string text(Lines... lines) {
    return ((std::string(lines) + "\n") + ...);
}

template<class... Lines>
std::string application(Lines... lines) {
    return text("[Desktop Entry]", "Type=Application", lines...);
}

inline constexpr auto startsProgram = "Exec=\"PROGRAM\" --from-session";

/// Starts the program.
template<class... Lines>
std::string own(Lines... lines) {
    return application("Name=Tarnwick", startsProgram, lines...);
}

/// As enrolling writes it where there is none.
template<class... Lines>
std::string fresh(Lines... lines) {
    return application(
        "Name=Tarnwick", "Comment=Keeps an eye on your internet connection from the panel",
        "Icon=org.tarnwick.tarnwick", "TryExec=PROGRAM", startsProgram, "Terminal=false", lines...);
}

inline constexpr auto hidden = "Hidden=true";
inline constexpr auto shown = "Hidden=false";
inline constexpr auto gnomeOff = "X-GNOME-Autostart-enabled=false";
inline constexpr auto gnomeOn = "X-GNOME-Autostart-enabled=true";
inline constexpr auto withdrawn = "X-Tarnwick-Withdrawn=true";

} // namespace tarnwick::test
