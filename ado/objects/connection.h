// ado/objects/connection.h - the Connection object.
//
// Threads: one caller at a time, except State, Cancel and Errors, which any thread may use while a call runs.
#pragma once

#include <atomic>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "ado/objects/automation.h"
#include "ado/objects/command_text.h"
#include "ado/objects/properties.h"
#include "ado/odbc/session.h"

namespace tk::ado {

struct OpenRows;

/// ObjectStateEnum.
enum ObjectState : LONG {
    kStateClosed = 0,
    kStateOpen = 1,
    kStateConnecting = 2,
    kStateExecuting = 4,
    kStateFetching = 8
};

/// Asked from an IUnknown, tells a Connection of this server; gives the Connection itself.
inline constexpr IID kConnectionObject = {0x1C3B7E52, 0x8D0F, 0x4C19, {0xA4, 0x66, 0x31, 0x52, 0x7E, 0x0B, 0x95, 0xD1}};

class Connection final : public Automation<Connection>, public PropertySource {
public:
    static constexpr const OLECHAR* kClassName = OLESTR("ADODB.Connection");
    static std::span<const Member<Connection>> Members();

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override;

    // --- for the recordsets ---

    /// @throws AdoError 3705, 3706 or the driver's
    void Open(std::u16string_view text, std::u16string_view user, std::u16string_view password);
    bool IsOpen() const noexcept { return (state_.load(std::memory_order_acquire) & kStateOpen) != 0; }

    /// @throws AdoError with the given number when the connection is not open
    std::shared_ptr<Session> OpenedSession(ErrorNumber whenClosed) const;
    LONG CommandTimeout() const noexcept { return commandTimeout_; }
    LONG IsolationLevel() const noexcept { return isolationLevel_; }
    LONG CursorLocation() const noexcept { return cursorLocation_; }

    /// Rows that are to be closed with the connection.
    void Register(const std::shared_ptr<OpenRows>& rows);
    const std::shared_ptr<ErrorList>& ErrorRecords() const noexcept { return errors_; }

    // --- PropertySource ---
    std::size_t PropertyCount() override;
    PropertyInfo DescribeProperty(std::size_t index) override;
    Value ReadProperty(std::size_t index) override;
    void WriteProperty(std::size_t index, const Value& value) override;
    std::shared_ptr<ErrorList> PropertyErrors() const override { return errors_; }

protected:
    std::shared_ptr<ErrorList> Errors() const override { return errors_; }

private:
    struct PropertyRow;

    void GetConnectionString(Call& call);
    void PutConnectionString(Call& call);
    void GetCommandTimeout(Call& call);
    void PutCommandTimeout(Call& call);
    void GetConnectionTimeout(Call& call);
    void PutConnectionTimeout(Call& call);
    void GetVersion(Call& call);
    void Close(Call& call);
    void Execute(Call& call);
    void BeginTrans(Call& call);
    void CommitTrans(Call& call);
    void RollbackTrans(Call& call);
    void OpenMember(Call& call);
    void GetErrors(Call& call);
    void GetDefaultDatabase(Call& call);
    void PutDefaultDatabase(Call& call);
    void GetIsolationLevel(Call& call);
    void PutIsolationLevel(Call& call);
    void GetAttributes(Call& call);
    void PutAttributes(Call& call);
    void GetCursorLocation(Call& call);
    void PutCursorLocation(Call& call);
    void GetMode(Call& call);
    void PutMode(Call& call);
    void GetProvider(Call& call);
    void PutProvider(Call& call);
    void GetState(Call& call);
    void OpenSchema(Call& call);
    void InsertRows(Call& call);
    void Cancel(Call& call);
    void GetProperties(Call& call);

    void ExpectClosed() const;
    void EndTransaction(bool commit);
    void CloseRecordsets();
    Value ReadSpecial(int which);
    ConnectionString Parsed() const;

    /// Of the session, or what the string says while there is none.
    ConnectionProperties CurrentProperties() const;
    static std::span<const PropertyRow> PropertyRows();

    std::atomic<LONG> state_{kStateClosed};  // closed, connecting or open
    std::atomic<bool> isExecuting_{false};   // a statement runs now
    mutable std::mutex lock_;                // session_ and recordsets_, for Cancel and for recordsets of other threads
    std::shared_ptr<Session> session_;
    std::vector<std::weak_ptr<OpenRows>> recordsets_;

    std::u16string text_;  // as put, or as given to Open
    std::u16string user_;
    std::u16string password_;
    std::u16string provider_;  // as put; the text's own one counts more
    LONG commandTimeout_ = 30;
    LONG connectionTimeout_ = 15;
    LONG isolationLevel_ = 0x1000;
    LONG attributes_ = 0;
    LONG cursorLocation_ = 2;
    LONG mode_ = 0;  // as put; the text's own one counts more
    std::shared_ptr<ErrorList> errors_ = std::make_shared<ErrorList>();
};

/// The connection that a value means: an object of this server, or a text, from which a new one is opened.
/// @throws AdoError 3001 for anything else, or what opening throws
Ref<Connection> ConnectionOf(const Value& given);

/// A new connection. @throws AdoError
Ref<Connection> OpenConnection(std::u16string_view text);

}  // namespace tk::ado
