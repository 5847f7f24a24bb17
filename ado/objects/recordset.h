// ado/objects/recordset.h - the Recordset object: a client cursor on the rows of a command.
//
// Its members by subject: recordset_open (opening, closing, settings), recordset_move (position, filter, sort, find),
// recordset_edit (changes), recordset_batch (pending changes), recordset_rows (GetRows, GetString), recordset_chunks.
//
// Threads: one caller at a time, its clones and views included; State and Cancel from any thread. Close of two threads
// at once closes it once.
#pragma once

#include <tkkernel/row_access.h>

#include <memory>
#include <mutex>
#include <span>
#include <string>
#include <vector>

#include "ado/cursor/client_cursor.h"
#include "ado/cursor/edit_buffer.h"
#include "ado/objects/anchor.h"
#include "ado/objects/automation.h"
#include "ado/objects/connection.h"
#include "ado/objects/execution.h"
#include "ado/objects/open_rows.h"
#include "ado/objects/properties.h"
#include "ado/objects/row_access.h"
#include "ado/objects/rowset_properties.h"
#include "ado/persist/recordset_file.h"

namespace tk::ado {

class CommandObject;

/// LockTypeEnum.
enum LockType : LONG { kLockReadOnly = 1, kLockPessimistic = 2, kLockOptimistic = 3, kLockBatchOptimistic = 4 };

inline constexpr LONG kCursorStatic = 3;

/// The file that a recordset was saved to or opened from.
struct SavedPlace {
    std::string path;  // UTF-8; empty: none
    PersistFormat format = PersistFormat::Binary;
};

/// Asked from an IUnknown, tells a Recordset of this server; gives the Recordset itself.
inline constexpr IID kRecordsetObject = {0x5E0D6A90, 0x37B1, 0x47D4, {0x8E, 0x2A, 0x9F, 0x61, 0xB4, 0x02, 0xC7, 0x1D}};

class Recordset final : public Automation<Recordset>, public PropertySource {
public:
    static constexpr const OLECHAR* kClassName = OLESTR("ADODB.Recordset");
    static std::span<const Member<Recordset>> Members();

    Recordset();
    ~Recordset() override;
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override;

    // --- for the connection ---

    /// Runs a command; a recordset that is closed when there are no rows, none when no records are wanted.
    static Ref<Recordset> FromCommand(const Ref<Connection>& connection, const std::shared_ptr<Session>& session,
                                      const std::u16string& source, Execution execution, LONG& affected);

    /// Of a result that a Command gave: what ActiveCommand says.
    void SetCommand(Ref<CommandObject> command);

    /// A read-only recordset on rows that are had by running something.
    static Ref<Recordset> FromRows(const Ref<Connection>& connection, RunCommand run);

    // --- for fields and the fast path ---

    /// Counts openings and closings: a field of another time is no longer valid.
    unsigned Generation() const noexcept { return generation_; }
    bool IsOpen() const noexcept { return open_ != nullptr && !open_->closed.load(std::memory_order_acquire); }

    /// The columns, or those defined so far of a recordset that is closed.
    const std::vector<Column>& Columns();
    Column& DefinedColumn(std::size_t column);
    void DefineColumn(Column column);
    void RemoveColumn(std::size_t column);

    /// Base tables, keys and automatic numbers, asked from the database when first wanted.
    void DescribeOrigins();

    static constexpr std::size_t kNoColumn = static_cast<std::size_t>(-1);
    static constexpr std::size_t kNoRow = static_cast<std::size_t>(-1);

    enum class Version { Current, Original, Underlying };
    Value ReadField(std::size_t column, Version version);
    void WriteField(std::size_t column, const Value& value);
    LONG ActualSize(std::size_t column);

    /// Inserts rows from the current one on into a table of another session, and goes to the first one behind them.
    /// @param limit  0: all
    /// @return how many
    LONG CopyRows(const std::shared_ptr<Session>& session, const std::string& table, LONG limit, LONG timeoutSeconds);
    Value GetChunk(std::size_t column, LONG length);
    void AppendChunk(std::size_t column, const Value& data);

    ClientCursor* FastCursor() noexcept {
        return open_ && !open_->closed.load(std::memory_order_relaxed) && !edit_.IsOpen() ? cursor_.get() : nullptr;
    }

