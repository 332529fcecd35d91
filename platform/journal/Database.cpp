#include "platform/journal/Database.h"

#include <algorithm>
#include <sqlite3.h>
#include <system_error>

namespace tarnwick {

namespace {

/// What the journal's few rows need, in KiB.
constexpr const char* smallMemory = "PRAGMA cache_size = -256";

} // namespace

Database::Database(const std::filesystem::path& file, Access access, int busyMs) {
    std::error_code ignored;
    if (!std::filesystem::is_regular_file(file, ignored)) {
        openResult_ = SQLITE_CANTOPEN; // a pipe would be waited for
        return;
    }
    // Else twenty pages are set aside for each journal, which needs seven.
    [[maybe_unused]] static const int once = ::sqlite3_config(SQLITE_CONFIG_PAGECACHE, nullptr, 0, 0);
    const int mode = access == Access::read ? SQLITE_OPEN_READONLY : SQLITE_OPEN_READWRITE;
    sqlite3* handle = nullptr;
    openResult_ = ::sqlite3_open_v2(file.c_str(), &handle, mode | SQLITE_OPEN_NOMUTEX, nullptr);
    handle_.reset(handle);
    if (openResult_ != SQLITE_OK) {
        handle_.reset();
        return;
    }
    ::sqlite3_busy_timeout(handle, busyMs);
    execute(smallMemory);
}

Database::~Database() {
    forgetStatements();
}

void Database::Close::operator()(sqlite3* handle) const {
    ::sqlite3_close_v2(handle);
}

bool Database::execute(const char* statements) {
    return isOpen() && ::sqlite3_exec(handle_.get(), statements, nullptr, nullptr, nullptr) == SQLITE_OK;
}

Statement Database::prepare(std::string_view statement) {
    const auto found =
        std::ranges::find_if(kept_, [&](sqlite3_stmt* kept) { return ::sqlite3_sql(kept) == statement; });
    if (found != kept_.end()) {
        sqlite3_stmt* const prepared = *found;
        kept_.erase(found);
        return {*this, prepared};
    }
    sqlite3_stmt* prepared = nullptr;
    if (isOpen()) {
        ::sqlite3_prepare_v2(
            handle_.get(), statement.data(), static_cast<int>(statement.size()), &prepared, nullptr);
    }
    return {*this, prepared};
}

void Database::forgetStatements() {
    for (sqlite3_stmt* const statement : kept_) {
        ::sqlite3_finalize(statement);
    }
    kept_.clear();
}

std::optional<std::int64_t> Database::number(std::string_view statement) {
    Statement prepared = prepare(statement);
    return prepared.step() && !prepared.isNull(0) ? std::optional(prepared.number(0)) : std::nullopt;
}

std::optional<std::string> Database::text(std::string_view statement) {
    Statement prepared = prepare(statement);
    return prepared.step() ? std::optional(prepared.text(0)) : std::nullopt;
}

void Database::setMovesOnClose(bool moves) {
    if (isOpen()) {
        ::sqlite3_db_config(handle_.get(), SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, moves ? 0 : 1, nullptr);
    }
}

Database::Fault Database::fault() const {
    switch (isOpen() ? ::sqlite3_errcode(handle_.get()) : openResult_) {
    case SQLITE_OK:
    case SQLITE_ROW:
    case SQLITE_DONE:
        return Fault::none;
    case SQLITE_CORRUPT:
    case SQLITE_NOTADB:
        return Fault::broken;
    default:
        return Fault::other;
    }
}

std::string Database::problem() const {
    return isOpen() ? ::sqlite3_errmsg(handle_.get()) : ::sqlite3_errstr(openResult_);
}

void Statement::GiveBack::operator()(sqlite3_stmt* statement) const {
    ::sqlite3_reset(statement);
    ::sqlite3_clear_bindings(statement);
    database->kept_.push_back(statement);
}

Statement& Statement::bind(int parameter, std::int64_t number) {
    ::sqlite3_bind_int64(statement_.get(), parameter, number);
    return *this;
}

Statement& Statement::bind(int parameter, std::string_view text) {
    ::sqlite3_bind_text(
        statement_.get(), parameter, text.data(), static_cast<int>(text.size()), SQLITE_TRANSIENT);
    return *this;
}

Statement& Statement::bindBytes(int parameter, std::string_view bytes) {
    ::sqlite3_bind_blob(
        statement_.get(), parameter, bytes.data(), static_cast<int>(bytes.size()), SQLITE_TRANSIENT);
    return *this;
}

Statement& Statement::bindNull(int parameter) {
    ::sqlite3_bind_null(statement_.get(), parameter);
    return *this;
}

bool Statement::step() {
    const int result = statement_ ? ::sqlite3_step(statement_.get()) : SQLITE_ERROR;
    hasFailed_ = result != SQLITE_ROW && result != SQLITE_DONE;
    return result == SQLITE_ROW;
}

bool Statement::run() {
    while (step()) {
    }
    if (statement_) {
        ::sqlite3_reset(statement_.get());
    }
    return !hasFailed_;
}

bool Statement::isNull(int column) const {
    return ::sqlite3_column_type(statement_.get(), column) == SQLITE_NULL;
}

std::int64_t Statement::number(int column) const {
    return ::sqlite3_column_int64(statement_.get(), column);
}

std::string Statement::text(int column) const {
    const auto* const bytes = static_cast<const char*>(::sqlite3_column_blob(statement_.get(), column));
    const auto size = static_cast<std::size_t>(::sqlite3_column_bytes(statement_.get(), column));
    return bytes != nullptr ? std::string(bytes, size) : std::string();
}

} // namespace tarnwick
