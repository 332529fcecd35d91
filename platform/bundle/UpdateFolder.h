// The folder beside a bundle in which an update is made ready, and in which the old version waits.
#pragma once

#include "core/Storage/WriterLock.h"
#include "core/Update/BundleInformation.h"
#include "core/Update/ReleaseVersion.h"

#include <filesystem>
#include <optional>
#include <variant>

namespace tarnwick {

/// How far an update has come. It is written before each step, so that after a crash or a power cut the next
/// start knows what to look for.
struct UpdateRecord {
    enum class Phase {
        prepared,   ///< the new version is unpacked in the folder
        exchanging, ///< perhaps it lies in the bundle's place already
        fresh,      ///< it does, and has not been started
        begun,      ///< it runs, or has ended without a word
        ended,      ///< it has ended as it should, before it had run for long enough
    };

    Phase phase = Phase::prepared;
    ReleaseVersion from{};
    ReleaseVersion to{};
};

/// Knows only where things are. A folder that another user could have put there counts as none: what lies in
/// it is started one day. Any thread.
class UpdateFolder {
public:
    /// `bundle` is absolute, without a slash behind it.
    explicit UpdateFolder(std::filesystem::path bundle);

    [[nodiscard]] const std::filesystem::path& bundle() const { return bundle_; }

    [[nodiscard]] const std::filesystem::path& path() const { return path_; }

    /// Whether the folder is there, and only this user can write to it.
    [[nodiscard]] bool isOurs() const;

    /// The download.
    [[nodiscard]] std::filesystem::path archive() const { return path_ / "archive.tar.zst"; }

    [[nodiscard]] std::filesystem::path unpacked() const { return path_ / "unpacked"; }

    /// The new version before the exchange, the old one after it.
    [[nodiscard]] std::filesystem::path other() const { return unpacked() / topFolder; }

    /// Keeps other processes from what is in the folder. Nothing where another process has it, or where there
    /// is no such folder of ours.
    [[nodiscard]] std::optional<WriterLock> lock() const;

    /// None where nothing is under way, or the record can't be read.
    [[nodiscard]] std::optional<UpdateRecord> record() const;
    /// Survives a power cut. False where it can't be written.
    [[nodiscard]] bool write(const UpdateRecord& record) const;

    /// All of it but the lock's file, or with it the folder itself.
    void empty() const;
    void remove() const;

    /// What an archive has in it.
    static constexpr auto topFolder = "Tarnwick.app";

private:
    [[nodiscard]] std::filesystem::path recordFile() const { return path_ / "update.json"; }

    std::filesystem::path bundle_;
    std::filesystem::path path_;
};

/// What the information file of a bundle tells.
[[nodiscard]] std::variant<BundleInformation, DocumentMistake> informationOf(
    const std::filesystem::path& bundle);

/// The version in it. None where the file can't be read.
[[nodiscard]] std::optional<ReleaseVersion> versionOf(const std::filesystem::path& bundle);

} // namespace tarnwick