    /// Reading a field ends what GetChunk was reading of another one; without a column, of any.
    void LeaveChunks(std::size_t column = kNoColumn) noexcept {
        if (column != chunkColumn_) chunkColumn_ = kNoColumn;
    }
    ClientCursor* AnyCursor() noexcept { return IsOpen() ? cursor_.get() : nullptr; }

    // --- PropertySource ---
    std::size_t PropertyCount() override;
    PropertyInfo DescribeProperty(std::size_t index) override;
    Value ReadProperty(std::size_t index) override;
    void WriteProperty(std::size_t index, const Value& value) override;
    std::shared_ptr<ErrorList> PropertyErrors() const override { return Errors(); }

protected:
    std::shared_ptr<ErrorList> Errors() const override;

private:
    // --- opening, closing, settings ---
    void GetFields(Call& call);
    void GetActiveConnection(Call& call);
    void PutActiveConnection(Call& call);
    void PutRefActiveConnection(Call& call);
    void GetCacheSize(Call& call);
    void PutCacheSize(Call& call);
    void GetCursorType(Call& call);
    void PutCursorType(Call& call);
    void GetLockType(Call& call);
    void PutLockType(Call& call);
    void GetMaxRecords(Call& call);
    void PutMaxRecords(Call& call);
    void GetSource(Call& call);
    void PutSource(Call& call);
    void PutRefSource(Call& call);
    void GetCursorLocation(Call& call);
    void PutCursorLocation(Call& call);
    void GetMarshalOptions(Call& call);
    void PutMarshalOptions(Call& call);
    void GetStayInSync(Call& call);
    void PutStayInSync(Call& call);
    void GetDataMember(Call& call);
    void PutDataMember(Call& call);
    void GetDataSource(Call& call);
    void PutRefDataSource(Call& call);
    void GetActiveCommand(Call& call);
    void GetState(Call& call);
    void GetProperties(Call& call);
    void Open(Call& call);
    void Close(Call& call);
    void Requery(Call& call);
    void NextRecordset(Call& call);
    void Cancel(Call& call);
    void Clone(Call& call);
    void Supports(Call& call);
    void Save(Call& call);
    void Seek(Call& call);
    void GetIndex(Call& call);
    void PutIndex(Call& call);

    // --- position ---
    void GetAbsolutePosition(Call& call);
    void PutAbsolutePosition(Call& call);
    void GetBof(Call& call);
    void GetEof(Call& call);
    void GetBookmark(Call& call);
    void PutBookmark(Call& call);
    void GetRecordCount(Call& call);
    void GetAbsolutePage(Call& call);
    void PutAbsolutePage(Call& call);
    void GetPageSize(Call& call);
    void PutPageSize(Call& call);
    void GetPageCount(Call& call);
    void Move(Call& call);
    void MoveNext(Call& call);
    void MovePrevious(Call& call);
    void MoveFirst(Call& call);
    void MoveLast(Call& call);
    void Find(Call& call);
    void GetFilter(Call& call);
    void PutFilter(Call& call);
    void GetSort(Call& call);
    void PutSort(Call& call);
    void CompareBookmarks(Call& call);

    // --- values and changes ---
    void GetCollect(Call& call);
    void PutCollect(Call& call);
    void GetRows(Call& call);
    void GetString(Call& call);
    void AddNew(Call& call);
    void Update(Call& call);
    void CancelUpdate(Call& call);
    void Delete(Call& call);
    void Resync(Call& call);
    void UpdateBatch(Call& call);
    void CancelBatch(Call& call);
    void GetEditMode(Call& call);
    void GetStatus(Call& call);

    // --- what they share ---
    OpenRows& Rows();        // throws 3704
    ClientCursor& Cursor();  // throws 3704
    void ExpectClosed();
    void Settle(std::shared_ptr<OpenRows> rows, LONG lock);

