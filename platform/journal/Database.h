// SQLite as this folder uses it: a file, its statements, its transactions.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

struct sqlite3;
struct sqlite3_stmt;

namespace tarnwick {

class Statement;

/// An open file. One thread.
class Database {
public:
    enum class Access { read, write };

    /// What the last failure was.
    enum class Fault {
        none,
        broken, ///< the file is none of SQLite's, or damaged
        other,
    };

    /// Not open unless a regular file is there. Opening reads nothing yet. Waits up to `busyMs` for another
    /// process.
    Database(const std::filesystem::path& file, Access access, int busyMs);

    Database(const Database&) = delete;
    Database& operator=(const Database&) = delete;
    ~Database();

    [[nodiscard]] bool isOpen() const { return handle_ != nullptr; }

    /// Statements without results. False after a failure.
    bool execute(const char* statements);
    /// Its failure shows when it is run. Prepared once: the next one of this text takes it over.
    [[nodiscard]] Statement prepare(std::string_view statement);
    /// Gives back the memory of those that are kept for that.
    void forgetStatements();
    /// The number or text that the statement gives first.
    [[nodiscard]] std::optional<std::int64_t> number(std::string_view statement);
    [[nodiscard]] std::optional<std::string> text(std::string_view statement);

    /// Whether closing moves into the file what was written last; usually it does.
    void setMovesOnClose(bool moves);

    /// Of the last call; also of a statement's.
    [[nodiscard]] Fault fault() const;
    [[nodiscard]] std::string problem() const;

private:
    struct Close {
        void operator()(sqlite3* handle) const;
    };

    friend class Statement;

    std::unique_ptr<sqlite3, Close> handle_;
    int openResult_ = 0;
    std::vector<sqlite3_stmt*> kept_; ///< prepared, and not in use
};

/// Parameters count from 1, columns from 0. The database outlives it.
class Statement {
public:
    Statement& bind(int parameter, std::int64_t number);
    Statement& bind(int parameter, std::string_view text);
    Statement& bindBytes(int parameter, std::string_view bytes);
    Statement& bindNull(int parameter);

    /// True while there is a further row. `hasFailed` tells whether the last one was the end.
    bool step();

    [[nodiscard]] bool hasFailed() const { return hasFailed_; }

    /// To the end, for a statement without results; then it can be bound and run again. False after a
    /// failure.
    bool run();

    [[nodiscard]] bool isNull(int column) const;
    [[nodiscard]] std::int64_t number(int column) const;
    [[nodiscard]] std::string text(int column) const; ///< bytes, too

private:
    friend class Database;

    struct GiveBack {
        Database* database;
        void operator()(sqlite3_stmt* statement) const;
    };

    Statement(Database& database, sqlite3_stmt* statement)
        : statement_(statement, {&database}), hasFailed_(statement == nullptr) {}

    std::unique_ptr<sqlite3_stmt, GiveBack> statement_;
    bool hasFailed_;
};

/// Takes back what was not committed.
class Transaction {
public:
    explicit Transaction(Database& database)
        : database_(database), isOpen_(database.execute("BEGIN IMMEDIATE")) {}

    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;

    ~Transaction() {
        if (isOpen_) {
            database_.execute("ROLLBACK");
        }
    }

    [[nodiscard]] bool isOpen() const { return isOpen_; }

    /// False when nothing was committed.
    bool commit() {
        if (!isOpen_ || !database_.execute("COMMIT")) {
            return false;
        }
        isOpen_ = false;
        return true;
    }

private:
    Database& database_;
    bool isOpen_;
};

} // namespace tarnwick
