#include "app/Update/Work/WorkMessages.h"

#include "core/Storage/JsonObject.h"

namespace tarnwick {

namespace {

constexpr auto feedKey = "feed";
constexpr auto versionKey = "version";
constexpr auto failureKey = "failure";
constexpr auto answeredKey = "hasAnswered";
constexpr auto distrustKey = "distrust"; ///< the number of the enumerator
constexpr auto receivedKey = "received";
constexpr auto completeKey = "complete";
constexpr auto endedKey = "ended"; ///< null, or a problem
constexpr auto mayPassKey = "mayPass";

struct Encoder {
    nlohmann::json operator()(const UpdateWork::CheckResult& result) const {
        return std::visit(*this, result);
    }

    nlohmann::json operator()(const UpdateWork::VerifiedFeed& feed) const { return {{feedKey, feed.text}}; }

    nlohmann::json operator()(const UpdateWork::CheckFailure& failure) const {
        return {
            {failureKey, failure.text},
            {answeredKey, failure.hasAnswered},
            {distrustKey, static_cast<int>(failure.distrust)}};
    }

    nlohmann::json operator()(const UpdateWork::Received& received) const {
        return {{receivedKey, received.bytes}};
    }

    nlohmann::json operator()(const UpdateWork::Complete& /*complete*/) const {
        return {{completeKey, true}};
    }

    nlohmann::json operator()(const UpdateWork::Ended& ended) const {
        return {
            {endedKey, ended.problem ? nlohmann::json(*ended.problem) : nlohmann::json()},
            {mayPassKey, ended.mayPass}};
    }
};

std::string lineOf(const nlohmann::json& object) {
    // A server's words may be in no encoding at all.
    return object.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

std::optional<std::string> textIn(const nlohmann::json& object, const char* key) {
    const auto found = object.find(key);
    return found != object.end() && found->is_string() ? std::optional(found->get<std::string>())
                                                       : std::nullopt;
}

bool isTrueIn(const nlohmann::json& object, const char* key) {
    const auto found = object.find(key);
    return found != object.end() && found->is_boolean() && found->get<bool>();
}

std::optional<UpdateWork::Distrust> distrustIn(const nlohmann::json& object) {
    const auto found = object.find(distrustKey);
    constexpr auto most = static_cast<unsigned>(UpdateWork::Distrust::certain);
    if (found == object.end() || !found->is_number_unsigned() || found->get<std::uint64_t>() > most) {
        return std::nullopt;
    }
    return static_cast<UpdateWork::Distrust>(found->get<unsigned>());
}

std::optional<WorkMessage> checkResultIn(const nlohmann::json& object) {
    if (auto feed = textIn(object, feedKey)) {
        return UpdateWork::CheckResult(UpdateWork::VerifiedFeed{.text = std::move(*feed)});
    }
    const auto answered = object.find(answeredKey);
    auto failure = textIn(object, failureKey);
    const auto distrust = distrustIn(object);
    if (!failure || answered == object.end() || !answered->is_boolean() || !distrust) {
        return std::nullopt;
    }
    return UpdateWork::CheckResult(UpdateWork::CheckFailure{
        .text = std::move(*failure), .hasAnswered = answered->get<bool>(), .distrust = *distrust});
}

} // namespace

std::string encoded(const DownloadOrder& order) {
    return lineOf({{feedKey, order.feed}, {versionKey, order.version.text()}});
}

std::string encoded(const WorkMessage& message) {
    return lineOf(std::visit(Encoder{}, message));
}

std::optional<DownloadOrder> decodedOrder(const std::string& line) {
    const auto object = parseJsonObject(line);
    const auto feed = object ? textIn(*object, feedKey) : std::nullopt;
    const auto version = ReleaseVersion::parse(object ? textIn(*object, versionKey).value_or("") : "");
    return feed && version ? std::optional(DownloadOrder{.feed = *feed, .version = *version}) : std::nullopt;
}

std::optional<WorkMessage> decodedMessage(const std::string& line) {
    const auto object = parseJsonObject(line);
    if (!object) {
        return std::nullopt;
    }
    if (const auto found = object->find(receivedKey); found != object->end() && found->is_number_unsigned()) {
        return UpdateWork::Received{.bytes = found->get<std::uint64_t>()};
    }
    if (object->contains(completeKey)) {
        return UpdateWork::Complete{};
    }
    if (const auto found = object->find(endedKey); found != object->end()) {
        return UpdateWork::Ended{
            .problem = textIn(*object, endedKey), .mayPass = isTrueIn(*object, mayPassKey)};
    }
    return checkResultIn(*object);
}

} // namespace tarnwick