    /// What an open recordset lives on. Taken out under guard_, and let go of without it.
    struct Held {
        std::shared_ptr<OpenRows> rows;
        std::unique_ptr<ClientCursor> cursor;
        std::unique_ptr<Statement> waiting;
        Ref<Connection> waitingConnection;
    };
    Held TakeHeld() noexcept;
    /// Not to be opened again with the same columns.
    Held TakeClosing() noexcept;
    static void Drop(Held held);
    void LetGo();
    /// Those of a recordset that its connection has closed.
    void LeaveClosedRows();
    std::shared_ptr<RowSet> RunStatement(const Ref<Connection>& connection, const std::shared_ptr<Session>& session,
                                         const Execution& execution, LONG& affected);
    void OpenExecution(const Ref<Connection>& connection, Execution execution);
    void OpenCommand(Call& call, Ref<CommandObject> command, LONG cursorType, LONG lock, LONG options);
    static Ref<CommandObject> KnownCommand(const Value& given);
    void OpenFabricated(LONG lock);
    void SettleInView(std::shared_ptr<OpenRows> rows, LONG lock);
    static bool MeansFile(const Ref<Connection>& connection, std::u16string_view text, std::u16string_view source,
                          LONG options);
    void OpenFile(std::u16string_view text, std::u16string_view source, LONG cursorType, LONG lock);

    void SaveEdit();
    void ExpectNoEdit();
    void ExpectUpdatable();
    bool IsBatch() const noexcept { return lock_ == kLockBatchOptimistic; }
    std::shared_ptr<Session> WritingSession();
    void WriteEdit();
    void WriteNewRow();
    void WriteChangedRow();
    void SetFields(const Value& fields, const Value& values);
    std::size_t FindField(const VARIANT& index);
    std::size_t FieldArgument(const Call& call);
    std::vector<std::size_t> FieldList(const Value& fields);
    void DeleteRow(std::size_t row);
    std::vector<ErrorRecord> SendPending(std::span<const std::size_t> list);
    static void ThrowIfAny(std::vector<ErrorRecord> failures);
    void DropPending(std::size_t row);
    std::vector<std::size_t> AffectedRows(LONG affect, bool pendingOnly);

    /// A bookmark or one of current, first and last; nothing for "current" and for an argument left out.
    std::optional<std::size_t> StartRow(const Value& start);
    std::size_t RowOfBookmark(const Value& bookmark);
    /// The test that a filter text means; empty for an empty text and for any other kind of filter.
    static std::function<bool(std::size_t)> TextFilter(const Value& filter, const RowStore& rows);
    std::function<bool(std::size_t)> FilterOf(const Value& filter, bool& showDeleted);

    RowAccess access_;

    mutable std::mutex guard_;  // open_, cursor_ and running_ against State, Cancel and Close of other threads
    std::shared_ptr<OpenRows> open_;
    std::shared_ptr<Session> running_;
    std::unique_ptr<ClientCursor> cursor_;
    EditBuffer edit_;
    std::unique_ptr<Statement> waiting_;  // of a result without rows: the results behind it
    Ref<Connection> waitingConnection_;
    unsigned generation_ = 0;
    LONG lock_ = kLockReadOnly;  // while open

    Ref<Connection> connection_;     // ActiveConnection
    Ref<CommandObject> command_;     // the Source, or what the rows came from
    std::u16string connectionText_;  // ActiveConnection as text: a connection of its own is opened from it each time
    std::u16string source_;
    std::vector<Column> defined_;  // of a recordset without a source
    LONG cursorType_ = 0;
    LONG wantedLock_ = kLockReadOnly;
    LONG cursorLocation_ = 2;
    LONG maxRecords_ = 0;
    LONG cacheSize_ = 1;
    LONG pageSize_ = 10;
    LONG marshalOptions_ = 0;
    bool stayInSync_ = true;
    std::u16string dataMember_;
    // Two recordsets may have been each other's source: neither keeps the other.
    std::shared_ptr<Anchor<Recordset>> dataSource_;
    std::shared_ptr<Anchor<Recordset>> anchor_;  // once it was a source itself
    Value filter_;
    std::u16string sort_;
    RowsetSettings settings_;
    SavedPlace saved_;  // until it is closed: where Save without a destination goes

    // GetChunk reads on in the same field of the same row; AppendChunk appends from the second call on.
    std::size_t chunkRow_ = 0;
    std::size_t chunkColumn_ = kNoColumn;
    std::size_t chunkOffset_ = 0;
    std::vector<bool> appended_;
};

}  // namespace tk::ado
