// ado/odbc/odbc_handle.h - owns one ODBC handle and frees it once; movable.
#pragma once

#include <utility>

#include "ado/odbc/diagnostics.h"
#include "ado/odbc/odbc_api.h"

namespace tk::ado {

template <SQLSMALLINT Kind>
class OdbcHandle {
public:
    static constexpr SQLSMALLINT kKind = Kind;

    OdbcHandle() = default;

    /// Allocates below the parent: SQL_NULL_HANDLE for an environment, the environment for a connection, the connection
    /// for a statement.
    /// @throws AdoError with the parent's diagnostics
    explicit OdbcHandle(SQLHANDLE parent) {
        const SQLRETURN result = Odbc().AllocHandle(Kind, parent, &handle_);
        if (!SQL_SUCCEEDED(result)) {
            handle_ = nullptr;
            constexpr SQLSMALLINT parentKind = Kind == SQL_HANDLE_STMT ? SQL_HANDLE_DBC : SQL_HANDLE_ENV;
            ThrowDiagnostics(parentKind, parent, result);
        }
    }
    OdbcHandle(OdbcHandle&& other) noexcept : handle_(std::exchange(other.handle_, nullptr)) {}
    OdbcHandle& operator=(OdbcHandle&& other) noexcept {
        if (this != &other) {
            Reset();
            handle_ = std::exchange(other.handle_, nullptr);
        }
        return *this;
    }
    ~OdbcHandle() { Reset(); }

    SQLHANDLE Get() const noexcept { return handle_; }
    explicit operator bool() const noexcept { return handle_ != nullptr; }

    void Reset() noexcept {
        if (handle_ == nullptr) return;
        Odbc().FreeHandle(Kind, handle_);
        handle_ = nullptr;
    }

private:
    SQLHANDLE handle_ = nullptr;
};

using OdbcEnvironment = OdbcHandle<SQL_HANDLE_ENV>;
using OdbcConnection = OdbcHandle<SQL_HANDLE_DBC>;  // its owner disconnects first: a live connection cannot be freed
using OdbcStatement = OdbcHandle<SQL_HANDLE_STMT>;

}  // namespace tk::ado
