// tests/ado/support/sqlite_file.h - a database file of its own for each test, and short ways to use it.
#pragma once

#include <stdlib.h>

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

#include "ado/odbc/session.h"
#include "ado/odbc/session_cache.h"
#include "ado/rowset/row_set.h"

namespace tk::test {

/// A folder under the system's temporary one, removed at the end.
class TemporaryFolder {
public:
    TemporaryFolder() {
        std::string pattern = (std::filesystem::temp_directory_path() / "tkado-XXXXXX").string();
        if (mkdtemp(pattern.data()) != nullptr) path_ = pattern;
    }
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    std::filesystem::path Path() const { return path_; }

private:
    std::filesystem::path path_;
};

inline ado::SessionSettings Settings(std::string_view connection) {
    ado::SessionSettings settings;
    settings.connection = ado::ConnectionString::Parse(connection);
    return settings;
}

/// Opens sessions on one new database file; the session cache is empty before and after.
class SqliteFile {
public:
    SqliteFile() { ado::SessionCache::Instance().Clear(); }
    ~SqliteFile() { ado::SessionCache::Instance().Clear(); }

    std::string File() const { return (folder_.Path() / "test.db").string(); }
    std::string Connection(std::string_view more = {}) const {
        return "Driver=SQLite3;Database=" + File() + ";" + std::string(more);
    }
    std::shared_ptr<ado::Session> Open(std::string_view more = {}) const {
        return ado::Session::Open(Settings(Connection(more)));
    }

private:
    TemporaryFolder folder_;
};

inline LONG Do(ado::Session& session, const std::string& sql) {
    return session.Execute(sql, {}).RowsAffected();
}

inline std::shared_ptr<ado::RowSet> Query(const std::shared_ptr<ado::Session>& session, const std::string& sql,
                                          const ado::FetchOptions& options = {}) {
    return ado::RowSet::Fetch(session->Execute(sql, {}), session, options);
}

/// A VARIANT that clears itself.
struct Value : VARIANT {
    Value() { VariantInit(this); }
    ~Value() { VariantClear(this); }
    Value(const Value&) = delete;
    Value& operator=(const Value&) = delete;
};

inline void Read(const ado::RowSet& rows, std::size_t row, std::size_t column, Value& value) {
    VariantClear(&value);
    rows.Read(row, column, value);
}

/// The value as type and text, such as "I4 7", "BSTR abc", "NULL", "DECIMAL 12.50", "DATE 2003-07-04 13:05:09".
std::string Show(const VARIANT& value);
std::string Show(const ado::RowSet& rows, std::size_t row, std::size_t column);

}  // namespace tk::test
