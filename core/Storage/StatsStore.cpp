#include "core/Storage/StatsStore.h"

#include "core/Storage/JsonObject.h"
#include "core/Storage/UserFolders.h"

#include <algorithm>
#include <cstddef>
#include <limits>
#include <vector>

namespace tarnwick {

namespace {

using Json = nlohmann::json;

/// Larger or negative counts are damage: counting on from them could overflow or divide by zero.
constexpr std::int64_t largestCount = std::numeric_limits<std::int64_t>::max() / 2;

std::optional<std::int64_t> count(const Json& counter, const char* key) {
    const auto found = counter.find(key);
    if (found == counter.end() || !found->is_number_integer()) {
        return std::nullopt;
    }
    // The parser gives every number without a minus sign as unsigned.
    if (!found->is_number_unsigned() || found->get<std::uint64_t>() > std::uint64_t{largestCount}) {
        return std::nullopt;
    }
    return found->get<std::int64_t>();
}

std::optional<double> milliseconds(const Json& counter, const char* key) {
    const auto found = counter.find(key);
    if (found == counter.end() || !found->is_number()) {
        return std::nullopt;
    }
    return found->get<double>();
}

std::optional<StatCounter> decodeCounter(const Json& counter) {
    if (!counter.is_object()) {
        return std::nullopt;
    }
    const auto sent = count(counter, "sent");
    const auto replied = count(counter, "replied");
    const auto lost = count(counter, "lost");
    const auto averageMs = milliseconds(counter, "averageMs");
    const auto fastestMs = milliseconds(counter, "fastestMs");
    const auto slowestMs = milliseconds(counter, "slowestMs");
    if (!sent || !replied || !lost || !averageMs || !fastestMs || !slowestMs) {
        return std::nullopt;
    }
    return StatCounter{*sent, *replied, *lost, *averageMs, *fastestMs, *slowestMs};
}

std::optional<StatsByHost> decode(const std::string& text) {
    const std::optional<Json> file = parseJsonObject(text);
    if (!file) {
        return std::nullopt;
    }
    StatsByHost stats;
    for (const auto& [host, value] : file->items()) {
        const std::optional<StatCounter> counter = decodeCounter(value);
        if (!counter) {
            return std::nullopt;
        }
        stats.emplace(host, *counter);
    }
    return stats;
}

/// A missing file holds no figures.
std::optional<StatsByHost> figuresIn(const std::filesystem::path& file) {
    std::error_code error;
    const std::optional<std::string> text = FileStore::read(file, error);
    if (error == std::errc::no_such_file_or_directory) {
        return StatsByHost{};
    }
    return text ? decode(*text) : std::nullopt;
}

std::string encode(const StatsByHost& stats) {
    Json file = Json::object();
    for (const auto& [host, counter] : stats) {
        if (counter.isEmpty()) {
            continue;
        }
        file[host] = {
            {"sent", counter.sent},           {"replied", counter.replied},
            {"lost", counter.lost},           {"averageMs", counter.averageMs},
            {"fastestMs", counter.fastestMs}, {"slowestMs", counter.slowestMs},
        };
    }
    // A host that is not valid UTF-8 must not prevent saving the others.
    return file.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

} // namespace

std::filesystem::path StatsStore::supportDirectory() {
    return UserFolders::data();
}

StatsStore StatsStore::defaultStore() {
    return {supportDirectory() / "Tarnwick" / "stats.json"};
}

std::optional<StatsByHost> StatsStore::read() const {
    return figuresIn(url);
}

StatsByHost StatsStore::load() const {
    auto present = read();
    return present ? *std::move(present) : flushedFigures();
}

StatsByHost StatsStore::flushedFigures() const {
    return figuresIn(FileStore::flushedName(url)).value_or(StatsByHost{});
}

std::error_code StatsStore::save(const StatsByHost& stats, FileStore::Durability durability) const {
    const std::string text = encode(stats);
    return durability == FileStore::Durability::powerCut ? FileStore::replaceAndKeep(url, text)
                                                         : FileStore::replace(url, text, durability);
}

std::size_t dropLeastPinged(StatsByHost& stats, const std::string& kept) {
    if (stats.size() <= StatsStore::mostHosts) {
        return 0;
    }
    std::vector<StatsByHost::const_iterator> hosts;
    for (auto host = stats.cbegin(); host != stats.cend(); ++host) {
        if (host->first != kept) {
            hosts.push_back(host);
        }
    }
    const std::size_t surplus = stats.size() - StatsStore::mostHosts;
    const auto firstKept = hosts.begin() + static_cast<std::ptrdiff_t>(surplus);
    std::ranges::nth_element(hosts, firstKept, {}, [](const auto& host) { return host->second.sent; });
    for (auto host = hosts.begin(); host != firstKept; ++host) {
        stats.erase(*host);
    }
    return surplus;
}

} // namespace tarnwick
